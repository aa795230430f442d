// Rows between a tile's depth and float RGBA.

#include "pluginAPI/IxSampleConversion.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

constexpr std::size_t rowPixels = 3840;

struct Depth {
    char const* name;
    IxPixelFormat::Depth depth;
};
constexpr Depth depths[] = {{"8 bit", IxPixelFormat::UINT8},
                            {"half", IxPixelFormat::FLOAT16},
                            {"float", IxPixelFormat::FLOAT32}};

struct Rows {
    explicit Rows(IxPixelFormat::Depth depth)
        : format(IxPixelFormat::RGBA, depth, Rational(), false),
          bytes(rowPixels * format.getBytesPerPixel()), pixels(rowPixels)
    {
        for (std::size_t pixel = 0; pixel < rowPixels; ++pixel) {
            float const value = static_cast<float>(pixel) / rowPixels;
            pixels[pixel] = {value, value * 0.5F, 1.0F - value, 1.0F};
        }
        writePixelRow(format, pixels, bytes.data());
    }

    IxPixelFormat format;
    std::vector<std::byte> bytes;
    std::vector<CoRgbaColorTyped<float>> pixels;
};

void readRow(benchmark::State& state, IxPixelFormat::Depth depth)
{
    Rows rows(depth);
    for (auto _ : state) {
        readPixelRow(rows.format, rows.bytes.data(), rows.pixels);
        benchmark::ClobberMemory();
    }
    state.counters["pixels"] = static_cast<double>(rowPixels);
}

void writeRow(benchmark::State& state, IxPixelFormat::Depth depth)
{
    Rows rows(depth);
    for (auto _ : state) {
        writePixelRow(rows.format, rows.pixels, rows.bytes.data());
        benchmark::ClobberMemory();
    }
    state.counters["pixels"] = static_cast<double>(rowPixels);
}

[[maybe_unused]] bool const areConversionsRegistered = [] {
    for (Depth const& depth : depths) {
        std::string const name = std::string("conversion/") + depth.name;
        benchmark::RegisterBenchmark((name + " to float").c_str(), readRow, depth.depth);
        benchmark::RegisterBenchmark(("conversion/float to " + std::string(depth.name)).c_str(),
                                     writeRow, depth.depth);
    }
    return true;
}();

} // namespace
