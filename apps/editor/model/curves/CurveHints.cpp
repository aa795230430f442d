#include "editor/model/curves/CurveHints.h"

#include "pluginAPI/PiImageModifier.h"
#include "session/CurveNotes.h"
#include "session/ToolKeys.h"

std::optional<CurveHindrance> findCurveHindrance(Document const& document)
{
    std::string const mute = PiImageModifier::getMuteValueName();
    std::string const adjust = document.getLink().getAdjustInputName();
    if (document.getNumber(mute) != 0.0) {
        return CurveHindrance{mute + " is on: nothing changes the picture", "Turn off", mute, 0.0};
    }
    if (document.getNumber(ToolKeys::mix) == 0.0) {
        return CurveHindrance{std::string(ToolKeys::mix) + " is 0: nothing changes the picture",
                              "Set to 1", ToolKeys::mix, 1.0};
    }
    if (document.getNumber(adjust) == 0.0) {
        return CurveHindrance{"The curves are off (" + adjust + "): they change nothing", "Turn on",
                              adjust, 1.0};
    }
    return {};
}

std::string describeMissedKeys(Document const& document)
{
    ControllerLink const& link = document.getLink();
    for (int channel = 0; channel < ControllerLink::nbChannels; ++channel) {
        CurvePoints const points = document.getCurve(channel);
        if (points.empty()) {
            continue;
        }
        std::vector<CurveMiss> const misses = findCurveMisses(
            points, link.mapThroughCurve(points, listKeyPlaces(points)), document.getTime());
        if (!misses.empty()) {
            return describeMisses(link.getCurveInputName(channel), misses, false);
        }
    }
    return {};
}
