#pragma once

#include "editor/view/curves/CurveWidget.h"
#include "editor/view/window/Actions.h"

#include <QObject>

class OffsetDialog;
class PresetsDialog;
class QMenu;

/// What the curve menus offer. Keys count while the graph has the focus.
class CurveActions : public QObject {
    Q_OBJECT

public:
    CurveActions(CurveModel& shownModel, CurveWidget& graphWidget);

    /// Copy, paste, shapes, presets and resets.
    QList<QAction*> const& getCurveActions() const { return curveActions; }
    QList<QAction*> const& getShowActions() const { return showActions; }
    QList<QAction*> const& getFitActions() const { return fitActions; }
    QList<QAction*> getAll() const;

    QAction* getStops() const { return stops; }

    /// Tells each what is on and what can be done.
    void refresh();

private:
    QAction* add(QList<QAction*>& list, ActionText const& text, std::function<void()> function);
    QAction* addSwitch(QList<QAction*>& list, ActionText const& text,
                       std::function<void(CurveDisplay&, bool)> const& change);
    void addSeparator(QList<QAction*>& list);
    void buildCurveActions();
    void buildKeyActions();
    void buildShowActions();
    void copy();
    void paste(CurveEditor::Target target);
    void insertHalfway();
    void openPresets();
    void openOffset();
    void openMenu(QPoint const& place, QPoint const& onScreen);
    void addPlaceActions(QMenu& menu, QPoint const& place);

    CurveModel& model;
    CurveWidget& graph;
    QList<QAction*> curveActions;
    QList<QAction*> keyActions; ///< for what is selected
    QList<QAction*> showActions;
    QList<QAction*> fitActions;
    QList<std::pair<QAction*, std::function<bool(CurveDisplay const&)>>> switches;
    QAction* stops = nullptr;
    PresetsDialog* presets = nullptr; ///< both when first asked for
    OffsetDialog* offset = nullptr;
    CbFunction<CurveEditor const> edited{[this](CurveEditor const&) { refresh(); }};
};
