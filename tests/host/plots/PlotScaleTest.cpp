#include "plots/PlotScale.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Unit = FigureAxis::Unit;

TEST(PlotScale, TicksLieAtRoundNumbersWithTheDigitsThatTellThemApart)
{
    struct Case {
        FigureAxis axis;
        std::vector<std::string> labels;
    };
    std::vector<Case> const cases = {
        {{0, 1, ""}, {"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}},
        {{-0.3, 0.25, ""}, {"−0.3", "−0.2", "−0.1", "0.0", "0.1", "0.2"}},
        {{0, 64, ""}, {"0", "10", "20", "30", "40", "50", "60"}},
        {{0.18, 0.181, ""}, {"0.1800", "0.1802", "0.1804", "0.1806", "0.1808", "0.1810"}},
        {{-1e16, 1e16, ""}, {"−1e16", "−5e15", "0", "5e15", "1e16"}},
        {{-8, 6, "", Unit::Stop}, {"−8", "−6", "−4", "−2", "0", "+2", "+4", "+6"}},
        {{-0.5, 2.5, "", Unit::Stop}, {"0", "+1", "+2"}}};
    for (auto const& [axis, labels] : cases) {
        std::vector<std::string> found;
        for (PlotTick const& tick : makeTicks(axis)) {
            found.push_back(tick.label);
            EXPECT_GE(tick.place, axis.low - 1e-9 * (axis.high - axis.low));
            EXPECT_LE(tick.place, axis.high + 1e-9 * (axis.high - axis.low));
        }
        EXPECT_EQ(found, labels);
    }
}

TEST(PlotScale, RoundAxesHoldTheirRangeAndHaveSomeWidth)
{
    struct Case {
        double low, high, roundLow, roundHigh;
    };
    for (auto const& [low, high, roundLow, roundHigh] :
         {Case{0, 1, 0, 1}, Case{0, 1.29, 0, 1.4}, Case{-0.01, 3.2, -0.5, 3.5},
          Case{0.5, 0.5, 0, 1}, Case{1000, 1000, 400, 1600}}) {
        FigureAxis const axis = makeRoundAxis(low, high, "");
        EXPECT_NEAR(axis.low, roundLow, 1e-9) << low << " " << high;
        EXPECT_NEAR(axis.high, roundHigh, 1e-9) << low << " " << high;
    }
}

} // namespace
