// Round numbers along an axis.

#include "plots/PlotScale.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

constexpr double usualSteps = 8.0;
constexpr double closeEnough = 1e-9; // of a step

/// 1, 2 or 5 times a power of ten.
double chooseStep(double width, double mostSteps = usualSteps)
{
    double const least = width / mostSteps;
    double const decade = std::pow(10.0, std::floor(std::log10(least)));
    for (double const factor : {1.0, 2.0, 5.0}) {
        if (factor * decade >= least * (1.0 - closeEnough)) {
            return factor * decade;
        }
    }
    return 10.0 * decade;
}

/// Whole stops, unless the axis is too short for them.
double chooseStopStep(double width, double mostSteps)
{
    constexpr double fewestStops = 2.0;
    if (width < fewestStops) {
        return chooseStep(width, mostSteps);
    }
    for (double const step : {1.0, 2.0, 4.0, 8.0, 16.0}) {
        if (width / step <= mostSteps) {
            return step;
        }
    }
    return 32.0;
}

std::string formatTick(double value, double step)
{
    constexpr double greatestPlain = 1e5;
    constexpr double leastPlain = 1e-4;
    double const magnitude = std::abs(value);
    std::array<char, 64> text{};
    char* const end = text.data() + text.size();
    std::to_chars_result made{};
    if (magnitude >= greatestPlain || step < leastPlain) {
        constexpr int digits = 5;
        made = std::to_chars(text.data(), end, magnitude, std::chars_format::general, digits);
    } else {
        int const decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
        made = std::to_chars(text.data(), end, magnitude, std::chars_format::fixed, decimals);
    }
    std::string shown = (value < 0.0 ? "\u2212" : "") + std::string(text.data(), made.ptr);
    std::size_t const plus = shown.find('+'); // of an exponent, which needs none
    return plus == std::string::npos ? shown : shown.erase(plus, 1);
}

std::string formatStop(double stop, double step)
{
    return (stop > 0.0 ? "+" : "") + formatTick(stop, step);
}

} // namespace

std::vector<PlotTick> makeTicks(FigureAxis const& axis, double mostSteps)
{
    bool const hasStops = axis.unit == FigureAxis::Unit::Stop;
    double const width = axis.high - axis.low;
    double const step = hasStops ? chooseStopStep(width, mostSteps) : chooseStep(width, mostSteps);
    std::vector<PlotTick> ticks;
    double const last = std::floor(axis.high / step + closeEnough);
    for (double count = std::ceil(axis.low / step - closeEnough); count <= last; count += 1.0) {
        double const place = count == 0.0 ? 0.0 : count * step; // no negative zero
        ticks.push_back({place, hasStops ? formatStop(place, step) : formatTick(place, step)});
    }
    return ticks;
}

FigureAxis makeRoundAxis(double low, double high, std::string label)
{
    if (!(high - low > closeEnough * std::max(std::abs(low), std::abs(high)))) {
        double const margin = std::max(0.5, 0.5 * std::abs(low));
        low -= margin;
        high += margin;
    }
    double const step = chooseStep(high - low);
    return {std::floor(low / step + closeEnough) * step,
            std::ceil(high / step - closeEnough) * step, std::move(label)};
}
