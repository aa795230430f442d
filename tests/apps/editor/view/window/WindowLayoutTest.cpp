#include "editor/view/window/WindowLayout.h"

#include "editor/view/window/EditorWindow.h"
#include "editor/view/window/Settings.h"

#include <QDockWidget>
#include <QMenuBar>
#include <QScreen>
#include <QTest>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <utility>

namespace {

QDockWidget& findPanel(EditorWindow& window, char const* name)
{
    return *window.findChild<QDockWidget*>(name);
}

std::unique_ptr<EditorWindow> openWindow()
{
    auto window = std::make_unique<EditorWindow>();
    window->goOn();
    window->show();
    return window;
}

/// A pixel apart at most: the layout shares out odd ones by what was laid out before.
void expectSamePlace(QRect const& place, QRect const& wanted)
{
    for (auto const& [got, edge] :
         {std::pair(place.left(), wanted.left()), std::pair(place.right(), wanted.right()),
          std::pair(place.top(), wanted.top()), std::pair(place.bottom(), wanted.bottom())}) {
        EXPECT_LE(std::abs(got - edge), 1);
    }
}

} // namespace

TEST(WindowLayoutTest, PanelsAndSizeAreAsTheyWereLeftAndCanBeReset)
{
    auto window = openWindow();
    window->resize(790, 700);
    QTest::qWait(0);
    QRect const first = findPanel(*window, "curves").geometry();
    window->resize(780, 750);
    findPanel(*window, "parameters").close();
    findPanel(*window, "curves").setFloating(true);
    EXPECT_TRUE(window->close());
    window.reset();

    window = openWindow();
    EXPECT_EQ(window->size(), QSize(780, 750));
    EXPECT_TRUE(findPanel(*window, "parameters").isHidden());
    EXPECT_TRUE(findPanel(*window, "curves").isFloating());
    findPanel(*window, "parameters").toggleViewAction()->trigger();
    EXPECT_FALSE(findPanel(*window, "parameters").isHidden());
    window->resize(790, 700);
    for (QAction* const action : window->findChildren<QAction*>()) {
        if (action->text() == "Reset la&yout") {
            action->trigger();
        }
    }
    QTest::qWait(0);
    expectSamePlace(findPanel(*window, "curves").geometry(), first);
    window->close();
}

TEST(WindowLayoutTest, SettingsThatAreBrokenOrOfAnotherScreenLeadToAWindowInReach)
{
    auto const path = openSettings()->fileName().toStdString();
    for (std::string const& text :
         {std::string("[window\n\xff\x00geometry=@ByteArray(", 30), std::string("panels=3\n")}) {
        std::ofstream(path, std::ios::binary) << text;
        auto const window = openWindow();
        EXPECT_FALSE(findPanel(*window, "curves").isHidden());
    }
    auto window = openWindow();
    window->move(20000, -5000);
    window->close();
    window.reset();
    window = openWindow();
    QRect const frame = window->frameGeometry();
    QRect const seen = frame & window->screen()->availableGeometry();
    EXPECT_EQ(seen.top(), frame.top());
    EXPECT_GT(seen.width(), 50);
}
