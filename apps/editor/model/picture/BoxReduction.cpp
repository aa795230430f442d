#include "editor/model/picture/BoxReduction.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

constexpr double leastPart = 1e-4; // of a pixel, that counts

/// Where squares end with pixels, rounding must not let in what is beside them: it may be NaN.
double snap(double place)
{
    double const whole = std::round(place);
    return std::fabs(place - whole) < leastPart ? whole : place;
}

} // namespace

BoxReduction::BoxReduction(PixelGrid const& grid, GeRectangle<int> const& pixels)
    : columns(makeBoxes(grid.x0, grid.step, grid.width, pixels.x0, pixels.x1)),
      rows(makeBoxes(grid.y0, grid.step, grid.height, pixels.y0, pixels.y1))
{
}

std::vector<BoxReduction::Box> BoxReduction::makeBoxes(double from, double step, int count,
                                                       int begin, int end)
{
    std::vector<Box> boxes;
    for (int index = 0; index < count; ++index) {
        double const low = std::clamp(snap(from + index * step), double(begin), end - 1.0);
        double const high =
            std::clamp(snap(from + (index + 1) * step), low + leastPart, double(end));
        int const first = static_cast<int>(std::floor(low));
        int const last = static_cast<int>(std::ceil(high));
        auto const share = [&](int pixel) {
            double const covered = std::min(high, pixel + 1.0) - std::max(low, double(pixel));
            return static_cast<float>(covered / (high - low));
        };
        boxes.push_back(
            {first, last, share(first), share(last - 1), static_cast<float>(1.0 / (high - low))});
    }
    return boxes;
}

GeRectangle<int> BoxReduction::findSource(int first, int last) const
{
    return {getLeft(), rows[static_cast<std::size_t>(first)].first, columns.back().last,
            rows[static_cast<std::size_t>(last) - 1].last};
}

void BoxReduction::addRow(std::span<Pixel const> row, float share, std::span<Pixel> sums)
{
    float const* const from = &row.front().red;
    float* const to = &sums.front().red;
    for (std::size_t index = 0; index < 4 * sums.size(); ++index) {
        to[index] += share * from[index];
    }
}

void BoxReduction::reduceRow(std::span<Pixel const> sums, std::span<Pixel> reduced) const
{
    for (std::size_t index = 0; index < reduced.size(); ++index) {
        Box const& box = columns[index];
        Pixel sum{};
        for (int column = box.first; column < box.last; ++column) {
            float const share = box.getShare(column);
            Pixel const& pixel = sums[static_cast<std::size_t>(column - getLeft())];
            sum.red += share * pixel.red;
            sum.green += share * pixel.green;
            sum.blue += share * pixel.blue;
            sum.alpha += share * pixel.alpha;
        }
        reduced[index] = sum;
    }
}
