// Strips through the whole chain: the tool loaded as a host loads it, the engine between a source
// and a sink that cost nothing, one worker to as many as there are cores. Then the set-up of a
// strip alone.

#include "runtime/engine/RenderEngine.h"

#include "pluginAPI/IxSampleConversion.h"
#include "pluginAPI/PxRequestMgr.h"
#include "remapcolor/options/NodeRequest.h"
#include "remapcolor/session/RequestedSession.h"
#include "support/Looks.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace bench;

constexpr int rowsOfABlock = 16; // those of ZIP

/// Delivers a frame in strips that lie ready.
class ReadySource : public ImageSource {
public:
    ReadySource(Frame const& frame, IxPixelFormat::Depth depth)
    {
        info.dataWindow = info.displayWindow = {0, 0, frameWidth, frameHeight};
        info.format = IxPixelFormat(IxPixelFormat::RGBA, depth, Rational(), false);
        stripRows = chooseStripRows(*this);
        for (int y = 0; y < frameHeight; y += stripRows) {
            IxWriteGuard const guard(IxTile(info.format, getStripBounds(y / stripRows, stripRows)));
            for (int row = y; row < guard.getTile().getBounds().y1; ++row) {
                writePixelRow(info.format, {frame.getRow(row), frameWidth}, guard.getRow(row));
            }
            strips.push_back(guard.getTile());
        }
    }

    ImageInfo const& getInfo() const override { return info; }
    int getRowsPerBlock() const override { return rowsOfABlock; }
    GeRectangle<int> getStripBounds(int index, int rows) const override
    {
        return {0, index * rows, frameWidth, std::min((index + 1) * rows, frameHeight)};
    }
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override
    {
        strip.colour = strips.at(static_cast<std::size_t>(bounds.y0 / stripRows));
    }

private:
    ImageInfo info;
    int stripRows = 0;
    std::vector<IxTile> strips;
};

class DroppingSink : public ImageSink {
public:
    void writeStrip(IxTile const&, ImageStrip const&) override {}
    void finish() override {}
};

/// What the command line would be told for the work.
NodeRequest makeRequest(Work const& work)
{
    using Form = ValueSetting::Form;
    NodeRequest request;
    auto const set = [&](char const* text) { request.settings.push_back({Form::Named, text}); };
    if (isDisplay(work)) {
        set("Mode=EXRDisplay");
        set("EXRDisplay.Defog=0.001");
    } else {
        set("Linear.Input Level.Min=0.02");
        set("Linear.Input Level.Max=0.9");
        set(work.hasGamma ? "Linear.Gamma=2.2" : "Linear.Gamma=1");
    }
    set(work.hasCurves ? "Adjust=true" : "Adjust=false");
    request.settings.push_back({Form::Curves, "rgb=0,0 0.25,0.2 0.75,0.82 1,1"});
    return request;
}

/// A node of the loaded tool and a chain through it.
struct Chain {
    Chain(Work const& work, ImageInfo const& info)
        : session(makeRequest(work)), start(makeNode<SourceImageNode>(info)),
          end(castNode<PxImageProtocol const>(
              session.getNode().buildChain(PxNodePtr<PxImageProtocol const>(start.get()))))
    {
    }

    RequestedSession session;
    PxStrongHndl<SourceImageNode> start;
    PxNodePtr<PxImageProtocol const> end;
};

void renderFrame(benchmark::State& state, Work const& work, IxPixelFormat::Depth depth,
                 int nbWorkers)
{
    ReadySource source(getFrame(work.content), depth);
    Chain const chain(work, source.getInfo());
    RenderOptions options;
    options.threads = nbWorkers;
    for (auto _ : state) {
        DroppingSink sink;
        renderImage(*chain.end, *chain.start, source, sink, options);
    }
    state.counters["pixels"] = static_cast<double>(framePixels);
    state.counters["strip_pixels"] = chooseStripRows(source) * static_cast<double>(frameWidth);
}

/// A tile of one pixel: reading the values and deriving everything from them.
void setUp(benchmark::State& state, Work const& work)
{
    ImageInfo info;
    info.dataWindow = info.displayWindow = {0, 0, 1, 1};
    info.format = IxPixelFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, Rational(), false);
    Chain const chain(work, info);
    IxWriteGuard const pixel(IxTile(info.format, info.dataWindow));
    *reinterpret_cast<Pixel*>(pixel.getRow(0)) = {0.5F, 0.5F, 0.5F, 1.0F};
    chain.start->addStrip(pixel.getTile());
    {
        PxWorkerScope const worker;
        for (auto _ : state) {
            benchmark::DoNotOptimize(chain.end->computeImage(PxImageContext(0.0, info.dataWindow)));
        }
    }
}

void addFrames(Work const& work, IxPixelFormat::Depth depth, std::string const& name)
{
    int const mostWorkers = std::max(static_cast<int>(std::thread::hardware_concurrency()), 2);
    for (int workers = 1; workers <= mostWorkers; workers *= 2) {
        std::string const fullName =
            "chain/" + std::string(work.name) + "/" + name + "/" + std::to_string(workers);
        benchmark::RegisterBenchmark(
            fullName.c_str(),
            [&work, depth, workers](auto& state) { renderFrame(state, work, depth, workers); })
            ->Unit(benchmark::kMillisecond)
            ->MeasureProcessCPUTime()
            ->UseRealTime();
    }
}

[[maybe_unused]] bool const areStripsRegistered = [] {
    for (Work const& work : works) {
        addFrames(work, IxPixelFormat::FLOAT32, "float");
        addFrames(work, IxPixelFormat::FLOAT16, "half");
        benchmark::RegisterBenchmark(("set-up/" + std::string(work.name)).c_str(),
                                     [&work](auto& state) { setUp(state, work); })
            ->Unit(benchmark::kMicrosecond);
    }
    return true;
}();

} // namespace
