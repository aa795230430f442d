// A frame through the OpenFX bundle in one render call, one thread, against the row kernel alone on
// the same frame.

#include "support/Looks.h"
#include "support/OfxTestHost.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>

namespace {

using namespace bench;
using namespace RemapColorRowKernels;

/// Both modes, with and without curves.
constexpr std::array<Work, 4> bundleWorks = {{
    {"Linear", Content::Plate, false, false},
    {"Linear + gamma + curves", Content::Plate, true, true},
    {"EXR display", Content::Scene, true, false},
    {"EXR display + curves", Content::Scene, true, true},
}};

OfxTestImage& getOutput()
{
    static OfxTestImage image({.bounds = {0, 0, frameWidth, frameHeight}});
    return image;
}

OfxTestImage& getSource(Content content)
{
    static OfxTestImage images[] = {OfxTestImage(getOutput().layout),
                                    OfxTestImage(getOutput().layout)};
    OfxTestImage& image = images[content == Content::Scene ? 1 : 0];
    std::memcpy(image.getPixel(0, 0), getFrame(content).getPixels().data(),
                getFrame(content).getPixels().size_bytes());
    return image;
}

Look const& getLook()
{
    static Look const look;
    return look;
}

void runKernel(benchmark::State& state, Work const& work)
{
    OfxTestImage& source = getSource(work.content);
    KernelSet const& set = chosenKernels();
    CurveTable const* const curves = getLook().getCurves(work);
    auto const levelsKernel = work.hasGamma ? set.linePower : set.line;
    for (auto _ : state) {
        for (int y = 0; y < frameHeight; ++y) {
            auto const* const from = reinterpret_cast<Pixel const*>(source.getPixel(0, y));
            RowTarget const to{reinterpret_cast<Pixel*>(getOutput().getPixel(0, y)), true};
            if (isDisplay(work)) {
                set.display(getLook().display, curves, from, to, frameWidth);
            } else {
                levelsKernel(getLook().levels, curves, from, to, frameWidth);
            }
        }
        benchmark::ClobberMemory();
    }
}

/// The same steps with about the same numbers.
void setLook(OfxImageEffect& effect, Work const& work)
{
    effect.param("mode").value = isDisplay(work) ? 1 : 0;
    effect.param("adjust").value = work.hasCurves ? 1 : 0;
    effect.param("adjustCurveText").value = std::string("rgb=0,0 0.25,0.2 0.75,0.8 1,1");
    for (char const* const channel : {"Red", "Green", "Blue"}) {
        effect.param(std::string("linearInputLevelMax") + channel).value = 0.97;
        effect.param(std::string("linearInputLevelMin") + channel).value = 0.01;
        effect.param(std::string("linearGamma") + channel).value = work.hasGamma ? 2.2 : 1.0;
        effect.param(std::string("exrDisplayDefog") + channel).value = 0.001;
    }
}

void runBundle(benchmark::State& state, Work const& work)
{
    OfxTestHost host(OFX_BUNDLE);
    OfxImageEffect& effect = host.createInstance();
    setLook(effect, work);
    effect.clip("Source").image = &getSource(work.content);
    effect.clip("Output").image = &getOutput();
    for (auto _ : state) {
        if (host.render(effect, getOutput().layout.bounds) != OfxStat::ok) {
            state.SkipWithError("the bundle does not render");
        }
        benchmark::ClobberMemory();
    }
}

/// Opening the library, its description and that of a context.
void runLoading(benchmark::State& state)
{
    for (auto _ : state) {
        OfxTestHost host(OFX_BUNDLE);
        benchmark::DoNotOptimize(host.getContext(OfxText::Context::filter));
    }
}

[[maybe_unused]] bool const areFramesRegistered = [] {
    auto const add = [](std::string const& name, auto const& run) {
        benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
    };
    for (Work const& work : bundleWorks) {
        std::string const name = std::string("bundle/") + work.name + "/";
        add(name + "kernel", [&work](benchmark::State& state) { runKernel(state, work); });
        add(name + "frame", [&work](benchmark::State& state) { runBundle(state, work); });
    }
    add("bundle load", runLoading);
    return true;
}();

} // namespace
