/// The test chart. Each band is a function of the position; a table stacks them.
#include "chart.h"

#include <array>
#include <cstdlib>
#include <span>

namespace examples {

namespace {

constexpr int chartWidth = 512;
constexpr int chartHeight = 256;
constexpr int gapRows = 2; ///< Black rows below each band.

constexpr int darkestStop = -10;
constexpr int brightestStop = 6;
constexpr int stopCount = brightestStop - darkestStop + 1;

constexpr Vec3 gray(double value)
{
    return {value, value, value};
}

/// 2 to a whole power, exact.
double stopValue(int stop)
{
    double value = 1.0;
    for (int step = 0; step < std::abs(stop); ++step) {
        value *= stop < 0 ? 0.5 : 2.0;
    }
    return value;
}

/// Position along the row: 0 at the first pixel, 1 at the last, so both ends are exact values.
constexpr double along(int x)
{
    return static_cast<double>(x) / (chartWidth - 1);
}

/// Which of `count` patches of equal width `x` lies in.
constexpr int patchAt(int x, int count)
{
    return x * count / chartWidth;
}

/// Which of `count` sub-rows `row` lies in, the band being `rows` high.
constexpr int stripeAt(int row, int rows, int count)
{
    return row * count / rows;
}

Vec3 patchOf(std::span<const Vec3> patches, int x)
{
    return patches[static_cast<std::size_t>(patchAt(x, static_cast<int>(patches.size())))];
}

/// Where a pixel lies in its band.
struct BandPosition {
    int x;    ///< In [0, chartWidth).
    int row;  ///< In [0, rows).
    int rows; ///< Height of the band without its gap.
};

Vec3 grayStops(BandPosition const& position)
{
    return gray(stopValue(darkestStop + patchAt(position.x, stopCount)));
}

/// The same range without steps: straight pieces from one stop to the next.
Vec3 grayRamp(BandPosition const& position)
{
    double const stops = along(position.x) * (stopCount - 1);
    int const whole = stops < stopCount - 1 ? static_cast<int>(stops) : stopCount - 2;
    return gray(stopValue(darkestStop + whole) * (1.0 + (stops - whole)));
}

/// 0 to 1 in red, green, blue and gray, then gray from -0.5 to 1.5 to show clamping.
Vec3 linearRamps(BandPosition const& position)
{
    constexpr std::array<Vec3, 5> filters = {
        {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}, {2, 2, 2}}};
    int const stripe = stripeAt(position.row, position.rows, static_cast<int>(filters.size()));
    const Vec3 ramp = filters[static_cast<std::size_t>(stripe)] * along(position.x);
    return stripe == 4 ? ramp - gray(0.5) : ramp;
}

/// Above: full and half primaries. Below: everyday colours, then colours with a negative part.
Vec3 colorPatches(BandPosition const& position)
{
    constexpr std::array<Vec3, 12> pure = {{
        {1, 0, 0},
        {0, 1, 0},
        {0, 0, 1},
        {0, 1, 1},
        {1, 0, 1},
        {1, 1, 0},
        {0.5, 0, 0},
        {0, 0.5, 0},
        {0, 0, 0.5},
        {0, 0.5, 0.5},
        {0.5, 0, 0.5},
        {0.5, 0.5, 0},
    }};
    constexpr std::array<Vec3, 12> mixed = {{
        {0.17, 0.08, 0.06},
        {0.55, 0.30, 0.22},
        {0.11, 0.20, 0.34},
        {0.10, 0.15, 0.05},
        {0.70, 0.20, 0.03},
        {0.80, 0.60, 0.04},
        {0.30, 0.03, 0.05},
        {0.04, 0.05, 0.29},
        {-0.10, 0.90, 0.05},
        {-0.05, -0.02, 0.80},
        {1.20, -0.15, -0.03},
        {-0.25, 0.70, 0.75},
    }};
    return stripeAt(position.row, position.rows, 2) == 0 ? patchOf(pure, position.x)
                                                         : patchOf(mixed, position.x);
}

/// Gradients of one or two hundredths over the whole width: steps show where a curve is too
/// coarsely sampled.
Vec3 shallowGradients(BandPosition const& position)
{
    constexpr Vec3 skyFrom = {0.16, 0.25, 0.42};
    constexpr Vec3 skyTo = {0.18, 0.28, 0.46};
    return stripeAt(position.row, position.rows, 2) == 0 ? gray(0.18 + 0.02 * along(position.x))
                                                         : mix(skyFrom, skyTo, along(position.x));
}

/// 16 equal steps from 0: above by 1/2048, below by 1/512.
Vec3 nearBlackSteps(BandPosition const& position)
{
    constexpr int steps = 16;
    double const height = stripeAt(position.row, position.rows, 2) == 0 ? 2048.0 : 512.0;
    return gray(patchAt(position.x, steps) / height);
}

/// From far below zero to the largest half.
Vec3 extremeValues(BandPosition const& position)
{
    constexpr std::array<double, 16> values = {-100, -8, -1, -0.25, -0.05, -0.01, 0,     0.01,
                                               1,    8,  32, 100,   250,   1000,  10000, 65504};
    return gray(
        values[static_cast<std::size_t>(patchAt(position.x, static_cast<int>(values.size())))]);
}

struct Band {
    int height; ///< Rows including the gap.
    Vec3 (*colorAt)(BandPosition const& position);
};

constexpr std::array<Band, 7> bands = {{
    {42, grayStops},
    {22, grayRamp},
    {62, linearRamps},
    {42, colorPatches},
    {34, shallowGradients},
    {26, nearBlackSteps},
    {28, extremeValues},
}};

constexpr int totalHeight()
{
    int height = 0;
    for (Band const& band : bands) {
        height += band.height;
    }
    return height;
}
static_assert(totalHeight() == chartHeight, "the bands fill the chart");

} // namespace

Picture renderChart()
{
    Picture chart(chartWidth, chartHeight);
    int top = 0;
    for (Band const& band : bands) {
        int const rows = band.height - gapRows;
        for (int row = 0; row < rows; ++row) {
            for (int x = 0; x < chartWidth; ++x) {
                chart.at(x, top + row).color = band.colorAt({x, row, rows});
            }
        }
        top += band.height;
    }
    return chart;
}

} // namespace examples
