#include "session/AxisHistogram.h"

#include <algorithm>
#include <cmath>

AxisHistogram::AxisHistogram(FigureAxis const& countedAxis, std::size_t nbClasses)
    : axis(countedAxis)
{
    counts.fill(std::vector<double>(nbClasses, 0.0));
}

void AxisHistogram::add(std::vector<CoRgbaColorTyped<float>> const& pixels)
{
    for (CoRgbaColorTyped<float> const& pixel : pixels) {
        add(0, pixel.red, pixel.red, 1.0);
        add(1, pixel.green, pixel.green, 1.0);
        add(2, pixel.blue, pixel.blue, 1.0);
    }
}

/// The place in numbers of classes; minus infinity or NaN for what an axis of stops has not.
double AxisHistogram::toClass(double value) const
{
    double const coordinate = axis.unit == FigureAxis::Unit::Stop ? std::log2(value) : value;
    return (coordinate - axis.low) / (axis.high - axis.low) * static_cast<double>(counts[0].size());
}

void AxisHistogram::add(std::size_t channel, double low, double high, double count)
{
    nbValues += count;
    std::vector<double>& classes = counts[channel];
    auto const end = static_cast<double>(classes.size());
    double const one = toClass(low);
    double const other = low == high ? one : toClass(high);
    double const first = std::min(one, other);
    double const last = std::max(one, other);
    if (!(last >= 0.0 && first <= end)) {
        nbOutside += count;
        return;
    }
    auto const begin = static_cast<std::size_t>(std::clamp(first, 0.0, end - 1.0));
    auto const behind = static_cast<std::size_t>(std::clamp(last, 0.0, end - 1.0));
    if (begin == behind && first >= 0.0 && last <= end) {
        classes[begin] += count;
        return;
    }
    double const perClass = count / (last - first);
    double counted = 0.0;
    for (std::size_t place = begin; place <= behind; ++place) {
        double const from = std::max(first, static_cast<double>(place));
        double const to = std::min(last, static_cast<double>(place) + 1.0);
        double const part = perClass * std::max(to - from, 0.0);
        classes[place] += part;
        counted += part;
    }
    nbOutside += count - counted;
}
