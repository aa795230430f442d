#include "session/AxisHistogram.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(AxisHistogram, ValuesAreSpreadOverTheClassesThatTheyReach)
{
    struct Case {
        FigureAxis::Unit unit;
        double low, high;
        std::vector<double> counts; ///< of four classes from 0 to 4, or of stops from 0 to 4
        double outside;
    };
    auto const value = FigureAxis::Unit::Value;
    auto const stop = FigureAxis::Unit::Stop;
    for (auto const& [unit, low, high, counts, outside] :
         {Case{value, 1.5, 1.5, {0, 8, 0, 0}, 0}, Case{value, 4, 4, {0, 0, 0, 8}, 0},
          Case{value, 0, 0, {8, 0, 0, 0}, 0}, Case{value, 0.5, 2.5, {2, 4, 2, 0}, 0},
          Case{value, 2.5, 0.5, {2, 4, 2, 0}, 0}, Case{value, -2, 2, {2, 2, 0, 0}, 4},
          Case{value, 5, 6, {0, 0, 0, 0}, 8}, Case{value, -1, -0.01, {0, 0, 0, 0}, 8},
          Case{value, NAN, NAN, {0, 0, 0, 0}, 8}, Case{value, infinity, infinity, {0, 0, 0, 0}, 8},
          Case{stop, 2, 8, {0, 4, 4, 0}, 0}, Case{stop, 0, 0, {0, 0, 0, 0}, 8},
          Case{stop, -1, -1, {0, 0, 0, 0}, 8}, Case{stop, 16, 16, {0, 0, 0, 8}, 0}}) {
        AxisHistogram histogram({0, 4, "", unit}, 4);
        histogram.add(1, low, high, 8);
        EXPECT_EQ(histogram.getCounts()[1], counts) << low << " to " << high;
        EXPECT_EQ(histogram.getNbOutside(), outside) << low << " to " << high;
        EXPECT_EQ(histogram.getNbValues(), 8);
        EXPECT_EQ(histogram.getCounts()[0], std::vector<double>(4, 0.0));
    }
}

} // namespace
