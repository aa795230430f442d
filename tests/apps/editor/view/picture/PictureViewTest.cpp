// How the picture is looked at: zoom and channels, by wheel, fingers and keys.

#include "apps/editor/view/picture/PanelFixture.h"
#include "support/MediaSupport.h"

#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QWheelEvent>

namespace {

/// A picture of one colour.
class PictureViewTest : public PanelTest {
protected:
    PictureViewTest()
    {
        std::string pixels;
        for (int pixel = 0; pixel < 1000 * 750; ++pixel) {
            pixels += "\xc8\x64\x32";
        }
        writeOther(folder.path / "plain.png", 1000, 3, 8, pixels);
        open(folder.path / "plain.png");
        widget.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&panel, longestWait));
    }
    ~PictureViewTest() noexcept override = default;

    void turn(int angle)
    {
        QWheelEvent event(cursor, widget.mapToGlobal(cursor), {}, {0, angle}, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&widget, &event);
    }
    void pinch(double by)
    {
        QNativeGestureEvent event(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(),
                                  2, cursor, cursor, widget.mapToGlobal(cursor), by, {});
        QCoreApplication::sendEvent(&widget, &event);
    }
    static void repeat(int times, std::function<void()> const& act)
    {
        while (times-- > 0) {
            act();
        }
    }
    QColor colourInTheMiddle() { return grab().pixelColor(widget.rect().center()); }

    QPointF const cursor{250.0, 170.0};
};

} // namespace

TEST_F(PictureViewTest, WheelAndFingersZoomAboutTheCursorAndKeysAboutTheMiddle)
{
    double const fitted = widget.getZoom();
    EXPECT_TRUE(QRectF(widget.rect()).contains(widget.toWidget(GeRectangle<int>{0, 0, 1000, 750})));
    struct Case {
        char const* what;
        std::function<void()> act;
        QPointF about;
        bool isCloser;
    };
    QPointF const middle = QRectF(widget.rect()).center();
    for (auto const& [what, act, about, isCloser] :
         {Case{"wheel", [this] { turn(120); }, cursor, true},
          Case{"trackpad", [this] { repeat(9, [this] { turn(40); }); }, cursor, true},
          Case{"two fingers apart", [this] { repeat(4, [this] { pinch(0.2); }); }, cursor, true},
          Case{"two fingers together", [this] { pinch(-0.3); }, cursor, false},
          Case{"wheel back", [this] { turn(-120); }, cursor, false},
          Case{"+", [this] { press(Qt::Key_Plus); }, middle, true},
          Case{"-", [this] { press(Qt::Key_Minus); }, middle, false}}) {
        settle([this] { press(Qt::Key_1); });
        EXPECT_EQ(widget.getZoom(), 1.0) << what;
        QPointF const before = widget.toPicture(about);
        settle(act);
        EXPECT_EQ(widget.getZoom() > 1.0, isCloser) << what;
        EXPECT_EQ(widget.getZoom() < 1.0, !isCloser) << what;
        QPointF const way = widget.toPicture(about) - before;
        EXPECT_LE(way.manhattanLength(), 2.0) << what; // whole pixels of the screen
    }
    settle([this] { press(Qt::Key_F); });
    EXPECT_EQ(widget.getZoom(), fitted);
}

TEST_F(PictureViewTest, KeyOfAChannelShowsItAloneAndTheColourAgain)
{
    QColor const colour(0xc8, 0x64, 0x32);
    EXPECT_EQ(colourInTheMiddle(), colour);
    for (auto const& [key, value] : {std::pair(Qt::Key_R, 0xc8), std::pair(Qt::Key_G, 0x64),
                                     std::pair(Qt::Key_B, 0x32), std::pair(Qt::Key_A, 0xff)}) {
        settle([this, pressed = key] { press(pressed); });
        EXPECT_EQ(colourInTheMiddle(), QColor(value, value, value)) << key;
    }
    settle([this] { press(Qt::Key_A); });
    EXPECT_EQ(colourInTheMiddle(), colour);
}
