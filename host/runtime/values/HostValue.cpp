// Values of nodes: what they accept, and who is told.

#include "runtime/values/HostValue.h"

#include "runtime/curves/CurveShapes.h"
#include "runtime/values/NumberText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace {

std::string quote(std::string const& name)
{
    return "\"" + name + "\"";
}

/// What a number may be.
struct Limits {
    double minimum = -std::numeric_limits<double>::infinity();
    double maximum = std::numeric_limits<double>::infinity();
};

Limits findLimits(PiInputPolicy const* policy)
{
    constexpr double noBound = std::numeric_limits<std::int32_t>::max();
    Limits limits;
    auto const* const range = dynamic_cast<PiRangeInputPolicy<double> const*>(policy);
    if (range != nullptr && range->getMinimum() > -noBound) {
        limits.minimum = range->getMinimum();
    }
    if (range != nullptr && range->getMaximum() < noBound) {
        limits.maximum = range->getMaximum();
    }
    return limits;
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
    Limits const limits = findLimits(policy);
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

} // namespace

HostValue::HostValue(std::string fullName, ValueState initial,
                     RCShdPtr<PiInputPolicy const> inputPolicy, ValueObserver* valueObserver)
    : name(std::move(fullName)), policy(std::move(inputPolicy)), observer(valueObserver),
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
    auto const before = getState();
    check(state);
    bool const isChange = state != *before;
    {
        // Taken over in any case: 0 and -0 are equal but not the same.
        auto next = std::make_shared<ValueState const>(std::move(state));
        std::lock_guard const lock(mutex);
        current = std::move(next);
    }
    if (isChange && observer != nullptr) {
        observer->valueChanged(*this, *before);
    }
}

void HostValue::check(ValueState const& candidate) const
{
    if (candidate.index() != getState()->index()) {
        throw ValueError(quote(name) + " holds another kind of value");
    }
    if (auto const* const numbers = std::get_if<Animated<double>>(&candidate)) {
        for (auto const& key : numbers->getKeys()) {
            checkNumber(name, key.value, policy.get());
        }
    } else if (auto const* const integers = std::get_if<Animated<int>>(&candidate)) {
        for (auto const& key : integers->getKeys()) {
            checkChoice(name, key.value, policy.get());
        }
        auto const* const choices = dynamic_cast<PiEnumPolicy const*>(policy.get());
        if (choices != nullptr && !choices->isAnimatable() && integers->isAnimated()) {
            throw ValueError(quote(name) + " cannot be animated");
        }
    } else if (auto const* const curves = std::get_if<Animated<CurvePoints>>(&candidate)) {
        for (auto const& key : curves->getKeys()) {
            checkCurvePoints(name, key.value);
        }
    }
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
