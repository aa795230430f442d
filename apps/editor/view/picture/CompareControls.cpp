#include "editor/view/picture/CompareControls.h"

#include "editor/view/window/Actions.h"

#include <QMenu>
#include <QToolBar>

using Compare = PictureWidget::Compare;

CompareControls::CompareControls(PictureWidget& comparing, QWidget* itsPanel)
    : QObject(itsPanel), picture(comparing), panel(itsPanel),
      wipe(addWay(tr("&Wipe"), tr("Source and result on the two sides of a line"), Qt::Key_W,
                  Compare::Wipe)),
      sides(addWay(tr("&Side by side"), tr("Source and result beside each other"),
                   Qt::SHIFT | Qt::Key_W, Compare::SideBySide))
{
    actions << wipe << sides
            << makeAction(panel,
                          {tr("&Upright wipe"), tr("The line of the wipe back into the middle")},
                          [this] { picture.getWipe().reset(); });
}

QAction* CompareControls::addWay(QString const& text, QString const& help, QKeySequence const& key,
                                 Compare way)
{
    return makeSwitch(
        panel, {text, help, {key}}, [this, way](bool isOn) { choose(way, isOn); },
        Qt::WidgetWithChildrenShortcut);
}

void CompareControls::choose(Compare way, bool isOn)
{
    picture.setCompare(isOn ? way : Compare::Off);
    wipe->setChecked(picture.getCompare() == Compare::Wipe);
    sides->setChecked(picture.getCompare() == Compare::SideBySide);
}

void CompareControls::addTo(QToolBar& tools)
{
    auto* const menu = new QMenu(&tools);
    menu->addActions(actions);
    addMenuButton(tools, tr("Compare"),
                  tr("Compare source and result; hold S for the source alone"), menu);
}

#include "editor/view/picture/moc_CompareControls.cpp"
