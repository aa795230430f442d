// Views by OpenColorIO in the picture, from the menu.

#include "apps/editor/DisplayConfigText.h"
#include "apps/editor/view/picture/PanelFixture.h"
#include "support/MediaSupport.h"

#include <QMenu>
#include <fstream>

namespace {

/// Names a configuration before there is a panel.
struct NamedConfig {
    NamedConfig() { qputenv("OCIO", (configFolder.path / "config.ocio").c_str()); }
    ~NamedConfig() { qunsetenv("OCIO"); }

    TestFolder configFolder;
};

class DisplayMenuTest : public NamedConfig, public PanelTest {
protected:
    DisplayMenuTest()
    {
        writeOther(folder.path / "red.png", 1, 3, 8, std::string("\x40\x00\x00", 3));
        QObject::connect(&panel, &PicturePanel::viewTextChanged,
                         [this](QString const& text) { viewText = text; });
        QObject::connect(&panel, &PicturePanel::failed, [this] { ++nbFailures; });
    }
    ~DisplayMenuTest() noexcept override = default;

    QAction* find(QString const& name)
    {
        for (QMenu* const menu : panel.findChildren<QMenu*>()) {
            for (QAction* const action : menu->actions()) {
                if (action->text() == name) {
                    return action;
                }
            }
        }
        return nullptr;
    }
    QColor getColour() { return grab().pixelColor(onPixel(0, 0)); }
    bool waitFor(auto const& isReached) { return QTest::qWaitFor(isReached, longestWait); }

    QString viewText;
    int nbFailures = 0;
};

} // namespace

TEST_F(DisplayMenuTest, ViewIsChosenAndTakenBack)
{
    std::ofstream(configFolder.path / "config.ocio") << displayConfigText;
    open(folder.path / "red.png");
    ASSERT_TRUE(waitFor([this] { return find("Twice") != nullptr; }));
    EXPECT_TRUE(viewText.endsWith("neutral view"));
    find("Twice")->trigger();
    ASSERT_TRUE(waitFor([this] { return getColour() == QColor(0, 0, 0x80); }));
    EXPECT_TRUE(viewText.endsWith("view: Screen / Twice")) << viewText.toStdString();
    find("half")->trigger();
    ASSERT_TRUE(waitFor([this] { return getColour() == QColor(0, 0, 0x40); }));
    EXPECT_TRUE(viewText.endsWith("look half"));
    find("&Plain")->trigger();
    EXPECT_TRUE(viewText.endsWith("neutral view"));
    ASSERT_TRUE(waitFor([this] { return getColour() == QColor(0x40, 0, 0); }));
    EXPECT_EQ(nbFailures, 0);
}

TEST_F(DisplayMenuTest, MissingConfigurationIsSaidAndThePlainViewStays)
{
    open(folder.path / "red.png");
    ASSERT_TRUE(waitFor([this] { return nbFailures == 1; }));
    EXPECT_EQ(getColour(), QColor(0x40, 0, 0));
    EXPECT_TRUE(viewText.endsWith("neutral view"));
    EXPECT_EQ(find("Twice"), nullptr);
}
