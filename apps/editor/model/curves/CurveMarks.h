#pragma once

#include "editor/model/curves/CurveLines.h"
#include "editor/model/picture/Picks.h"

#include <vector>

/// A colour whose way is shown on the graph.
struct CurveMark {
    int number;           ///< of the pick; 0 for the plot colour
    CurveLines::Color in; ///< of the source
    bool isSelected;
};

/// The picks as marks on the graph, and the tool's plot colour: the selected pick's, before and
/// after the tool, so that projects and other panels have it. A node whose plot colour is enabled
/// shows it where there is no pick. User-interface thread.
class CurveMarks {
public:
    CurveMarks(Document& shownDocument, Picks& shownPicks);

    std::vector<CurveMark> list() const;

private:
    void storePlotColor();

    Document& document;
    Picks& picks;
    bool hadPicks = false;
    CbFunction<PicksNotice const> picksChanged{[this](PicksNotice const& notice) {
        if (notice != PicksNotice::Hovered) {
            storePlotColor();
        }
    }};
};
