// How near a render comes to what the bare library takes: to read the picture and to write the
// result's pixels, packed as the picture is.

#include "remapcolor/FloorBench.h"

#include "support/ProgramRun.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace bench {

namespace {

using Path = std::filesystem::path;

constexpr int width = 3840;
constexpr int height = 2160;
constexpr int nbRepetitions = 5;
constexpr int nbFrames = 48;
constexpr int nbLanes = 2;

struct Packing {
    char const* name;
    char const* compression;
    int tile;
};
constexpr Packing packings[] = {
    {"none", "none", 0},
    {"RLE", "rle", 0},
    {"ZIPS", "zips", 0},
    {"ZIP", "zip", 0},
    {"ZIP, tiles of 64", "zip", 64},
    {"PIZ", "piz", 0},
    {"PXR24", "pxr24", 0},
    {"B44", "b44", 0},
    {"B44A", "b44a", 0},
    {"DWAA", "dwaa", 0},
    {"DWAB", "dwab", 0},
};

using Work = std::function<Run()>;

/// `output` is not there when the work begins.
void add(std::string const& name, int repetitions, Path const& output, Work const& work)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [output, work](benchmark::State& state) {
                                     double cpuSeconds = 0.0;
                                     for (auto _ : state) {
                                         std::filesystem::remove(output);
                                         Run const run = work();
                                         if (!run.isGood) {
                                             state.SkipWithError("a program failed");
                                             break;
                                         }
                                         state.SetIterationTime(run.seconds);
                                         cpuSeconds = run.cpuSeconds;
                                     }
                                     state.counters["cpu_seconds"] = cpuSeconds;
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(repetitions)
        ->Unit(benchmark::kSecond);
}

Words makeFloor(Path const& input, Path const& result, Path const& output, int threads)
{
    return {findProgram("exrFiles"), "floor", input, result, output, std::to_string(threads)};
}

void addPacking(Packing const& packing, Path const& folder)
{
    Path const input = folder / (std::string(packing.name) + ".exr");
    Path const result = folder / (std::string(packing.name) + ".result.exr");
    Path const output = folder / "out.exr";
    if (!makePicture(input, width, height, packing.compression, packing.tile) ||
        !runProgram(makeRender(input, result, nbLanes)).isGood) {
        return;
    }
    for (int const threads : {1, 2}) {
        std::string const name =
            "floor/" + std::string(packing.name) + "/" + std::to_string(threads) + "/";
        add(name + "render", nbRepetitions, output,
            [=] { return runProgram(makeRender(input, output, threads)); });
        add(name + "library", nbRepetitions, output,
            [=] { return runProgram(makeFloor(input, result, output, threads)); });
    }
}

/// Frames of a sequence that are one file.
void makeSequence(Path const& picture, Path const& folder)
{
    std::filesystem::create_directory(folder);
    for (int frame = 1; frame <= nbFrames; ++frame) {
        std::filesystem::create_hard_link(picture, folder / (std::to_string(frame) + ".exr"));
    }
}

/// The library's runs side by side, one thread each: the longer lane counts.
Run runLanes(Path const& input, Path const& result, Path const& outputs)
{
    std::atomic<int> nextFrame = 1;
    std::array<Run, nbLanes> sums;
    std::vector<std::jthread> lanes;
    for (Run& sum : sums) {
        lanes.emplace_back([&] {
            sum.isGood = true;
            for (int frame = 0; (frame = nextFrame++) <= nbFrames;) {
                Path const output = outputs / (std::to_string(frame) + ".exr");
                Run const run = runProgram(makeFloor(input, result, output, 1));
                sum.isGood = sum.isGood && run.isGood;
                sum.seconds += run.seconds;
                sum.cpuSeconds += run.cpuSeconds;
            }
        });
    }
    lanes.clear();
    return {sums[0].isGood && sums[1].isGood, std::max(sums[0].seconds, sums[1].seconds),
            sums[0].cpuSeconds + sums[1].cpuSeconds, 0.0};
}

void addSequence(Path const& folder)
{
    Path const picture = folder / "ZIP.exr";
    Path const result = folder / "ZIP.result.exr";
    Path const frames = folder / "frames";
    Path const outputs = folder / "outputs";
    constexpr int repetitions = 3; // half a minute each
    makeSequence(picture, frames);
    // Emptied, not removed: the library makes no folders.
    auto const empty = [outputs] {
        std::filesystem::remove_all(outputs);
        std::filesystem::create_directory(outputs);
    };
    add("sequence/render", repetitions, folder / "none", [=] {
        empty();
        return runProgram(makeRender(frames / "#.exr", outputs / "#.exr", nbLanes));
    });
    add("sequence/library", repetitions, folder / "none", [=] {
        empty();
        return runLanes(picture, result, outputs);
    });
}

void addOtherFiles(Path const& folder)
{
    for (char const* const extension : {"png", "tif"}) {
        for (int const threads : {1, 2}) {
            Path const output = folder / (std::string("out.") + extension);
            add("other/" + std::string(extension) + "/" + std::to_string(threads), nbRepetitions,
                output,
                [=] { return runProgram(makeRender(folder / "ZIP.exr", output, threads)); });
        }
    }
}

void addStart(Path const& folder)
{
    Path const dot = folder / "dot.exr";
    Path const output = folder / "out.exr";
    constexpr int repetitions = 31;
    if (makePicture(dot, 1, 1, "zip", 0)) {
        add("start", repetitions, output, [=] { return runProgram(makeRender(dot, output, 1)); });
    }
}

} // namespace

void addFloors(Path const& folder, bool isQuick)
{
    for (Packing const& packing : packings) {
        addPacking(packing, folder);
    }
    addOtherFiles(folder);
    addStart(folder);
    if (!isQuick) {
        addSequence(folder);
    }
}

} // namespace bench
