#pragma once

#include <QAction>
#include <QKeySequence>
#include <QList>
#include <QString>
#include <functional>
#include <vector>

class QMenu;
class QToolBar;

/// What a program's action is called, does and answers to.
struct ActionText {
    QString text;               ///< in menus; the toolbar shows it too unless there is `name`
    QString help;               ///< one line for the tool tip
    QList<QKeySequence> keys{}; ///< the first is shown beside it
    QString name{};             ///< in the toolbar
};

/// An action that calls `function`; of `parent`, which is where its keys count if `context` says
/// so.
QAction* makeAction(QWidget* parent, ActionText const& text, std::function<void()> function,
                    Qt::ShortcutContext context = Qt::WindowShortcut);

/// The same with a state that it switches.
QAction* makeSwitch(QWidget* parent, ActionText const& text, std::function<void(bool)> function,
                    Qt::ShortcutContext context = Qt::WindowShortcut);

QAction* makeSeparator(QWidget* parent);

/// A button of a toolbar that opens a menu.
void addMenuButton(QToolBar& tools, QString const& text, QString const& help, QMenu* menu);

/// The tool tip of an action whose help has changed.
void setHelp(QAction& action, QString const& help);

/// What keys and buttons do within a panel, where no action stands for it: a row of the page of
/// shortcuts.
struct KeyHelp {
    QString keys;
    QString meaning;
};
using KeyHelps = std::vector<KeyHelp>;
