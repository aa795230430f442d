// Values of nodes: what they accept, and who is told.

#include "runtime/values/HostValue.h"

#include "runtime/curves/CurveShapes.h"
#include "runtime/values/NumberText.h"
#include "runtime/values/ValueChange.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace {

std::string quote(std::string const& name)
{
    return "\"" + name + "\"";
}

std::string describeChoices(PiEnumPolicy const& choices)
{
    std::string text;
    for (PiEnumPolicy::Pair const& pair : choices.getPairs()) {
        text += (text.empty() ? "" : ", ") + std::to_string(pair.first) + " " + quote(pair.second);
    }
    return text;
}

void checkNumber(std::string const& name, double value, PiInputPolicy const* policy)
{
    NumberLimits const limits = findLimits(policy);
    if (!std::isfinite(value) || value < limits.minimum || value > limits.maximum) {
        throw ValueError(quote(name) + " takes " + describeRange(policy) + ", not " +
                         formatNumber(value));
    }
}

void checkChoice(std::string const& name, int value, PiInputPolicy const* policy)
{
    auto const* const choices = dynamic_cast<PiEnumPolicy const*>(policy);
    if (choices == nullptr) {
        return;
    }
    auto const& pairs = choices->getPairs();
    if (std::none_of(pairs.begin(), pairs.end(),
                     [&](PiEnumPolicy::Pair const& pair) { return pair.first == value; })) {
        throw ValueError(quote(name) + " takes one of " + describeChoices(*choices) + ", not " +
                         std::to_string(value));
    }
}

bool isSameNumber(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

template <typename T>
bool isSameValue(T a, T b)
{
    return isSameNumber(a, b);
}

bool isSameValue(CurvePoints const& a, CurvePoints const& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](auto const& p, auto const& q) {
        return isSameNumber(p.x, q.x) && isSameNumber(p.y, q.y);
    });
}

/// Compares with a state of the same kind.
struct StateComparison {
    ValueState const& other;

    template <typename T>
    bool operator()(Animated<T> const& state) const
    {
        auto const& animated = std::get<Animated<T>>(other);
        auto const& keys = state.getKeys();
        return state.isAnimated() == animated.isAnimated() &&
               std::equal(keys.begin(), keys.end(), animated.getKeys().begin(),
                          animated.getKeys().end(), [](auto const& p, auto const& q) {
                              return isSameNumber(p.time, q.time) && isSameValue(p.value, q.value);
                          });
    }
    bool operator()(Vector<double> const& numbers) const
    {
        auto const& others = std::get<Vector<double>>(other);
        return std::equal(numbers.begin(), numbers.end(), others.begin(), others.end(),
                          isSameNumber);
    }
};

bool hasKeyframes(ValueState const& state)
{
    return std::visit(
        [](auto const& held) {
            if constexpr (requires { held.isAnimated(); }) {
                return held.isAnimated();
            }
            return false;
        },
        state);
}

} // namespace

bool isSameState(ValueState const& a, ValueState const& b)
{
    return a.index() == b.index() && std::visit(StateComparison{b}, a);
}

HostValue::HostValue(std::string fullName, ValueState initial,
                     RCShdPtr<PiInputPolicy const> inputPolicy, ValueOwner* valueOwner)
    : name(std::move(fullName)), policy(std::move(inputPolicy)), owner(valueOwner),
      current(std::make_shared<ValueState const>(std::move(initial)))
{
}

std::shared_ptr<ValueState const> HostValue::getState() const
{
    std::lock_guard const lock(mutex);
    return current;
}

void HostValue::setState(ValueState state)
{
    check(state);
    restore(std::make_shared<ValueState const>(std::move(state)));
}

void HostValue::restore(std::shared_ptr<ValueState const> state)
{
    RCShdPtr<HostValue> const self(this); // whoever is told may let the value go
    auto const before = getState();
    if (isSameState(*state, *before)) {
        return;
    }
    {
        std::lock_guard const lock(mutex);
        current = state;
    }
    if (owner == nullptr || owner->recordChange(*this, before)) {
        tellChange(*this, before, std::move(state));
    }
}

void HostValue::tell(ValueChange const& change)
{
    if (owner != nullptr) {
        owner->tellChange(change);
    }
    handlers.call(change);
}

void HostValue::check(ValueState const& candidate) const
{
    if (candidate.index() != getState()->index()) {
        throw ValueError(quote(name) + " holds another kind of value");
    }
    if (hasKeyframes(candidate) && !isAnimatable()) {
        throw ValueError(quote(name) + " cannot be animated");
    }
    if (auto const* const numbers = std::get_if<Animated<double>>(&candidate)) {
        for (auto const& key : numbers->getKeys()) {
            checkNumber(name, key.value, policy.get());
        }
    } else if (auto const* const integers = std::get_if<Animated<int>>(&candidate)) {
        for (auto const& key : integers->getKeys()) {
            checkChoice(name, key.value, policy.get());
        }
    } else if (auto const* const curves = std::get_if<Animated<CurvePoints>>(&candidate)) {
        for (auto const& key : curves->getKeys()) {
            checkCurvePoints(name, key.value);
        }
    }
}

bool HostValue::isAnimatable() const
{
    auto const* const choices = dynamic_cast<PiEnumPolicy const*>(policy.get());
    bool const isList = std::holds_alternative<Vector<double>>(*getState());
    return takesKeyframes && !isList && (choices == nullptr || choices->isAnimatable());
}

void HostValue::checkGiven(ValueState const& candidate) const
{
    check(candidate);
    if (auto const* const curves = std::get_if<Animated<CurvePoints>>(&candidate)) {
        for (auto const& key : curves->getKeys()) {
            checkDrawnCurve(name, key.value);
        }
    } else if (auto const* const numbers = std::get_if<Vector<double>>(&candidate)) {
        std::size_t const length = std::get<Vector<double>>(*getState()).size();
        bool const isFinite = std::all_of(numbers->begin(), numbers->end(),
                                          [](double number) { return std::isfinite(number); });
        if (!isFinite || (length > 0 && numbers->size() != length)) {
            throw ValueError(quote(name) + " takes " +
                             (length > 0 ? std::to_string(length) + " " : "") + "finite numbers" +
                             (isFinite ? ", not " + std::to_string(numbers->size()) : ""));
        }
    }
}

NumberLimits findLimits(PiInputPolicy const* policy)
{
    constexpr double noBound = std::numeric_limits<std::int32_t>::max();
    NumberLimits limits;
    auto const* const range = dynamic_cast<PiRangeInputPolicy<double> const*>(policy);
    if (range != nullptr && range->getMinimum() > -noBound) {
        limits.minimum = range->getMinimum();
    }
    if (range != nullptr && range->getMaximum() < noBound) {
        limits.maximum = range->getMaximum();
    }
    return limits;
}

std::string describeRange(PiInputPolicy const* policy)
{
    auto const [minimum, maximum] = findLimits(policy);
    if (std::isfinite(minimum) && std::isfinite(maximum)) {
        return formatNumber(minimum) + " to " + formatNumber(maximum);
    }
    if (std::isfinite(minimum)) {
        return formatNumber(minimum) + " and above";
    }
    return std::isfinite(maximum) ? formatNumber(maximum) + " and below" : "any finite number";
}
