// Whole files through the program, against the bare library and against a general image program:
// time and peak memory of the process, start and end included.
//
// filesBench [--quick] [options of Google Benchmark]: without the large file if quick.

#include "remapcolor/FloorBench.h"
#include "support/ProgramRun.h"
#include "support/TestFolder.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <string>

namespace {

using namespace bench;

struct Size {
    char const* name;
    int width;
    int height;
    int nbRepetitions;
};
constexpr Size sizes[] = {{"3840 x 2160", 3840, 2160, 7}, {"16384 x 8192", 16384, 8192, 3}};

struct Program {
    char const* name;
    Words (*makeCommand)(std::string const& input, std::string const& output, int threads);
};

Program const programs[] = {
    {"OpenEXR copy",
     [](std::string const& input, std::string const& output, int threads) {
         return Words{findProgram("exrFiles"), "copy", input, output, std::to_string(threads)};
     }},
    {"remapcolor, EXR display + curves", makeRender},
    {"oiiotool, multiply and power",
     [](std::string const& input, std::string const& output, int threads) {
         return Words{"oiiotool",         "--threads", std::to_string(threads),  input, "--mulc",
                      "0.25,0.25,0.25,1", "--powc",    "0.4545,0.4545,0.4545,1", "-o",  output};
     }},
};

void measure(benchmark::State& state, Program const& program, std::string const& input,
             int nbThreads)
{
    std::string const output = input + ".out.exr";
    double peak = 0.0;
    double cpuSeconds = 0.0;
    for (auto _ : state) {
        Run const run = runProgram(program.makeCommand(input, output, nbThreads));
        if (!run.isGood || !std::filesystem::exists(output)) {
            state.SkipWithError("the program failed or is not installed");
            break;
        }
        state.SetIterationTime(run.seconds);
        peak = run.peakMegabytes;
        cpuSeconds = run.cpuSeconds;
        state.counters["output_megabytes"] =
            static_cast<double>(std::filesystem::file_size(output)) / (1024.0 * 1024.0);
        std::filesystem::remove(output);
    }
    state.counters["peak_megabytes"] = peak;
    state.counters["cpu_seconds"] = cpuSeconds;
}

void addSize(Size const& size, std::string const& input)
{
    for (Program const& program : programs) {
        for (int const threads : {1, 2}) {
            std::string const name = std::string("file/") + size.name + "/" +
                                     std::to_string(threads) + "/" + program.name;
            benchmark::RegisterBenchmark(name.c_str(),
                                         [&program, input, threads](auto& state) {
                                             measure(state, program, input, threads);
                                         })
                ->UseManualTime()
                ->Iterations(1)
                ->Repetitions(size.nbRepetitions)
                ->Unit(benchmark::kSecond);
        }
    }
}

bool takeQuick(int& nbArguments, char** arguments)
{
    if (nbArguments < 2 || std::strcmp(arguments[1], "--quick") != 0) {
        return false;
    }
    for (int argument = 1; argument < nbArguments; ++argument) {
        arguments[argument] = arguments[argument + 1];
    }
    --nbArguments;
    return true;
}

} // namespace

int main(int nbArguments, char** arguments)
{
    bool const isQuick = takeQuick(nbArguments, arguments);
    benchmark::Initialize(&nbArguments, arguments);
    if (benchmark::ReportUnrecognizedArguments(nbArguments, arguments)) {
        return 2;
    }
    TestFolder const folder;
    for (Size const& size : sizes) {
        std::string const input = folder.path / (std::to_string(size.width) + ".exr");
        bool const isLeftOut = isQuick && &size != &sizes[0];
        if (!isLeftOut && makePicture(input, size.width, size.height, "zip", 0)) {
            addSize(size, input);
        }
    }
    addFloors(folder.path, isQuick);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
