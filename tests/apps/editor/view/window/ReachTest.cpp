// Whether everything in the window is named and can be had by keys.

#include "editor/view/window/EditorWindow.h"

#include <QAccessible>
#include <QMenuBar>
#include <QTest>
#include <QTextBrowser>
#include <QToolButton>
#include <gtest/gtest.h>
#include <set>

namespace {

constexpr int longestWaitForWindow = 30000; // milliseconds; no measure of speed

class ReachTest : public testing::Test {
protected:
    ReachTest()
    {
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window, longestWaitForWindow));
    }

    QList<QAction*> listOffered() const
    {
        QList<QAction*> found;
        for (QAction* const menu : window.menuBar()->actions()) {
            found += listActions(*menu->menu());
        }
        return found;
    }
    static QList<QAction*> listActions(QMenu const& menu)
    {
        QList<QAction*> found;
        for (QAction* const action : menu.actions()) {
            if (action->menu() != nullptr) {
                found += listActions(*action->menu());
            } else if (!action->isSeparator()) {
                found << action;
            }
        }
        return found;
    }

    EditorWindow window;
};

std::string describe(QWidget const& widget)
{
    return std::string(widget.metaObject()->className()) + " in " +
           widget.parentWidget()->metaObject()->className();
}

} // namespace

TEST_F(ReachTest, WhatTakesKeysHasANameAndButtonsHaveATipWithTheirKey)
{
    for (QWidget* const widget : window.findChildren<QWidget*>()) {
        bool const isButton = qobject_cast<QToolButton*>(widget) != nullptr;
        bool const takesKeys = widget->focusPolicy() != Qt::NoFocus || isButton;
        if (!takesKeys || !widget->isVisibleTo(&window) || widget->objectName().startsWith("qt_")) {
            continue;
        }
        QString const name = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
        EXPECT_FALSE(name.trimmed().isEmpty()) << describe(*widget);
        auto const* const button = qobject_cast<QToolButton*>(widget);
        if (button != nullptr) {
            EXPECT_FALSE(button->toolTip().isEmpty()) << describe(*widget) << name.toStdString();
        }
        if (button != nullptr && button->defaultAction() != nullptr) {
            QString const key = button->defaultAction()->shortcut().toString();
            EXPECT_TRUE(button->toolTip().contains(key)) << button->toolTip().toStdString();
        }
    }
}

TEST_F(ReachTest, NoKeyHasTwoMeaningsAndAllAreOnThePage)
{
    window.getDocument().setNumbers("Open project", {"Mix"}, 0.5);
    QTest::keyClick(&window, Qt::Key_F1);
    auto const* const page = window.findChild<QTextBrowser*>();
    ASSERT_NE(page, nullptr);
    QString const text = page->toPlainText();
    EXPECT_TRUE(text.contains("Ctrl+Z\nUndo\n")) << text.toStdString();
    EXPECT_EQ(window.menuBar()->actions()[1]->menu()->actions().front()->text(),
              "&Undo: open project");
    std::map<QWidget const*, std::set<QString>> taken;
    for (QAction const* const action : listOffered()) {
        for (QKeySequence const& keys : action->shortcuts()) {
            EXPECT_TRUE(text.contains(keys.toString())) << keys.toString().toStdString();
            EXPECT_TRUE(
                taken[qobject_cast<QWidget*>(action->parent())].insert(keys.toString()).second)
                << keys.toString().toStdString() << " of " << action->text().toStdString();
        }
    }
    for (QString const& ofTheWindow : taken[&window]) {
        for (auto const& [widget, keys] : taken) {
            EXPECT_TRUE(widget == &window || !keys.contains(ofTheWindow))
                << ofTheWindow.toStdString();
        }
    }
}
