#include "media/ExrPxr24.h"

#include "media/ExrChannels.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t bytesOfHalf = 2;
constexpr std::size_t bytesOfFloat = 3;
constexpr std::size_t bytesOfNumber = 4;

std::size_t countPlanes(Imf::PixelType type)
{
    switch (type) {
    case Imf::HALF: return bytesOfHalf;
    case Imf::FLOAT: return bytesOfFloat;
    default: return bytesOfNumber;
    }
}

/// The nearest number of 24 bits; rounding makes no infinity. A NaN stays one.
std::uint32_t toFloat24(std::uint32_t bits)
{
    constexpr std::uint32_t exponentMask = 0x7f800000;
    constexpr std::uint32_t mantissaMask = 0x007fffff;
    std::uint32_t const sign = bits >> 31U << 23U;
    std::uint32_t const magnitude = bits & (exponentMask | mantissaMask);
    if (magnitude > exponentMask) {
        std::uint32_t const mantissa = (magnitude & mantissaMask) >> 8U;
        return sign | exponentMask >> 8U | (mantissa != 0 ? mantissa : 1);
    }
    std::uint32_t const rounded = (magnitude + (magnitude & 0x80U)) >> 8U;
    bool const overflows = rounded >= exponentMask >> 8U;
    return sign | (overflows ? magnitude >> 8U : rounded);
}

/// A sample as the number whose differences are packed, and back.
template <typename Sample>
struct HalfOrNumber {
    using Stored = Sample;
    static std::uint32_t pack(Stored sample) { return sample; }
    static Stored unpack(std::uint32_t number) { return static_cast<Stored>(number); }
};
struct FloatNumber {
    using Stored = std::uint32_t;
    static std::uint32_t pack(Stored sample) { return toFloat24(sample); }
    static Stored unpack(std::uint32_t number) { return number << 8U; }
};

template <typename Kind, std::size_t planes>
void packRow(std::byte const* samples, std::size_t width, std::byte* to)
{
    std::uint32_t before = 0;
    for (std::size_t x = 0; x < width; ++x) {
        typename Kind::Stored sample;
        std::memcpy(&sample, samples + x * sizeof sample, sizeof sample);
        std::uint32_t const now = Kind::pack(sample);
        std::uint32_t const difference = now - before;
        for (std::size_t plane = 0; plane < planes; ++plane) {
            to[plane * width + x] = static_cast<std::byte>(difference >> 8U * (planes - 1 - plane));
        }
        before = now;
    }
}

template <typename Kind, std::size_t planes>
void unpackRow(std::byte const* from, std::size_t width, std::byte* samples)
{
    std::uint32_t sum = 0;
    for (std::size_t x = 0; x < width; ++x) {
        std::uint32_t difference = 0;
        for (std::size_t plane = 0; plane < planes; ++plane) {
            difference = difference << 8U | static_cast<std::uint32_t>(from[plane * width + x]);
        }
        sum += difference;
        typename Kind::Stored const sample = Kind::unpack(sum);
        std::memcpy(samples + x * sizeof sample, &sample, sizeof sample);
    }
}

using HalfNumber = HalfOrNumber<std::uint16_t>;
using WholeNumber = HalfOrNumber<std::uint32_t>;

} // namespace

std::size_t pxr24BytesPerRow(std::vector<Imf::PixelType> const& types, std::size_t width)
{
    std::size_t bytes = 0;
    for (Imf::PixelType const type : types) {
        bytes += countPlanes(type) * width;
    }
    return bytes;
}

void toPxr24(std::vector<Imf::PixelType> const& types, std::size_t width,
             std::span<std::byte const> samples, std::span<std::byte> planes)
{
    std::byte const* from = samples.data();
    std::byte* to = planes.data();
    while (from != samples.data() + samples.size()) {
        for (Imf::PixelType const type : types) {
            switch (type) {
            case Imf::HALF: packRow<HalfNumber, bytesOfHalf>(from, width, to); break;
            case Imf::FLOAT: packRow<FloatNumber, bytesOfFloat>(from, width, to); break;
            default: packRow<WholeNumber, bytesOfNumber>(from, width, to); break;
            }
            from += sampleBytesOf(type) * width;
            to += countPlanes(type) * width;
        }
    }
}

void fromPxr24(std::vector<Imf::PixelType> const& types, std::size_t width,
               std::span<std::byte const> planes, std::span<std::byte> samples)
{
    std::byte const* from = planes.data();
    std::byte* to = samples.data();
    while (to != samples.data() + samples.size()) {
        for (Imf::PixelType const type : types) {
            switch (type) {
            case Imf::HALF: unpackRow<HalfNumber, bytesOfHalf>(from, width, to); break;
            case Imf::FLOAT: unpackRow<FloatNumber, bytesOfFloat>(from, width, to); break;
            default: unpackRow<WholeNumber, bytesOfNumber>(from, width, to); break;
            }
            from += countPlanes(type) * width;
            to += sampleBytesOf(type) * width;
        }
    }
}
