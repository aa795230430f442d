// Source and result beside each other, and what is drawn around them.

#include "apps/editor/view/picture/PanelFixture.h"
#include "editor/view/window/Theme.h"
#include "support/MediaSupport.h"

namespace {

/// A white picture whose result is black.
class CompareTest : public PanelTest {
protected:
    CompareTest()
    {
        writeOther(folder.path / "white.png", 200, 3, 8, std::string(200 * 150 * 3, '\xff'));
        for (char const* const name : {"Min", "Max"}) {
            for (char const* const channel : {".Red", ".Green", ".Blue"}) {
                document.setNumbers("", {std::string("Linear.Output Level.") + name + channel},
                                    0.0);
            }
        }
        open(folder.path / "white.png");
        // Pixels' middles lie on whole places of the widget, the picture's in its middle.
        settle([this] { widget.setZoom(2.0, QRectF(widget.rect()).center()); });
    }
    ~CompareTest() noexcept override = default;

    void pressAndSettle(Qt::Key key, Qt::KeyboardModifiers keys = {})
    {
        settle([&] { press(key, keys); });
    }
    QColor colourAt(QPoint const& place) { return grab().pixelColor(place); }

    /// "s" for source and "r" for result at places of the picture.
    std::string read(std::vector<QPoint> const& places)
    {
        QImage const image = grab();
        std::string sides;
        for (QPoint const& place : places) {
            QColor const colour = image.pixelColor(onPixel(place.x(), place.y()));
            sides += colour == Qt::white ? 's' : colour == Qt::black ? 'r' : '?';
        }
        return sides;
    }
};

} // namespace

TEST_F(CompareTest, WipeLineIsDraggedTurnedAndTakenBack)
{
    std::vector<QPoint> const places{{10, 75}, {60, 20}, {130, 20}, {130, 135}, {190, 75}};
    EXPECT_EQ(read(places), "rrrrr");
    pressAndSettle(Qt::Key_W);
    EXPECT_EQ(read(places), "ssrrr");
    drag(Qt::LeftButton, onPixel(100, 75), onPixel(160, 75));
    EXPECT_EQ(read(places), "ssssr");
    drag(Qt::LeftButton, onPixel(160, 5), onPixel(100, 5)); // the line, away from its grips
    EXPECT_EQ(read(places), "ssrrr");
    EXPECT_TRUE(picks.getPicks().empty());

    // A knob is 64 of the widget from the middle: a quarter of a turn, the source at the top or
    // bottom.
    drag(Qt::LeftButton, onPixel(100, 75 - 32), onPixel(100 + 32, 75));
    EXPECT_EQ(read({{30, 20}, {170, 20}, {30, 130}, {170, 130}}), "ssrr");
    QTest::mousePress(&widget, Qt::LeftButton, {}, onPixel(100, 75));
    QTest::mouseMove(&widget, onPixel(100, 140));
    EXPECT_EQ(read({{30, 130}}), "s");
    press(Qt::Key_Escape);
    QTest::mouseRelease(&widget, Qt::LeftButton, {}, onPixel(100, 140));
    EXPECT_EQ(read({{30, 20}, {30, 130}}), "sr");

    for (int step = 0; step < 18; ++step) { // 5 degrees each
        press(Qt::Key_Up, Qt::AltModifier);
    }
    press(Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(read({{102, 20}, {102, 130}, {108, 20}}), "ssr");
    pressAndSettle(Qt::Key_W);
    EXPECT_EQ(read(places), "rrrrr");
}

TEST_F(CompareTest, SourceIsShownWhileItsKeyIsHeldAndBesideTheResult)
{
    settle([this] { QTest::keyPress(&widget, Qt::Key_S); });
    EXPECT_EQ(read({{60, 75}}), "s");
    QTest::keyRelease(&widget, Qt::Key_S);
    EXPECT_EQ(read({{60, 75}}), "r");

    pressAndSettle(Qt::Key_W, Qt::ShiftModifier);
    QPoint const place = onPixel(60, 75);
    QPoint const beside = place + QPoint(widget.width() - widget.getPane().width(), 0);
    EXPECT_EQ(colourAt(place), QColor(Qt::white));
    EXPECT_EQ(colourAt(beside), QColor(Qt::black));
    QTest::mouseClick(&widget, Qt::LeftButton, {}, beside);
    ASSERT_EQ(picks.getPicks().size(), 1U) << "on either side";
    EXPECT_EQ(picks.getPicks().front().place, (GeRectangle<int>{60, 75, 61, 76}));
}

TEST_F(CompareTest, WindowsAreAsTheRenderIsAndPixelsAreSquares)
{
    ExrRecipe recipe;
    recipe.dataWindow = {{10, 10}, {29, 29}};
    recipe.displayWindow = {{0, 0}, {39, 39}};
    writeExr(folder.path / "windows.exr", recipe);
    QSignalSpy said(&panel, &PicturePanel::viewTextChanged);
    open(folder.path / "windows.exr");
    EXPECT_TRUE(
        said.last().front().toString().contains(QString::fromUtf8("20 × 20 at 10,10 in 40 × 40")));
    settle([this] { widget.setZoom(8.0, {0.0, 0.0}); });
    QImage const image = grab();
    QPoint const place = onPixel(15, 15);
    QRgb const inside = image.pixel(place);
    for (int y = -4; y < 4; ++y) {
        for (int x = -4; x < 4; ++x) {
            EXPECT_EQ(image.pixel(place + QPoint(x, y)), inside) << x << ", " << y;
        }
    }
    EXPECT_EQ(image.pixelColor(onPixel(5, 20)), QColor(Qt::black)) << "in the display window";
    EXPECT_EQ(image.pixelColor(onPixel(-2, 20)), Theme::surround);
}
