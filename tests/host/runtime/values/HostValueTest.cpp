// What values accept, and who is told of a change.

#include "runtime/values/HostValue.h"

#include "support/Failures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Policy = RCShdPtr<PiInputPolicy const>;
constexpr float floatInfinity = std::numeric_limits<float>::infinity();
constexpr double largest = std::numeric_limits<double>::max();

Policy makeRange(double minimum, double maximum)
{
    return PiRangeInputPolicy<double>::create(minimum, maximum, minimum, true, false);
}

Policy makeChoices(bool animatable)
{
    PiEnumPolicy::Builder builder;
    builder.addPair(0, "One");
    builder.addPair(3, "Two");
    builder.setAnimatable(animatable);
    return builder.create();
}

TEST(HostValueTest, RefusesWhatItsPolicyDoesNotAllowAndSaysWhatItTakes)
{
    struct Case {
        Policy policy;
        ValueState state;
        std::string text; ///< empty: accepted
    };
    Policy const unit = makeRange(-1, 1);
    for (auto const& [policy, state, text] :
         {Case{unit, Animated<double>(1.0), ""}, Case{unit, Animated<double>(-1.0), ""},
          Case{unit, Animated<double>({{0, -2}, {1, 0}}), "\"x\" takes -1 to 1, not -2"},
          Case{makeChoices(true), Animated<int>({{0, 0}, {1, 1}}),
               "\"x\" takes one of 0 \"One\", 3 \"Two\", not 1"},
          Case{{},
               Animated<CurvePoints>(CurvePoints{{0, 0}, {1, 0}, {2, floatInfinity}}),
               "the curve \"x\" has a point that is not a finite number"},
          Case{{},
               Animated<CurvePoints>(CurvePoints{{-floatInfinity, 0}, {1, 0}, {2, 0}}),
               "the curve \"x\" has a point that is not a finite number"},
          Case{unit, Animated<double>(1.5), "\"x\" takes -1 to 1, not 1.5"},
          Case{unit, Animated<double>({{0, 0}, {1, -2}}), "\"x\" takes -1 to 1, not -2"},
          Case{makeRange(0, largest), Animated<double>(-0.5), "\"x\" takes 0 and above, not -0.5"},
          Case{makeRange(-largest, 2), Animated<double>(3.0), "\"x\" takes 2 and below, not 3"},
          Case{makeRange(-2147483647.0, 2147483647.0), Animated<double>(3e9), ""},
          Case{makeRange(-largest, largest), Animated<double>(floatInfinity),
               "\"x\" takes any finite number, not inf"},
          Case{{}, Animated<double>(std::nan("")), "\"x\" takes any finite number, not nan"},
          Case{makeChoices(true), Animated<int>({{0, 0}, {1, 3}}), ""},
          Case{makeChoices(true), Animated<int>(1),
               "\"x\" takes one of 0 \"One\", 3 \"Two\", not 1"},
          Case{makeChoices(false), Animated<int>({{0, 0}, {1, 3}}), "\"x\" cannot be animated"},
          Case{{},
               Animated<CurvePoints>(CurvePoints(4)),
               "the curve \"x\" needs three points per key (handle, key, handle), not 4 in all"},
          Case{{}, Vector<double>(1), "\"x\" holds another kind of value"}}) {
        ValueState initial = Animated<double>(0);
        if (std::holds_alternative<Animated<int>>(state)) {
            initial = Animated<int>(0);
        } else if (std::holds_alternative<Animated<CurvePoints>>(state)) {
            initial = Animated<CurvePoints>(CurvePoints());
        }
        auto const value = makeShared<HostValue>("x", initial, policy, nullptr);
        EXPECT_EQ(messageOf<ValueError>([&, &wanted = state] { value->setState(wanted); }), text);
        EXPECT_EQ(*value->getState(), text.empty() ? state : initial);
    }
}

} // namespace
