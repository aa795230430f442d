#include "editor/view/window/Actions.h"

#include <QToolBar>
#include <QToolButton>

namespace {

QAction* addAction(QWidget* parent, ActionText const& text, Qt::ShortcutContext context)
{
    auto* const action = new QAction(text.text, parent);
    action->setShortcuts(text.keys);
    action->setShortcutContext(context);
    if (!text.name.isEmpty()) {
        action->setIconText(text.name);
    }
    setHelp(*action, text.help);
    parent->addAction(action);
    return action;
}

} // namespace

QAction* makeAction(QWidget* parent, ActionText const& text, std::function<void()> function,
                    Qt::ShortcutContext context)
{
    QAction* const action = addAction(parent, text, context);
    QObject::connect(action, &QAction::triggered, parent, std::move(function));
    return action;
}

QAction* makeSwitch(QWidget* parent, ActionText const& text, std::function<void(bool)> function,
                    Qt::ShortcutContext context)
{
    QAction* const action = addAction(parent, text, context);
    action->setCheckable(true);
    QObject::connect(action, &QAction::triggered, parent, std::move(function));
    return action;
}

QAction* makeSeparator(QWidget* parent)
{
    auto* const separator = new QAction(parent);
    separator->setSeparator(true);
    return separator;
}

void setHelp(QAction& action, QString const& help)
{
    QString const key = action.shortcut().toString(QKeySequence::NativeText);
    action.setToolTip(key.isEmpty() ? help : help + " (" + key + ")");
}

void addMenuButton(QToolBar& tools, QString const& text, QString const& help, QMenu* menu)
{
    auto* const button = new QToolButton(&tools);
    button->setText(text + QString::fromUtf8(" ▾"));
    button->setAccessibleName(text);
    button->setToolTip(help);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setMenu(menu);
    tools.addWidget(button);
}
