#include "remapcolor/commands/PictureHistogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

constexpr std::size_t nbClasses = 155; // two points each in a figure

} // namespace

PictureHistogram::PictureHistogram(FigureAxis const& countedAxis) : axis(countedAxis)
{
    counts.fill(std::vector<double>(nbClasses, 0.0));
}

void PictureHistogram::add(std::vector<CoRgbaColorTyped<float>> const& pixels)
{
    for (CoRgbaColorTyped<float> const& pixel : pixels) {
        add(counts[0], pixel.red);
        add(counts[1], pixel.green);
        add(counts[2], pixel.blue);
    }
}

void PictureHistogram::add(std::vector<double>& channel, float value)
{
    ++nbValues;
    double const coordinate =
        axis.unit == FigureAxis::Unit::Stop ? std::log2(double{value}) : double{value};
    if (!(coordinate >= axis.low && coordinate <= axis.high)) {
        ++nbOutside;
        return;
    }
    double const share = (coordinate - axis.low) / (axis.high - axis.low);
    auto const place = static_cast<std::size_t>(share * double(nbClasses));
    channel[std::min(place, nbClasses - 1)] += 1.0;
}
