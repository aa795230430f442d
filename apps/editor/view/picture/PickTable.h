#pragma once

#include "editor/model/picture/Picks.h"

#include <QLabel>

/// The picks' values before and after the tool, over the picture's lower left corner. It is there
/// while there are picks, and lets the mouse through.
class PickTable : public QLabel {
    Q_OBJECT

public:
    PickTable(Picks& shownPicks, QWidget* picture);

    /// Stays in the corner.
    void place();

private:
    void show(PicksNotice notice);

    Picks& picks;
    CbFunction<PicksNotice const> changed{[this](PicksNotice const& notice) { show(notice); }};
};
