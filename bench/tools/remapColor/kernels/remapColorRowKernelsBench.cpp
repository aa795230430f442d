// The row kernels of every instruction set on a frame, one thread: against the plain loop, against
// copying the frame, and against other libraries that do the same.

#include "remapColorRowKernels.h"

#include "support/Peers.h"
#include "support/PlainLoop.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

using namespace bench;
using namespace RemapColorRowKernels;

Frame const& getDestination()
{
    static Frame const destination(Content::Plate);
    return destination;
}

Look const& getLook()
{
    static Look const look;
    return look;
}

template <typename Process>
void runOnFrame(benchmark::State& state, Process const& process)
{
    for (auto _ : state) {
        process();
        benchmark::ClobberMemory();
    }
    state.counters["pixels"] = static_cast<double>(framePixels);
}

template <typename ProcessRow>
void runOnRows(benchmark::State& state, Content content, ProcessRow const& processRow)
{
    Frame const& source = getFrame(content);
    Frame const& destination = getDestination();
    runOnFrame(state, [&] {
        for (int y = 0; y < frameHeight; ++y) {
            processRow(source.getRow(y), destination.getRow(y));
        }
    });
}

void runPlain(benchmark::State& state, Work const& work)
{
    runOnRows(state, work.content, [&](Pixel const* source, Pixel* destination) {
        processPlainRow(work, getLook(), source, destination, frameWidth);
    });
}

/// Past the caches, as the tool does it for a tile of this size.
void runKernel(benchmark::State& state, Work const& work, KernelSet const& set)
{
    constexpr bool isStreamed = true;
    CurveTable const* const curves = getLook().getCurves(work);
    auto const levelsKernel = work.hasGamma ? set.linePower : set.line;
    runOnRows(state, work.content, [&](Pixel const* source, Pixel* destination) {
        RowTarget const target{destination, isStreamed};
        if (isDisplay(work)) {
            set.display(getLook().display, curves, source, target, frameWidth);
        } else {
            levelsKernel(getLook().levels, curves, source, target, frameWidth);
        }
    });
}

/// Whether `destination` is what the plain loop makes of the frame, where that is within 0 to 1:
/// the peers' tables end there.
bool isSamePicture(Work const& work)
{
    constexpr float tolerance = 2e-3F;
    std::vector<Pixel> row(frameWidth);
    processPlainRow(work, getLook(), getFrame(work.content).getRow(0), row.data(), row.size());
    for (std::size_t pixel = 0; pixel < row.size(); ++pixel) {
        float const expected = row[pixel].red;
        bool const isInside = expected >= 0.0F && expected <= 1.0F;
        if (isInside && std::fabs(expected - getDestination().getRow(0)[pixel].red) > tolerance) {
            return false;
        }
    }
    return true;
}

void runPeer(benchmark::State& state, Work const& work, Peer const& peer)
{
    bool const doesAll = peer.name.find("no curves") == std::string::npos;
    Frame const& source = getFrame(work.content);
    Frame const& destination = getDestination();
    runOnFrame(state, [&] { peer.process(source, destination); });
    if (doesAll && !isSamePicture(work)) {
        state.SkipWithError("the peer's picture is another one");
    }
}

void runCopy(benchmark::State& state)
{
    auto const source = getFrame(Content::Plate).getPixels();
    auto const destination = getDestination().getPixels();
    runOnFrame(state, [&] {
        std::memcpy(static_cast<void*>(destination.data()), source.data(), source.size_bytes());
    });
}

#if defined(__SSE2__)
/// The least that work on a frame can take: every pixel read, and written past the caches.
void runStreamedCopy(benchmark::State& state)
{
    runOnRows(state, Content::Plate, [](Pixel const* source, Pixel* destination) {
        for (int x = 0; x < frameWidth; ++x) {
            _mm_stream_ps(&destination[x].red, _mm_loadu_ps(&source[x].red));
        }
        _mm_sfence();
    });
}
#endif

[[maybe_unused]] bool const areRowKernelsRegistered = [] {
    auto const add = [](std::string const& name, auto const& run) {
        benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
    };
    add("memcpy", runCopy);
#if defined(__SSE2__)
    add("streamed copy", runStreamedCopy);
#endif
    for (Work const& work : works) {
        std::string const name = std::string(work.name) + "/";
        add(name + "plain loop", [&work](benchmark::State& state) { runPlain(state, work); });
        for (std::size_t set = 0; set < inAllInstructionSets.size(); ++set) {
            if (isInstructionSetAvailable(inAllInstructionSets.at(set))) {
                KernelSet const& kernels = kernelsOf(inAllInstructionSets.at(set));
                add(name + inInstructionSetNames.at(set),
                    [&work, &kernels](benchmark::State& state) {
                        runKernel(state, work, kernels);
                    });
            }
        }
        for (Peer const& peer : makePeers(work, getLook())) {
            add(name + peer.name,
                [&work, peer](benchmark::State& state) { runPeer(state, work, peer); });
        }
    }
    return true;
}();

} // namespace
