// A program of others: it derives from what the tool's library offers and maps a value through it.

#include "base/RCShdPtr.h"
#include "primitives/BzFunctionCurve.h"
#include "remapColorCurveLUTUtils.h"

#include <cmath>
#include <cstdio>

namespace {

class CountingLut : public RemapColorCurveLUTUtils::ScanlineLut {
public:
    using ScanlineLut::ScanlineLut;
    float map(float value)
    {
        float mapped = 0.0F;
        processScanline(mapped, value);
        ++nbMapped;
        return mapped;
    }
    int nbMapped = 0;
};

} // namespace

int main()
{
    // Twice the value, from 0 to 1 and beyond.
    auto curve = makeShared<BzFunctionCurve>(BzFunctionCurve::Tangent, 0);
    for (float const x : {-0.5F, 0.0F, 0.5F, 0.5F, 1.0F, 1.5F}) {
        curve->getCtrlPoints().push_back({x, 2.0F * x});
    }
    constexpr int nbEntries = 1025;
    Vector<float> table(nbEntries);
    float first = 0.0F;
    float last = 0.0F;
    RemapColorCurveLUTUtils::curveToLUT(table, 0.0F, 1.0F, curve, &first, &last);
    CountingLut lut(curve, table, first, last);
    bool isRight = true;
    for (float const value : {0.25F, 0.75F, 3.0F, -1.0F}) {
        float const mapped = lut.map(value);
        std::printf("%g -> %g\n", static_cast<double>(value), static_cast<double>(mapped));
        isRight = isRight && std::abs(mapped - 2.0F * value) < 1e-5F;
    }
    return isRight && lut.nbMapped == 4 ? 0 : 1;
}
