// The adjusted-curve stage.

#include "remapColorAdjustedCurves.h"
#include "remapColorCurveSampling.h"

RemapColorController::AdjustedCurveScanline::AdjustedCurveScanline(bool isEnabled,
                                                                   RCShdPtr<BzFunctionCurve>& red,
                                                                   RCShdPtr<BzFunctionCurve>& green,
                                                                   RCShdPtr<BzFunctionCurve>& blue)
    : enabled(isEnabled)
{
    using namespace RemapColorCurveSampling;
    SampledCurve sampledRed = sampleCurve(red);
    SampledCurve sampledGreen = sampleCurve(green);
    SampledCurve sampledBlue = sampleCurve(blue);
    redLut = makeLut(red, sampledRed);
    greenLut = makeLut(green, sampledGreen);
    blueLut = makeLut(blue, sampledBlue);
    tables = {redLut->getTable(), greenLut->getTable(), blueLut->getTable()};
}

RemapColorController::AdjustedCurveScanline::~AdjustedCurveScanline() noexcept(false) = default;

CoRgbaColorTyped<float>
RemapColorController::AdjustedCurveScanline::processPixel(CoRgbaColorTyped<float> const& in) const
{
    if (!enabled) {
        return in;
    }
    using RemapColorSteps::adjust;
    return {adjust(in.red, tables[0]), adjust(in.green, tables[1]), adjust(in.blue, tables[2]),
            in.alpha};
}

void RemapColorController::AdjustedCurveScanline::processRow(PiPixelLoopOneSource::Row row) const
{
    if (!enabled) {
        return;
    }
    for (CoRgbaColorTyped<float>& pixel : row) {
        pixel = processPixel(pixel);
    }
}
