// Conversions between the formats of tiles and float RGBA.

#include "pluginAPI/IxSampleConversion.h"

#include "base/Assertions.h"
#include "pluginAPI/IxSampleKernels.h"

#include <algorithm>
#include <cstring>

namespace Baseline {
extern IxSampleKernels const kernels;
}
#if defined(__x86_64__)
namespace Avx2 {
extern IxSampleKernels const kernels;
}
namespace Avx512 {
extern IxSampleKernels const kernels;
}
#endif

namespace {

using Pixel = CoRgbaColorTyped<float>;

/// Pixels whose samples are converted at once where they have other components than RGBA.
constexpr std::size_t chunkPixels = 256;

void samplesToFloats(IxPixelFormat::Depth depth, std::byte const* samples, float* floats,
                     std::size_t count)
{
    IxSampleKernels const& kernels = IxSampleKernels::chosen();
    switch (depth) {
    case IxPixelFormat::UINT8:
        return kernels.bytesToFloats(reinterpret_cast<std::uint8_t const*>(samples), floats, count);
    case IxPixelFormat::FLOAT16:
        return kernels.halvesToFloats(reinterpret_cast<std::uint16_t const*>(samples), floats,
                                      count);
    case IxPixelFormat::FLOAT32: std::memcpy(floats, samples, count * sizeof(float)); return;
    case IxPixelFormat::COMPLEX: break;
    }
    Assertions::check(false, "depth == UINT8 || depth == FLOAT16 || depth == FLOAT32");
}

void floatsToSamples(IxPixelFormat::Depth depth, float const* floats, std::byte* samples,
                     std::size_t count)
{
    IxSampleKernels const& kernels = IxSampleKernels::chosen();
    switch (depth) {
    case IxPixelFormat::UINT8:
        return kernels.floatsToBytes(floats, reinterpret_cast<std::uint8_t*>(samples), count);
    case IxPixelFormat::FLOAT16:
        return kernels.floatsToHalves(floats, reinterpret_cast<std::uint16_t*>(samples), count);
    case IxPixelFormat::FLOAT32: std::memcpy(samples, floats, count * sizeof(float)); return;
    case IxPixelFormat::COMPLEX: break;
    }
    Assertions::check(false, "depth == UINT8 || depth == FLOAT16 || depth == FLOAT32");
}

Pixel makePixel(IxPixelFormat::Components components, float const* samples)
{
    return components == IxPixelFormat::RGB ? Pixel{samples[0], samples[1], samples[2], 1.0F}
                                            : Pixel{0.0F, 0.0F, 0.0F, samples[0]};
}

void takeSamples(IxPixelFormat::Components components, Pixel const& pixel, float* samples)
{
    if (components == IxPixelFormat::RGB) {
        samples[0] = pixel.red;
        samples[1] = pixel.green;
        samples[2] = pixel.blue;
    } else {
        samples[0] = pixel.alpha;
    }
}

/// Copies a sample every `stride` bytes.
template <typename Sample>
void copyEvery(std::byte const* from, std::byte* to, std::size_t stride, std::size_t count)
{
    for (std::size_t sample = 0; sample < count; ++sample) {
        std::memcpy(to + sample * stride, from + sample * stride, sizeof(Sample));
    }
}

/// Calls `function(first, count)` for chunks of `size`.
template <typename Function>
void forChunks(std::size_t size, Function const& function)
{
    for (std::size_t first = 0; first < size; first += chunkPixels) {
        function(first, std::min(chunkPixels, size - first));
    }
}

} // namespace

IxSampleKernels const& IxSampleKernels::of([[maybe_unused]] InInstructionSet set)
{
#if defined(__x86_64__)
    switch (set) {
    case InInstructionSet::Baseline: return Baseline::kernels;
    case InInstructionSet::Avx2: return Avx2::kernels;
    case InInstructionSet::Avx512: return Avx512::kernels;
    }
#endif
    return Baseline::kernels;
}

IxSampleKernels const& IxSampleKernels::chosen()
{
    static IxSampleKernels const& kernels = of(chooseInstructionSet());
    return kernels;
}

void readPixelRow(IxPixelFormat const& format, std::byte const* row, std::span<Pixel> pixels)
{
    auto const components = format.getComponents();
    if (components == IxPixelFormat::RGBA) {
        samplesToFloats(format.getDepth(), row, reinterpret_cast<float*>(pixels.data()),
                        4 * pixels.size());
        return;
    }
    auto const nbSamples = static_cast<std::size_t>(format.getNbComponents());
    float samples[3 * chunkPixels];
    forChunks(pixels.size(), [&](std::size_t first, std::size_t count) {
        samplesToFloats(format.getDepth(), row + first * format.getBytesPerPixel(), samples,
                        nbSamples * count);
        for (std::size_t pixel = 0; pixel < count; ++pixel) {
            pixels[first + pixel] = makePixel(components, samples + nbSamples * pixel);
        }
    });
}

void writePixelRow(IxPixelFormat const& format, std::span<Pixel const> pixels, std::byte* row)
{
    auto const components = format.getComponents();
    if (components == IxPixelFormat::RGBA) {
        floatsToSamples(format.getDepth(), reinterpret_cast<float const*>(pixels.data()), row,
                        4 * pixels.size());
        return;
    }
    auto const nbSamples = static_cast<std::size_t>(format.getNbComponents());
    float samples[3 * chunkPixels];
    forChunks(pixels.size(), [&](std::size_t first, std::size_t count) {
        for (std::size_t pixel = 0; pixel < count; ++pixel) {
            takeSamples(components, pixels[first + pixel], samples + nbSamples * pixel);
        }
        floatsToSamples(format.getDepth(), samples, row + first * format.getBytesPerPixel(),
                        nbSamples * count);
    });
}

void copyAlphaRow(IxPixelFormat const& format, std::byte const* source, std::size_t pixels,
                  std::byte* row)
{
    std::size_t const pixelBytes = format.getBytesPerPixel();
    std::size_t const sampleBytes = pixelBytes / static_cast<std::size_t>(format.getNbComponents());
    std::size_t const first = pixelBytes - sampleBytes;
    switch (sampleBytes) {
    case 1: return copyEvery<std::uint8_t>(source + first, row + first, pixelBytes, pixels);
    case 2: return copyEvery<std::uint16_t>(source + first, row + first, pixelBytes, pixels);
    default: return copyEvery<std::uint32_t>(source + first, row + first, pixelBytes, pixels);
    }
}
