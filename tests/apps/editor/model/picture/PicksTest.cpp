// Picks without a window: through the real tool, its controller and its chains.

#include "editor/model/picture/Picks.h"

#include "apps/editor/UserEvents.h"
#include "support/MediaSupport.h"

#include <cmath>
#include <optional>

namespace {

constexpr int width = 36;
constexpr int height = 52;

class PicksTest : public MediaTest {
protected:
    PicksTest()
    {
        ExrRecipe recipe;
        recipe.dataWindow = {{left, top}, {left + width - 1, top + height - 1}};
        recipe.displayWindow = recipe.dataWindow;
        writeExr(file("odd.exr"), recipe);
        for (char const* const name : {"R", "G", "B"}) {
            samples.push_back(loadExr(file("odd.exr")).at(name));
        }
        // Doubles every value, NaN too: what comes out is known without the tool.
        document.setNumbers("", {"Adjust"}, 0.0);
        document.setNumbers("", {maximum + ".Red", maximum + ".Green", maximum + ".Blue"}, 2.0);
        plate.open(file("odd.exr"));
        waitUntil([this] { return !plate.isReading(); });
    }

    ~PicksTest() noexcept override = default;

    void waitForOut(int number)
    {
        waitUntil([&] { return picks.find(number)->out.has_value(); });
    }
    float sample(int channel, int x, int y) const
    {
        auto const index = static_cast<std::size_t>((y - top) * width + x - left);
        return valueOf(samples[static_cast<std::size_t>(channel)], index);
    }

    static constexpr int left = -3;
    static constexpr int top = 5;
    std::string const maximum = "Linear.Output Level.Max";
    std::vector<std::string> samples;
    Document document;
    Plate plate{2};
    Picks picks{document, plate};
};

bool isSame(float a, float b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

} // namespace

TEST_F(PicksTest, PointsAndThePointedPixelAreAllAnswered)
{
    picks.hover(0, 6);
    for (int number = 1; number <= Picks::most; ++number) {
        picks.add({number, 9, number + 1, 10});
    }
    waitUntil([this] { return picks.getHovered()->out.has_value(); });
    for (int number = 1; number <= Picks::most; ++number) {
        waitForOut(number);
        Pick const& pick = *picks.find(number);
        EXPECT_TRUE(isSame(pick.in->mean.green, sample(1, number, 9))) << number;
        EXPECT_TRUE(isSame(pick.out->mean.green, 2.0F * sample(1, number, 9))) << number;
    }
    EXPECT_TRUE(isSame(picks.getHovered()->out->mean.blue, 2.0F * sample(2, 0, 6)));
}

TEST_F(PicksTest, AreaIsSummedUpBeforeAndAfterTheTool)
{
    GeRectangle<int> const area{left, top, left + 20, top + 30};
    picks.add(area);
    waitForOut(1);
    double sum = 0.0;
    float greatest = -std::numeric_limits<float>::infinity();
    int nbFinite = 0;
    for (int y = area.y0; y < area.y1; ++y) {
        for (int x = area.x0; x < area.x1; ++x) {
            float const value = sample(0, x, y);
            if (std::isfinite(value)) {
                sum += static_cast<double>(value);
                greatest = std::max(greatest, value);
                ++nbFinite;
            }
        }
    }
    Pick const& pick = *picks.find(1);
    EXPECT_EQ(pick.in->mean.red, static_cast<float>(sum / nbFinite));
    EXPECT_EQ(pick.out->mean.red, static_cast<float>(2.0 * sum / nbFinite));
    EXPECT_EQ(pick.in->greatest.red, greatest);
    EXPECT_EQ(pick.out->greatest.red, 2.0F * greatest);
    EXPECT_GT(pick.in->nans, 0U);
}

TEST_F(PicksTest, FollowTheLookAndKeepTheirPlacesWithUndo)
{
    picks.add({1, 9, 2, 10});
    picks.add({2, 9, 8, 14});
    waitForOut(1);
    waitForOut(2);
    float const least = picks.find(2)->in->least.blue;
    document.setNumbers("", {maximum + ".Blue"}, 4.0);
    waitUntil([&] { return picks.find(2)->out->least.blue == 4.0F * least; });
    waitUntil([&] { return isSame(picks.find(1)->out->mean.blue, 4.0F * sample(2, 1, 9)); });
    document.getHistory().undo();
    waitUntil([&] { return picks.find(2)->out->least.blue == 2.0F * least; });
    EXPECT_EQ(picks.find(1)->place, (GeRectangle<int>{1, 9, 2, 10}));
}

TEST_F(PicksTest, TheFifthMovesTheSelectedOneAndFreeNumbersAreFilled)
{
    auto const place = [](int x) { return GeRectangle<int>{x, 9, x + 1, 10}; };
    for (int x = 0; x < Picks::most; ++x) {
        picks.add(place(x));
    }
    picks.select(2);
    picks.add(place(20));
    EXPECT_EQ(picks.getPicks().size(), 4U);
    EXPECT_EQ(picks.find(2)->place, place(20));
    picks.remove(2);
    picks.add(place(21));
    EXPECT_EQ(picks.find(2)->place, place(21));
    EXPECT_EQ(picks.getSelected(), 2);
}

TEST_F(PicksTest, OutsideOfTheDataWindowHasNoValues)
{
    picks.add({left + width + 4, top, left + width + 5, top + 1});
    picks.add({left + width - 1, top, left + width + 5, top + 1}); // a pixel of it is within
    waitForOut(2);
    EXPECT_FALSE(picks.find(1)->in.has_value());
    EXPECT_FALSE(picks.find(1)->out.has_value());
    EXPECT_TRUE(isSame(picks.find(2)->in->mean.red, sample(0, left + width - 1, top)) ||
                picks.find(2)->in->infinities > 0);
}
