// The picture offscreen, driven by mouse and keys.

#include "apps/editor/view/picture/PanelFixture.h"

#include <QMenu>

namespace {

class PicturePanelTest : public PanelTest {
protected:
    PicturePanelTest()
    {
        openScene();
        widget.setZoom(2.0, {0.0, 0.0}); // every pixel can be pointed at
    }
    ~PicturePanelTest() noexcept override = default;

    GeRectangle<int> placeOf(int number) const { return picks.find(number)->place; }
};

GeRectangle<int> pixel(int x, int y)
{
    return {x, y, x + 1, y + 1};
}

} // namespace

TEST_F(PicturePanelTest, ClickSetsAPickAndDragAnArea)
{
    QTest::mouseClick(&widget, Qt::LeftButton, {}, onPixel(100, 80));
    drag(Qt::LeftButton, onPixel(200, 150), onPixel(240, 170));
    ASSERT_EQ(picks.getPicks().size(), 2U);
    EXPECT_EQ(placeOf(1), pixel(100, 80));
    EXPECT_EQ(placeOf(2), (GeRectangle<int>{200, 150, 241, 171}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return picks.find(2)->out.has_value(); }, longestWait));
    auto const* const table = widget.findChild<PickTable*>();
    EXPECT_TRUE(table->isVisible());
    EXPECT_TRUE(table->text().contains("200,150  41 × 21")) << table->text().toStdString();
    QTest::mouseClick(&widget, Qt::LeftButton, {}, {3, 3});
    EXPECT_EQ(picks.getPicks().size(), 2U) << "beside the picture";
}

TEST_F(PicturePanelTest, PickIsMovedByMouseAndKeysAndEscapePutsItBack)
{
    QTest::mouseClick(&widget, Qt::LeftButton, {}, onPixel(100, 80));
    drag(Qt::LeftButton, onPixel(100, 80), onPixel(300, 200));
    EXPECT_EQ(placeOf(1), pixel(300, 200));
    press(Qt::Key_Left, Qt::ShiftModifier);
    press(Qt::Key_Down);
    EXPECT_EQ(placeOf(1), pixel(290, 201));
    press(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(placeOf(1), (GeRectangle<int>{290, 201, 292, 202}));

    QTest::mousePress(&widget, Qt::LeftButton, {}, onPixel(50, 50));
    EXPECT_EQ(picks.getPicks().size(), 2U);
    press(Qt::Key_Escape);
    EXPECT_EQ(picks.getPicks().size(), 1U);
    QTest::mouseRelease(&widget, Qt::LeftButton, {}, onPixel(50, 50));
}

TEST_F(PicturePanelTest, PicksAreSetSelectedAndRemovedByKeys)
{
    QTest::mouseMove(&widget, onPixel(60, 40));
    press(Qt::Key_P);
    QTest::mouseMove(&widget, onPixel(61, 40));
    press(Qt::Key_P);
    EXPECT_EQ(placeOf(2), pixel(61, 40));
    press(Qt::Key_N);
    press(Qt::Key_N);
    EXPECT_EQ(picks.getSelected(), 1);
    press(Qt::Key_Delete);
    ASSERT_EQ(picks.getPicks().size(), 1U);
    EXPECT_EQ(picks.getPicks().front().number, 2);
    press(Qt::Key_P);
    press(Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_TRUE(picks.getPicks().empty());
    EXPECT_FALSE(widget.findChild<PickTable*>()->isVisible());
}

TEST_F(PicturePanelTest, OtherButtonsPanAndTheMenuOfAMarkRemovesIt)
{
    QTest::mouseClick(&widget, Qt::LeftButton, {}, onPixel(100, 80));
    for (auto const& [button, keys] :
         {std::pair(Qt::MiddleButton, Qt::NoModifier), std::pair(Qt::RightButton, Qt::NoModifier),
          std::pair(Qt::LeftButton, Qt::AltModifier)}) {
        QPoint const before = onPixel(100, 80);
        drag(button, before, before + QPoint(30, 20), keys);
        EXPECT_EQ(onPixel(100, 80), before + QPoint(30, 20)) << button;
    }
    EXPECT_EQ(placeOf(1), pixel(100, 80));
    QTest::mouseClick(&widget, Qt::RightButton, {}, onPixel(100, 80));
    auto* const menu = widget.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    menu->actions().front()->trigger();
    EXPECT_TRUE(picks.getPicks().empty());
}
