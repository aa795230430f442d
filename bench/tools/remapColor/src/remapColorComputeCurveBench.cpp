// What it costs to draw a mode's transfer: 256 samples, the defaults of both modes but the gamma of
// Linear, which they share.

#include "remapColorEXRMode.h"
#include "remapColorLinearMode.h"

#include <benchmark/benchmark.h>

namespace {

constexpr GeInterval<float> range{0.0F, 1.0F};
constexpr int nbSamples = 256;
constexpr float gamma = 2.2F;

void drawLinear(benchmark::State& state)
{
    Vector<GePoint2<float>> points;
    for (auto _ : state) {
        RemapColorLinearMode::computeCurve(range, nbSamples, false, 0.0F, 1.0F, 0.0F, 1.0F, gamma,
                                           points);
        benchmark::DoNotOptimize(points.data());
    }
}
BENCHMARK(drawLinear)->Name("drawn curve/Linear")->Unit(benchmark::kMicrosecond);

void drawDisplay(benchmark::State& state)
{
    Vector<GePoint2<float>> points;
    for (auto _ : state) {
        RemapColorEXRMode::computeCurve(range, nbSamples, 0.0F, 0.0F, 5.0F, 0.0F, gamma, points);
        benchmark::DoNotOptimize(points.data());
    }
}
BENCHMARK(drawDisplay)->Name("drawn curve/EXR display")->Unit(benchmark::kMicrosecond);

} // namespace
