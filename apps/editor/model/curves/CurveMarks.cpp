#include "editor/model/curves/CurveMarks.h"

#include <algorithm>
#include <cmath>

namespace {

using Color = ControllerLink::Color;

Color toColor(CoRgbaColorTyped<float> const& pixel)
{
    return {pixel.red, pixel.green, pixel.blue};
}

bool isFinite(Color const& color)
{
    return std::isfinite(color.red) && std::isfinite(color.green) && std::isfinite(color.blue);
}

} // namespace

CurveMarks::CurveMarks(Document& shownDocument, Picks& shownPicks)
    : document(shownDocument), picks(shownPicks)
{
    picks.addHandler(&picksChanged);
}

std::vector<CurveMark> CurveMarks::list() const
{
    std::vector<CurveMark> marks;
    for (Pick const& pick : picks.getPicks()) {
        if (pick.in.has_value()) {
            auto const& [red, green, blue, alpha] = pick.in->mean;
            marks.push_back({pick.number, {red, green, blue}, pick.number == picks.getSelected()});
        }
    }
    ControllerLink const& link = document.getLink();
    if (picks.getPicks().empty() && link.isPlotColorEnabled()) {
        auto const [red, green, blue] = link.getPlotColor();
        marks.push_back({0, {red, green, blue}, true});
    }
    return marks;
}

void CurveMarks::storePlotColor()
{
    ControllerLink& link = document.getLink();
    Pick const* const pick = picks.find(picks.getSelected());
    if (pick == nullptr) {
        if (hadPicks && picks.getPicks().empty()) {
            hadPicks = false;
            PiUndoGuardNoLog const unrecorded(true);
            document.getNode().setValues({{link.getPlotColorEnabledName(), Animated<bool>(false)}});
        }
        return;
    }
    hadPicks = true;
    if (pick->in.has_value()) {
        Color const in = toColor(pick->in->mean);
        // A project holds finite numbers.
        if (isFinite(in) && !(link.isPlotColorEnabled() && link.getPlotColor() == in)) {
            link.setPlotColor(in);
        }
    }
    if (pick->out.has_value() && !(link.getOutputPlotColor() == toColor(pick->out->mean))) {
        link.setOutputPlotColor(toColor(pick->out->mean));
    }
}
