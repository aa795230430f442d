// What values accept, and who is told of a change.

#include "runtime/values/HostValue.h"

#include "runtime/values/NumberText.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>

namespace {

using Policy = RCShdPtr<PiInputPolicy const>;
constexpr double infinity = std::numeric_limits<double>::infinity();
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

struct RefusalCase {
    ValueState initial;
    Policy policy;
    ValueState state;
    char const* text; ///< empty: accepted
};

TEST(HostValueTest, RefusesWhatItsPolicyDoesNotAllowAndSaysWhatItTakes)
{
    ValueState const number = Animated<double>(0);
    ValueState const choice = Animated<int>(0);
    ValueState const curve = Animated<CurvePoints>(CurvePoints());
    for (auto const& [initial, policy, state, text] :
         {RefusalCase{number, makeRange(-1, 1), Animated<double>(1.0), ""},
          RefusalCase{number, makeRange(-1, 1), Animated<double>(1.5),
                      "\"x\" takes -1 to 1, not 1.5"},
          RefusalCase{number, makeRange(-1, 1), Animated<double>({{0, 0}, {1, -2}}),
                      "\"x\" takes -1 to 1, not -2"},
          RefusalCase{number, makeRange(0, largest), Animated<double>(-0.5),
                      "\"x\" takes 0 and above, not -0.5"},
          RefusalCase{number, makeRange(-largest, 2), Animated<double>(3.0),
                      "\"x\" takes 2 and below, not 3"},
          RefusalCase{number, makeRange(-2147483647.0, 2147483647.0), Animated<double>(3e9), ""},
          RefusalCase{number, makeRange(-largest, largest), Animated<double>(infinity),
                      "\"x\" takes any finite number, not inf"},
          RefusalCase{
              number, {}, Animated<double>(std::nan("")), "\"x\" takes any finite number, not nan"},
          RefusalCase{number, {}, Animated<int>(1), "\"x\" holds another kind of value"},
          RefusalCase{choice, makeChoices(true), Animated<int>({{0, 0}, {1, 3}}), ""},
          RefusalCase{choice, makeChoices(true), Animated<int>(1),
                      "\"x\" takes one of 0 \"One\", 3 \"Two\", not 1"},
          RefusalCase{choice, makeChoices(false), Animated<int>({{0, 0}, {1, 3}}),
                      "\"x\" cannot be animated"},
          RefusalCase{curve,
                      {},
                      Animated<CurvePoints>(CurvePoints(4)),
                      "the curve \"x\" needs three points per key (handle, key, handle), not 4 in "
                      "all"}}) {
        auto const value = makeShared<HostValue>("x", initial, policy, nullptr);
        std::string failure;
        try {
            value->setState(state);
        } catch (ValueError const& error) {
            failure = error.what();
        }
        EXPECT_EQ(failure, text);
        EXPECT_EQ(*value->getState(), failure.empty() ? state : initial);
    }
}

struct Observer : ValueObserver {
    void valueChanged(HostValue& value, ValueState const& before) override
    {
        ++nbCalls;
        EXPECT_EQ(before, ValueState(Animated<double>(1.0)));
        EXPECT_EQ(*value.getState(), ValueState(Animated<double>(2.0)));
    }
    int nbCalls = 0;
};

TEST(HostValueTest, TellsOfChangesOnly)
{
    Observer observer;
    auto const value = makeShared<HostTypedValue<double>>("x", 1.0, Policy(), &observer);
    value->setValue(1.0);
    EXPECT_EQ(observer.nbCalls, 0);
    auto const snapshot = value->getState();
    value->setValue(2.0);
    EXPECT_EQ(observer.nbCalls, 1);
    EXPECT_EQ(*snapshot, ValueState(Animated<double>(1.0)));
    EXPECT_EQ(value->getValue(), 2.0);
}

TEST(NumberTextTest, ReadsWholeFiniteNumbersOnly)
{
    using Case = std::pair<char const*, std::optional<double>>;
    for (auto const& [text, number] :
         {Case{"1.5", 1.5}, Case{"+2e3", 2000.0}, Case{"-.5", -0.5}, Case{"", {}}, Case{"1,5", {}},
          Case{"1.5x", {}}, Case{" 1", {}}, Case{"inf", {}}, Case{"nan", {}}, Case{"1e999", {}},
          Case{"+-1", {}}, Case{"++1", {}}, Case{"0x10", {}}}) {
        EXPECT_EQ(parseNumber(text), number) << text;
    }
    for (double const number : {0.1, 1e-320, largest, 2.200000022}) {
        EXPECT_EQ(parseNumber(formatNumber(number)), number);
    }
    EXPECT_EQ(formatNumber(0.1F), "0.1");
}

} // namespace
