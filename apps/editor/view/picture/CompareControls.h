#pragma once

#include "editor/view/picture/PictureWidget.h"

#include <QAction>
#include <QList>
#include <QObject>

class QToolBar;

/// How source and result are compared, as menu and toolbar offer it.
class CompareControls : public QObject {
    Q_OBJECT

public:
    /// Keys count in `panel`.
    CompareControls(PictureWidget& comparing, QWidget* panel);

    /// A button with a menu.
    void addTo(QToolBar& tools);
    QList<QAction*> const& getActions() const { return actions; }

private:
    QAction* addWay(QString const& text, QString const& help, QKeySequence const& key,
                    PictureWidget::Compare way);
    void choose(PictureWidget::Compare way, bool isOn);

    PictureWidget& picture;
    QWidget* panel;
    QAction* wipe;
    QAction* sides;
    QList<QAction*> actions;
};
