#include "support/PlainLoop.h"

#include <cmath>

namespace bench {

namespace {

using RemapColorRowKernels::CurveTable;
using RemapColorRowKernels::EndLine;

struct Line {
    float operator()(int channel, float value) const
    {
        return value * look.levels.scale[channel] + look.levels.offset[channel];
    }
    Look const& look;
};

struct LinePower {
    float operator()(int channel, float value) const
    {
        float const line = value * look.levels.scale[channel] + look.levels.offset[channel];
        float const exponent = look.levels.invGamma[channel].exponent;
        return 0.0F > line ? 0.0F - ::powf(0.0F - line, exponent) : ::powf(line, exponent);
    }
    Look const& look;
};

struct DisplayTransfer {
    float operator()(int channel, float value) const
    {
        float const difference = value - display.defog[channel];
        float const defogged = difference > 0.0F ? difference : 0.0F;
        float exposed = defogged * display.exposureFactor[channel];
        float const kneeLow = display.kneeLow[channel];
        if (exposed > kneeLow) {
            auto const factor = static_cast<double>(display.kneeFactor[channel]);
            auto const over = static_cast<double>(exposed - kneeLow);
            exposed = kneeLow + static_cast<float>(::log(over * factor + 1.0) / factor);
        }
        return ::powf(exposed, display.invGamma[channel].exponent) * 84.66F / 255.0F;
    }
    RemapColorRowKernels::Display const& display;
};

float lookUp(CurveTable const& table, float value)
{
    float const position = table.scale * value + table.offset;
    if (0.0F > position) {
        EndLine const& line = table.below;
        return static_cast<float>(static_cast<double>(line.keyY) -
                                  static_cast<double>(line.keyX - value) *
                                      static_cast<double>(line.slope));
    }
    if (position > table.lastPosition) {
        EndLine const& line = table.above;
        return static_cast<float>(static_cast<double>(line.keyY) +
                                  static_cast<double>(value - line.keyX) *
                                      static_cast<double>(line.slope));
    }
    float const valid = position > 0.0F ? position : 0.0F;
    auto const entry = static_cast<int>(valid);
    float const share = valid - static_cast<float>(entry);
    return (1.0F - share) * table.entries[entry] + share * table.entries[entry + 1];
}

template <typename Transfer>
void processRow(Transfer const& transfer, CurveTable const* curves, Pixel const* source,
                Pixel* destination, std::size_t nbPixels)
{
    for (std::size_t pixel = 0; pixel < nbPixels; ++pixel) {
        Pixel const in = source[pixel];
        destination[pixel] = {transfer(0, in.red), transfer(1, in.green), transfer(2, in.blue),
                              in.alpha};
    }
    if (curves == nullptr) {
        return;
    }
    for (std::size_t pixel = 0; pixel < nbPixels; ++pixel) {
        Pixel& out = destination[pixel];
        out.red = lookUp(curves[0], out.red);
        out.green = lookUp(curves[1], out.green);
        out.blue = lookUp(curves[2], out.blue);
    }
}

} // namespace

void processPlainRow(Work const& work, Look const& look, Pixel const* source, Pixel* destination,
                     std::size_t nbPixels)
{
    CurveTable const* const curves = look.getCurves(work);
    if (isDisplay(work)) {
        processRow(DisplayTransfer{look.display}, curves, source, destination, nbPixels);
    } else if (work.hasGamma) {
        processRow(LinePower{look}, curves, source, destination, nbPixels);
    } else {
        processRow(Line{look}, curves, source, destination, nbPixels);
    }
}

} // namespace bench
