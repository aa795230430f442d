#include "pluginAPI/PiInputPolicy.h"

RCShdPtr<PiSwitchInputPolicy const> PiSwitchInputPolicy::create(bool animatable, bool startsOff,
                                                                bool inverted)
{
    return RCShdPtr<PiSwitchInputPolicy const>(
        new PiSwitchInputPolicy(animatable, startsOff, inverted));
}

RCShdPtr<PiEnumPolicy const> PiEnumPolicy::Builder::create() const
{
    return RCShdPtr<PiEnumPolicy const>(new PiEnumPolicy(pairs, defaultValue, animatable));
}

RCShdPtr<PiImageInputPolicy const> PiImageInputPolicy::createPrimary(int componentCode,
                                                                     int depthCode, int streamCode,
                                                                     ResetType resetType,
                                                                     bool optional)
{
    return RCShdPtr<PiImageInputPolicy const>(
        new PiImageInputPolicy(componentCode, depthCode, streamCode, resetType, optional));
}
