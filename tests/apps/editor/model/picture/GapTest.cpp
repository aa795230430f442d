// At a frame that is missing nothing is said of the frame before, though its answers still come.

#include "apps/editor/ShotFixture.h"
#include "editor/model/curves/CurveHistogram.h"
#include "editor/model/picture/Picks.h"

namespace {

class GapTest : public ShotFixture {
protected:
    GapTest()
    {
        writeShot({1, 3});
        CurveDisplay display;
        display.histogram = CurveDisplay::Histogram::Source;
        writeCurveDisplay(document, display);
        plate.open(file("shot.####.exr"));
        waitUntil([this] { return !plate.isReading() && plate.getState(3) == FrameState::Held; });
        picks.add({0, 0, 1, 1});
        picks.add({2, 2, 20, 20});
    }
    ~GapTest() noexcept override = default;

    Document document;
    Plate plate{2};
    Picks picks{document, plate};
    CurveHistogram histogram{document, plate};
};

} // namespace

TEST_F(GapTest, AnswersOfTheFrameBeforeAreDropped)
{
    for (int round = 0; round < 50; ++round) { // some answers come before, some after
        plate.showFrame(1);
        EvEventManager::getInstance().waitForEvents(std::chrono::milliseconds(20));
        plate.showFrame(2);
        waitUntil([this] { return plate.getPicture() == nullptr; }); // at once but the first time
        EvEventManager::getInstance().processEvents();
        for (Pick const& pick : picks.getPicks()) {
            EXPECT_FALSE(pick.in.has_value()) << pick.number;
            EXPECT_FALSE(pick.out.has_value()) << pick.number;
        }
        EXPECT_EQ(histogram.getCounts(), nullptr);
    }
    plate.showFrame(3);
    waitUntil([this] {
        return picks.find(1)->out.has_value() && picks.find(2)->out.has_value() &&
               !histogram.isStale();
    });
    EXPECT_EQ(picks.find(1)->in->mean.red, 3.0F / 64.0F);
    EXPECT_NE(histogram.getCounts(), nullptr);
}
