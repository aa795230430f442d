// Values over time: what they are, and how long that holds.

#include "runtime/values/Animated.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

double justBefore(double time)
{
    return std::nextafter(time, -infinity);
}

template <typename T>
struct TimeCase {
    double time;
    T value;
    double start, end;
};

template <typename T>
void expectCases(Animated<T> const& animated, std::vector<TimeCase<T>> const& cases)
{
    for (auto const& [time, value, start, end] : cases) {
        auto const result = animated.evaluate(time);
        EXPECT_EQ(result.getValue(), value) << "at " << time;
        EXPECT_EQ(result.getValidity().getStart(), start) << "at " << time;
        EXPECT_EQ(result.getValidity().getEnd(), end) << "at " << time;
    }
}

TEST(AnimatedTest, DoublesGoInAStraightLineBetweenKeys)
{
    Animated<double> const animated({{1, 10}, {3, 20}, {5, 20}, {6, 20}, {8, 0}});
    expectCases<double>(animated, {{-5, 10, -infinity, 1},
                                   {1, 10, -infinity, 1},
                                   {1.5, 12.5, 1.5, 1.5},
                                   {3, 20, 3, 6},
                                   {5, 20, 3, 6},
                                   {5.7, 20, 3, 6},
                                   {6, 20, 3, 6},
                                   {7, 10, 7, 7},
                                   {8, 0, 8, infinity},
                                   {99, 0, 8, infinity}});
    expectCases(Animated<double>(4.5), {{-1e9, 4.5, -infinity, infinity}});
}

TEST(AnimatedTest, IntegersAndSwitchesHoldUntilTheNextKey)
{
    Animated<int> const animated({{1, 7}, {3, 8}, {5, 8}, {6, 9}});
    expectCases<int>(animated, {{-5, 7, -infinity, justBefore(3)},
                                {2.9, 7, -infinity, justBefore(3)},
                                {3, 8, 3, justBefore(6)},
                                {5.5, 8, 3, justBefore(6)},
                                {6, 9, 6, infinity}});
}

TEST(AnimatedTest, KeysHaveFiniteTimesThatRiseAndCurvesOfOneLength)
{
    using Numbers = Animated<double>;
    using Curves = Animated<CurvePoints>;
    EXPECT_THROW(Numbers({{1, 0}, {1, 2}}), std::invalid_argument);
    EXPECT_THROW(Numbers({{2, 0}, {1, 2}}), std::invalid_argument);
    EXPECT_THROW(Numbers({{-infinity, 0}, {1, 2}}), std::invalid_argument);
    EXPECT_THROW(Numbers({{1, 0}, {infinity, 2}}), std::invalid_argument);
    EXPECT_THROW(Numbers({{std::nan(""), 0}}), std::invalid_argument);
    EXPECT_THROW(Numbers(std::vector<Keyframe<double>>()), std::invalid_argument);
    EXPECT_THROW(Curves({{0, CurvePoints(6)}, {1, CurvePoints(6)}, {2, CurvePoints(3)}}),
                 std::invalid_argument);
}

TEST(AnimatedTest, CurvesGoInAStraightLinePointByPoint)
{
    CurvePoints const low{{0, 0}, {1, 0}, {2, 0}};
    CurvePoints const high{{0, 4}, {3, 8}, {2, 12}};
    CurvePoints const quarter{{0, 1}, {1.5F, 2}, {2, 3}};
    expectCases<CurvePoints>(Animated<CurvePoints>({{0, low}, {4, high}}),
                             {{-1, low, -infinity, 0}, {1, quarter, 1, 1}, {4, high, 4, infinity}});
}

} // namespace
