// Editing values at a frame: what stays, what goes, and what is refused.

#include "runtime/values/Keyframes.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace {

using Number = Animated<double>;

TEST(KeyframesTest, EditsKeepTheOtherKeyframes)
{
    Number const constant(3.0);
    Number const moving({{1, 10}, {5, 20}});
    struct Case {
        char const* name;
        ValueState edited;
        ValueState expected;
    };
    for (auto const& [name, edited, expected] :
         {Case{"value of a constant", withValueAt(constant, 4, 7.0), Number(7.0)},
          Case{"value between keys", withValueAt(moving, 3, 7.0),
               Number({{1, 10}, {3, 7}, {5, 20}})},
          Case{"value at a key", withValueAt(moving, 5, 7.0), Number({{1, 10}, {5, 7}})},
          Case{"value after the keys", withValueAt(moving, 6, 7.0),
               Number({{1, 10}, {5, 20}, {6, 7}})},
          Case{"each value", withEachValue(moving, [](double value) { return -value; }),
               Number({{1, -10}, {5, -20}})},
          Case{"each value of a constant", withEachValue(constant, [](double) { return 1.0; }),
               Number(1.0)},
          Case{"first key", withKeyframe(constant, 2), Number({{2, 3}})},
          Case{"key between", withKeyframe(moving, 3), Number({{1, 10}, {3, 15}, {5, 20}})},
          Case{"key on a key", withKeyframe(moving, 5), moving},
          Case{"no key there", withoutKeyframes(moving, {3}, 0), moving},
          Case{"one key less", withoutKeyframes(moving, {1, 2}, 0), Number({{5, 20}})},
          Case{"no key left", withoutKeyframes(moving, {1, 5}, 2), Number(12.5)},
          Case{"none of a constant", withoutKeyframes(constant, {0}, 0), constant},
          Case{"keys of another", withKeyframesOf(moving, Number({{2, 1}, {3, 2}}), 2),
               Number({{1, 10}, {4, 1}, {5, 2}})},
          Case{"a constant gets keys", withKeyframesOf(constant, moving, -1),
               Number({{0, 10}, {4, 20}})},
          Case{"a constant has none to give", withKeyframesOf(moving, constant, 1), moving},
          Case{"chosen keys", *onlyKeyframes(moving, {5, 6}), Number({{5, 20}})}}) {
        EXPECT_TRUE(isSameState(edited, expected)) << name;
    }
    EXPECT_EQ(getKeyframeTimes(moving), (std::vector<double>{1, 5}));
    EXPECT_EQ(getKeyframeTimes(constant), std::vector<double>());
    EXPECT_FALSE(onlyKeyframes(moving, {2}).has_value());
    EXPECT_FALSE(onlyKeyframes(constant, {0}).has_value());
}

TEST(KeyframesTest, RefusesTimesAndCurvesThatDoNotFit)
{
    constexpr double never = std::numeric_limits<double>::quiet_NaN();
    Animated<CurvePoints> const curves({{0, CurvePoints(6)}, {9, CurvePoints(6)}});
    EXPECT_THROW(withValueAt(curves, 4, CurvePoints(9)), std::invalid_argument);
    auto const all = withEachValue(curves, [](auto const&) { return CurvePoints(9); });
    EXPECT_EQ(all.evaluate(4).getValue().size(), 9U);
    EXPECT_THROW(withKeyframe(Animated<bool>(true), never), std::invalid_argument);
    EXPECT_THROW(withKeyframesOf(curves, curves, never), std::invalid_argument);
    EXPECT_THROW(withKeyframesOf(curves, Number(1), 0), std::invalid_argument);
    EXPECT_THROW(withKeyframe(Vector<double>{1}, 0), std::invalid_argument);
}

} // namespace
