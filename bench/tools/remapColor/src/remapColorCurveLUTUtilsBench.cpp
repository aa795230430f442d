// What it costs to prepare the adjusted-curve stage: three curves and their tables.

#include "remapColorCurveLUTUtils.h"

#include <benchmark/benchmark.h>

namespace {

using Utils = RemapColorCurveLUTUtils;

/// Five keys with smooth handles, from 0 to 1.
RCShdPtr<BzFunctionCurve> makeCurve()
{
    constexpr float handle = 0.08F;
    auto curve = makeShared<BzFunctionCurve>(BzFunctionCurve::Tangent, 0);
    for (float const x : {0.0F, 0.25F, 0.5F, 0.75F, 1.0F}) {
        float const y = x * x * (3.0F - 2.0F * x);
        float const rise = 6.0F * x * (1.0F - x) * handle;
        curve->getCtrlPoints().push_back({x - handle, y - rise});
        curve->getCtrlPoints().push_back({x, y});
        curve->getCtrlPoints().push_back({x + handle, y + rise});
    }
    return curve;
}

void prepareStage(benchmark::State& state)
{
    constexpr std::size_t tableLength = 1025;
    RCShdPtr<BzFunctionCurve> curve = makeCurve();
    for (auto _ : state) {
        for (int channel = 0; channel < 3; ++channel) {
            Vector<float> table(tableLength);
            float lutMin = 0.0F;
            float lutMax = 0.0F;
            Utils::curveToLUT(table, 0.0F, 1.0F, curve, &lutMin, &lutMax);
            Utils::ScanlineLut lut(curve, std::move(table), lutMin, lutMax);
            float mapped = 0.0F;
            lut.processScanline(mapped, 0.5F);
            benchmark::DoNotOptimize(mapped);
        }
    }
}
BENCHMARK(prepareStage)->Name("set-up/three curves and tables")->Unit(benchmark::kMicrosecond);

} // namespace
