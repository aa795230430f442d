// OpenFX images in memory.

#include "Frame.h"

#include "pluginAPI/IxSampleConversion.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr float shortMaximum = 65535.0F;

constexpr std::array<std::pair<char const*, SampleDepth>, 4> depths = {{
    {OfxText::Depth::byte, SampleDepth::Byte},
    {OfxText::Depth::word, SampleDepth::Short},
    {OfxText::Depth::half, SampleDepth::Half},
    {OfxText::Depth::single, SampleDepth::Float},
}};

constexpr std::array<std::pair<char const*, IxPixelFormat::Components>, 3> allComponents = {{
    {OfxText::Components::rgba, IxPixelFormat::RGBA},
    {OfxText::Components::rgb, IxPixelFormat::RGB},
    {OfxText::Components::alpha, IxPixelFormat::ALPHA},
}};

template <typename Table>
auto findText(Table const& table, std::string const& text)
{
    using Meaning = typename Table::value_type::second_type;
    for (auto const& [known, meaning] : table) {
        if (text == known) {
            return std::optional<Meaning>(meaning);
        }
    }
    return std::optional<Meaning>();
}

/// The depth that a tile of these samples has; that of floats for Short, which goes through them.
IxPixelFormat::Depth tileDepth(SampleDepth depth)
{
    switch (depth) {
    case SampleDepth::Byte: return IxPixelFormat::UINT8;
    case SampleDepth::Half: return IxPixelFormat::FLOAT16;
    case SampleDepth::Short:
    case SampleDepth::Float: break;
    }
    return IxPixelFormat::FLOAT32;
}

/// Bytes that start at a multiple of every sample's size.
template <typename Tag>
std::span<std::byte> scratchBytes(std::size_t size)
{
    thread_local std::vector<std::byte> bytes;
    bytes.resize(std::max(bytes.size(), size));
    return {bytes.data(), size};
}

struct ForFloats;
struct ForSamples;

std::uint16_t roundToShort(float value)
{
    double const limited = value > 0.0F ? std::min(value, 1.0F) : 0.0F; // no NaN is above 0
    // Exact in double up to the cut. NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<std::uint16_t>(limited * shortMaximum + 0.5);
}

/// Between 16-bit integers and floats in the same layout.
void shortsToFloats(std::byte const* shorts, std::byte* floats, std::size_t count)
{
    for (std::size_t sample = 0; sample < count; ++sample) {
        std::uint16_t integer = 0;
        std::memcpy(&integer, shorts + sample * sizeof(integer), sizeof(integer));
        float const value = static_cast<float>(integer) / shortMaximum;
        std::memcpy(floats + sample * sizeof(value), &value, sizeof(value));
    }
}

void floatsToShorts(std::byte const* floats, std::byte* shorts, std::size_t count)
{
    for (std::size_t sample = 0; sample < count; ++sample) {
        float value = 0.0F;
        std::memcpy(&value, floats + sample * sizeof(value), sizeof(value));
        std::uint16_t const integer = roundToShort(value);
        std::memcpy(shorts + sample * sizeof(integer), &integer, sizeof(integer));
    }
}

} // namespace

std::optional<SampleDepth> findDepth(std::string const& text)
{
    return findText(depths, text);
}

char const* nameDepth(SampleDepth depth)
{
    return depths[static_cast<std::size_t>(depth)].first;
}

std::optional<IxPixelFormat::Components> findComponents(std::string const& text)
{
    return findText(allComponents, text);
}

std::size_t Frame::getBytesPerPixel() const
{
    static constexpr std::array<std::size_t, 4> sampleBytes = {1, 2, 2, 4};
    return sampleBytes[static_cast<std::size_t>(depth)] * static_cast<std::size_t>(components);
}

std::optional<IxPixelFormat> Frame::findTileFormat() const
{
    std::size_t const sampleBytes = getBytesPerPixel() / static_cast<std::size_t>(components);
    bool const isAligned = reinterpret_cast<std::uintptr_t>(firstRow) % sampleBytes == 0 &&
                           rowStep % static_cast<std::ptrdiff_t>(sampleBytes) == 0;
    if (depth == SampleDepth::Short || !isAligned) {
        return std::nullopt;
    }
    return makeTileFormat(components, tileDepth(depth));
}

IxPixelFormat makeTileFormat(IxPixelFormat::Components components, IxPixelFormat::Depth depth)
{
    constexpr bool isPremultiplied = false;
    return {components, depth, Rational{1, 1}, isPremultiplied};
}

void readPixels(Frame const& frame, int x, int y, std::span<Pixel> pixels)
{
    std::size_t const size = frame.getBytesPerPixel() * pixels.size();
    std::span<std::byte> const samples = scratchBytes<ForSamples>(size);
    std::memcpy(samples.data(), frame.getPixel(x, y), size);
    IxPixelFormat const format = makeTileFormat(frame.components, tileDepth(frame.depth));
    if (frame.depth != SampleDepth::Short) {
        return readPixelRow(format, samples.data(), pixels);
    }
    std::size_t const count = size / sizeof(std::uint16_t);
    std::span<std::byte> const floats = scratchBytes<ForFloats>(count * sizeof(float));
    shortsToFloats(samples.data(), floats.data(), count);
    readPixelRow(format, floats.data(), pixels);
}

void writePixels(Frame const& frame, int x, int y, std::span<Pixel const> pixels)
{
    std::size_t const size = frame.getBytesPerPixel() * pixels.size();
    IxPixelFormat const format = makeTileFormat(frame.components, tileDepth(frame.depth));
    std::span<std::byte> const row =
        scratchBytes<ForFloats>(format.getBytesPerPixel() * pixels.size());
    writePixelRow(format, pixels, row.data());
    if (frame.depth != SampleDepth::Short) {
        std::memcpy(frame.getPixel(x, y), row.data(), size);
        return;
    }
    floatsToShorts(row.data(), frame.getPixel(x, y), size / sizeof(std::uint16_t));
}

void clearPixels(Frame const& frame, GeRectangle<int> const& region)
{
    if (region.isEmpty()) {
        return;
    }
    std::size_t const size = frame.getBytesPerPixel() * static_cast<std::size_t>(region.getWidth());
    for (int y = region.y0; y < region.y1; ++y) {
        std::memset(frame.getPixel(region.x0, y), 0, size);
    }
}
