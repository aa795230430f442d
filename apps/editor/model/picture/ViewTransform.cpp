#include "editor/model/picture/ViewTransform.h"

#include "pluginAPI/IxSampleKernels.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr float byteScale = 255.0F;

/// IEC 61966-2-1.
float encodeSrgb(float value)
{
    return value <= 0.0031308F ? 12.92F * value : 1.055F * std::pow(value, 1.0F / 2.4F) - 0.055F;
}

/// The curve for screens of 8 bit without its power: which byte a value becomes follows from where
/// it lies between the least values of each byte. A table by the value's upper bits says where to
/// begin.
class SrgbBytes {
public:
    SrgbBytes()
    {
        for (int byte = 1; byte <= 255; ++byte) {
            least[static_cast<std::size_t>(byte)] = findLeast(byte);
        }
        least[256] = 2.0F; // never reached
        for (std::size_t entry = 0; entry < first.size(); ++entry) {
            float const begin =
                std::bit_cast<float>(static_cast<std::uint32_t>(entry + firstEntry) << droppedBits);
            first[entry] = static_cast<std::uint8_t>(
                std::upper_bound(least.begin() + 1, least.begin() + 256, begin) - least.begin() -
                1);
        }
    }

    /// The byte as the share of 1 that it stands for.
    float round(float value) const
    {
        if (!(value >= least[1])) { // NaN too
            return 0.0F;
        }
        if (value >= 1.0F) {
            return 1.0F;
        }
        std::size_t const entry = (std::bit_cast<std::uint32_t>(value) >> droppedBits) - firstEntry;
        std::size_t byte = first[entry];
        while (value >= least[byte + 1]) {
            ++byte;
        }
        return static_cast<float>(byte) / byteScale;
    }

private:
    static constexpr int droppedBits = 16; // 128 entries for each power of two
    static constexpr std::size_t firstEntry = std::bit_cast<std::uint32_t>(0x1p-13F) >> droppedBits;
    static constexpr std::size_t lastEntry = std::bit_cast<std::uint32_t>(1.0F) >> droppedBits;

    static float findLeast(int byte)
    {
        // Positive floats and their bits have one order.
        std::uint32_t below = 0;
        std::uint32_t above = std::bit_cast<std::uint32_t>(1.0F);
        while (above - below > 1) {
            std::uint32_t const middle = below + (above - below) / 2;
            bool const isReached =
                encodeSrgb(std::bit_cast<float>(middle)) * byteScale >= float(byte) - 0.5F;
            (isReached ? above : below) = middle;
        }
        return std::bit_cast<float>(above);
    }

    std::array<float, 257> least{}; // of each byte
    std::array<std::uint8_t, lastEntry - firstEntry> first{};
};

void roundSrgb(std::span<Pixel> row)
{
    static SrgbBytes const bytes;
    for (Pixel& pixel : row) {
        pixel.red = bytes.round(pixel.red);
        pixel.green = bytes.round(pixel.green);
        pixel.blue = bytes.round(pixel.blue);
    }
}

void isolate(std::span<Pixel> row, ViewTransform::Channels channels)
{
    auto const spread = [row](float Pixel::*channel) {
        for (Pixel& pixel : row) {
            pixel.red = pixel.green = pixel.blue = pixel.*channel;
        }
    };
    switch (channels) {
    case ViewTransform::Rgb: break;
    case ViewTransform::Red: spread(&Pixel::red); break;
    case ViewTransform::Green: spread(&Pixel::green); break;
    case ViewTransform::Blue: spread(&Pixel::blue); break;
    case ViewTransform::Alpha: spread(&Pixel::alpha); break;
    }
}

} // namespace

ScreenEncoder::ScreenEncoder(ViewTransform const& viewTransform)
    : transform(viewTransform), gain(static_cast<float>(std::exp2(transform.exposure)))
{
}

void ScreenEncoder::applyDisplay(std::span<Pixel> row) const
{
    if (transform.exposure != 0.0) {
        for (Pixel& pixel : row) {
            pixel.red *= gain;
            pixel.green *= gain;
            pixel.blue *= gain;
        }
    }
    if (transform.processor != nullptr) {
        transform.processor->apply(row);
    } else if (transform.isSrgb) {
        roundSrgb(row);
    }
}

void ScreenEncoder::encode(std::span<Pixel> row, std::span<std::uint32_t> screen) const
{
    static_assert(std::endian::native == std::endian::little);
    if (transform.channels != ViewTransform::Alpha) {
        applyDisplay(row);
    }
    isolate(row, transform.channels);
    IxSampleKernels::chosen().floatsToBytes(
        &row.data()->red, reinterpret_cast<std::uint8_t*>(screen.data()), 4 * row.size());
    for (std::uint32_t& pixel : screen) { // red was the first byte, which is the lowest
        pixel = 0xff000000U | (pixel & 0xffU) << 16U | (pixel & 0xff00U) | (pixel >> 16U & 0xffU);
    }
}
