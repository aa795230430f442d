// What the tool tells the host about itself before there is an instance.

#include "remapColorDescription.h"

#include "internalAPI/PiVantorixToolProtocol.h"
#include "pluginAPI/PiToolPolicyProtocol.h"
#include "remapColorController.h"
#include "remapColorModeFactory.h"
#include "remapColorNames.h"

namespace {

RCShdPtr<PiEnumPolicy const> describeModes()
{
    PiEnumPolicy::Builder modes;
    for (int mode = 0; mode < RemapColorController::nbModes; ++mode) {
        modes.addPair(mode, RemapColorController::getModeFactory(mode)->getModeName());
    }
    modes.setDefaultValue(0);
    modes.setAnimatable(false);
    return modes.create();
}

RCShdPtr<PiEnumPolicy const> describeDepths()
{
    PiEnumPolicy::Builder depths;
    depths.addPair(0, "8 Bit");
    depths.addPair(1, "16 Bit (float)");
    depths.addPair(2, "32 Bit (float)");
    depths.addPair(3, "Input Depth");
    depths.setAnimatable(false);
    depths.setDefaultValue(3);
    return depths.create();
}

PiStructuredPolicyDescriptor describeCurves()
{
    PiStructuredPolicyDescriptor curves;
    for (std::string const& channel : RemapColorNames::channelNames) {
        curves.add(channel, PiSocketType::Curve, PiSocketType::Single);
    }
    return curves;
}

} // namespace

template <>
void PiToolPolicyProtocol<RemapColorController, PiImageModifier::Descriptor>::describe(
    PiImageModifier::Descriptor& descriptor) const
{
    auto const modes = describeModes();
    PiImageModifier::addSingleImageInput(
        descriptor,
        PiImageInputPolicy::createPrimary(3, 7, 1, static_cast<PiImageInputPolicy::ResetType>(0),
                                          false),
        PiSocketType::Single);
    descriptor.requires_(RemapColorNames::mode, PiSocketType::IntegerEnumeration, modes,
                         PiSocketType::Single);
    descriptor.requires_(RemapColorNames::outputDepth, PiSocketType::IntegerEnumeration,
                         describeDepths(), PiSocketType::Single);
    descriptor.requires_(RemapColorNames::adjust, PiSocketType::Switch,
                         PiSwitchInputPolicy::create(true, false, false), PiSocketType::Single);
    descriptor.requires_(RemapColorNames::adjustCurve, describeCurves(), PiSocketType::Single);

    descriptor.stores(RemapColorNames::histoZoom, PiValueType::Double);
    descriptor.stores(RemapColorNames::histoDisplay, PiValueType::Integer);
    descriptor.stores(RemapColorNames::channelDisplay, PiValueType::Integer);
    descriptor.stores(RemapColorNames::curveDisplay, PiValueType::Integer);
    for (int mode = 0; mode < RemapColorController::nbModes; ++mode) {
        RemapColorController::getModeFactory(mode)->describeInputs(descriptor);
    }
    descriptor.stores(RemapColorNames::plotColor, PiValueType::DoubleArray);
    descriptor.stores(RemapColorNames::plotColorEnabled, PiValueType::Boolean);
    descriptor.setAffect(static_cast<PiImageModifierTypes::AffectType>(2));
}

OPtr<PiToolProtocol> createRemapColorProtocol()
{
    return makeOwned<PiImageModifierInfo<RemapColorController>>(
        "Remap Color", PiToolProtocol::getColorCorrectionCategory(),
        PiVantorixToolProtocol::getVantorixProductName(),
        PiVantorixToolProtocol::getVantorixManufacturer(),
        PiVantorixToolProtocol::getVantorixVersionString(), 5, "Remaps color using a curve editor.",
        static_cast<PiToolProtocolImp::ToolVisibility>(1),
        static_cast<PiToolProtocolImp::ToolStructure>(0));
}
