// Curves of any points, sampled over any range: refused as the interface says, or a table that maps
// every value alike, one by one and in a row.

#include "remapColorCurveLUTUtils.h"

#include "base/HostException.h"
#include "remapColorRowKernels.h"
#include "support/Bytes.h"
#include "support/Expect.h"

#include <cmath>
#include <cstring>

namespace {

using Pixel = RemapColorRowKernels::Pixel;

RCShdPtr<BzFunctionCurve> readCurve(Bytes& bytes)
{
    constexpr int mostKeys = 6;
    constexpr int pointsPerKey = 3;
    auto curve = makeShared<BzFunctionCurve>(BzFunctionCurve::Tangent, 0);
    int const nbPoints = pointsPerKey * (1 + bytes.below(mostKeys));
    for (int point = 0; point < nbPoints; ++point) {
        curve->getCtrlPoints().push_back({bytes.number(), bytes.number()});
    }
    return curve;
}

/// What the row kernels make of a value.
float mapInRow(RemapColorCurveLUTUtils::ScanlineLut const& lut, float value)
{
    RemapColorRowKernels::CurveTable const tables[] = {lut.getTable(), lut.getTable(),
                                                       lut.getTable()};
    RemapColorRowKernels::Levels sameLevels{};
    for (int channel = 0; channel < RemapColorRowKernels::nbChannels; ++channel) {
        sameLevels.scale[channel] = 1.0F;
        sameLevels.offset[channel] = -0.0F; // keeps the sign of a zero
    }
    Pixel row[] = {{value, value, value, 1}};
    RemapColorRowKernels::chosenKernels().line(sameLevels, tables, row, {row}, 1);
    return row[0].green;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    constexpr int fewestEntries = 3;
    Bytes bytes(data, size);
    RCShdPtr<BzFunctionCurve> curve = readCurve(bytes);
    Vector<float> table(fewestEntries + bytes.byte(), 0.0F);
    float lutMin = 0;
    float lutMax = 0;
    try {
        float const low = bytes.number();
        RemapColorCurveLUTUtils::curveToLUT(table, low, bytes.number(), curve, &lutMin, &lutMax);
        expect(std::memcmp(&table.back(), &table[table.size() - 2], sizeof(float)) == 0,
               "the last entry repeats the one before it");
    } catch (HostException const&) { // x runs back; whatever the table holds, it may be used
    }
    RemapColorCurveLUTUtils::ScanlineLut lut(curve, table, lutMin, lutMax);
    for (int value = 0; value < 64 && !bytes.isEmpty(); ++value) {
        float const number = bytes.number();
        float alone = 0;
        lut.processScanline(alone, number);
        float const inRow = mapInRow(lut, number);
        expect(std::memcmp(&alone, &inRow, sizeof alone) == 0 ||
                   (std::isnan(alone) && std::isnan(inRow)),
               "a value alone gives what it gives in a row");
    }
    return 0;
}
