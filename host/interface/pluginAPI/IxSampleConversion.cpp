// Conversions between the depths of tiles and float. Written without branches on the values, so
// that the compiler turns the row loops into vector code; no step depends on the rounding mode or
// on denormals being kept.

#include "pluginAPI/IxSampleConversion.h"

#include "base/Assertions.h"

#include <bit>
#include <cstring>

namespace {

constexpr std::uint32_t floatInfinity = 0x7f800000;
constexpr std::uint32_t halfInfinity = 0x7c00;
constexpr std::uint32_t halfQuietBit = 0x0200;
constexpr int mantissaShift = 23 - 10;
constexpr std::uint32_t exponentRebias = (127 - 15) << 23;
constexpr std::uint32_t smallestNormalHalf = (127 - 14) << 23; // as a float's bits
constexpr std::uint32_t halfOverflow = (127 + 16) << 23;       // 65536, as a float's bits

template <typename T>
struct Sample;

template <>
struct Sample<std::uint8_t> {
    static float toFloat(std::uint8_t value) { return static_cast<float>(value) / 255.0F; }
    static std::uint8_t fromFloat(float value) { return floatToUint8(value); }
};

template <>
struct Sample<std::uint16_t> {
    static float toFloat(std::uint16_t value) { return halfToFloat(value); }
    static std::uint16_t fromFloat(float value) { return floatToHalf(value); }
};

template <>
struct Sample<float> {
    static float toFloat(float value) { return value; }
    static float fromFloat(float value) { return value; }
};

template <typename T>
T load(std::byte const* row, std::size_t index)
{
    T value;
    std::memcpy(&value, row + index * sizeof(T), sizeof(T));
    return value;
}

template <typename T>
void store(T value, std::byte* row, std::size_t index)
{
    std::memcpy(row + index * sizeof(T), &value, sizeof(T));
}

template <typename T, int components>
void readRow(std::byte const* row, std::span<CoRgbaColorTyped<float>> pixels)
{
    for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel) {
        auto const sample = [&](std::size_t component) {
            return Sample<T>::toFloat(load<T>(row, pixel * components + component));
        };
        if constexpr (components == 1) {
            pixels[pixel] = {0.0F, 0.0F, 0.0F, sample(0)};
        } else if constexpr (components == 3) {
            pixels[pixel] = {sample(0), sample(1), sample(2), 1.0F};
        } else {
            pixels[pixel] = {sample(0), sample(1), sample(2), sample(3)};
        }
    }
}

template <typename T, int components>
void writeRow(std::span<CoRgbaColorTyped<float> const> pixels, std::byte* row)
{
    for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel) {
        auto const put = [&](std::size_t component, float value) {
            store<T>(Sample<T>::fromFloat(value), row, pixel * components + component);
        };
        if constexpr (components == 1) {
            put(0, pixels[pixel].alpha);
        } else {
            put(0, pixels[pixel].red);
            put(1, pixels[pixel].green);
            put(2, pixels[pixel].blue);
            if constexpr (components == 4) {
                put(3, pixels[pixel].alpha);
            }
        }
    }
}

/// Calls `function.template operator()<T, components>()` for the format's sample type.
template <typename Function>
void forFormat(IxPixelFormat const& format, Function const& function)
{
    auto const withSample = [&]<typename T>() {
        switch (format.getComponents()) {
        case IxPixelFormat::ALPHA: return function.template operator()<T, 1>();
        case IxPixelFormat::RGB: return function.template operator()<T, 3>();
        case IxPixelFormat::RGBA: return function.template operator()<T, 4>();
        }
    };
    switch (format.getDepth()) {
    case IxPixelFormat::UINT8: return withSample.template operator()<std::uint8_t>();
    case IxPixelFormat::FLOAT16: return withSample.template operator()<std::uint16_t>();
    case IxPixelFormat::FLOAT32: return withSample.template operator()<float>();
    case IxPixelFormat::COMPLEX: break;
    }
    Assertions::check(false, "depth == UINT8 || depth == FLOAT16 || depth == FLOAT32");
}

} // namespace

float halfToFloat(std::uint16_t half)
{
    std::uint32_t const sign = (half & 0x8000U) << 16;
    std::uint32_t const magnitude = half & 0x7fffU;
    std::uint32_t const shifted = magnitude << mantissaShift;

    std::uint32_t const normal = shifted + exponentRebias;
    // A denormal half is a multiple of 2^-24: as the mantissa of 2^-14 it is exact, less that
    // 2^-14.
    float const denormal = std::bit_cast<float>(shifted + smallestNormalHalf) -
                           std::bit_cast<float>(smallestNormalHalf);
    std::uint32_t const quietBit = magnitude > halfInfinity ? halfQuietBit << mantissaShift : 0;
    std::uint32_t const special = shifted | floatInfinity | quietBit;

    std::uint32_t const finite =
        magnitude < 0x0400U ? std::bit_cast<std::uint32_t>(denormal) : normal;
    return std::bit_cast<float>(sign | (magnitude >= halfInfinity ? special : finite));
}

std::uint16_t floatToHalf(float value)
{
    std::uint32_t const bits = std::bit_cast<std::uint32_t>(value);
    std::uint32_t const sign = (bits >> 16) & 0x8000U;
    std::uint32_t const magnitude = bits & 0x7fffffffU;

    std::uint32_t const tieToEven = (magnitude >> mantissaShift) & 1U;
    std::uint32_t const normal =
        (magnitude - exponentRebias + 0x0fffU + tieToEven) >> mantissaShift;
    // Adding 0.5 lines a denormal half's last bit up with the float's last bit.
    constexpr std::uint32_t half = 126U << 23;
    std::uint32_t const denormal =
        std::bit_cast<std::uint32_t>(std::bit_cast<float>(magnitude) + std::bit_cast<float>(half)) -
        half;
    std::uint32_t const nan =
        halfInfinity | halfQuietBit | ((magnitude >> mantissaShift) & 0x03ffU);

    std::uint32_t const finite = magnitude < smallestNormalHalf ? denormal : normal;
    std::uint32_t const special = magnitude > floatInfinity ? nan : halfInfinity;
    return static_cast<std::uint16_t>(sign | (magnitude >= halfOverflow ? special : finite));
}

std::uint8_t floatToUint8(float value)
{
    float const notBelow = value > 0.0F ? value : 0.0F; // a NaN is not above 0
    float const limited = notBelow < 1.0F ? notBelow : 1.0F;
    // At 2^23 a float's last bit is worth 1: the addition rounds to the nearest integer.
    constexpr float rounder = 8388608.0F;
    return static_cast<std::uint8_t>(std::bit_cast<std::uint32_t>(limited * 255.0F + rounder));
}

void readPixelRow(IxPixelFormat const& format, std::byte const* row,
                  std::span<CoRgbaColorTyped<float>> pixels)
{
    forFormat(format, [&]<typename T, int components>() { readRow<T, components>(row, pixels); });
}

void writePixelRow(IxPixelFormat const& format, std::span<CoRgbaColorTyped<float> const> pixels,
                   std::byte* row)
{
    forFormat(format, [&]<typename T, int components>() { writeRow<T, components>(pixels, row); });
}

void copyAlphaRow(IxPixelFormat const& format, std::byte const* source, std::size_t pixels,
                  std::byte* row)
{
    forFormat(format, [&]<typename T, int components>() {
        for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
            std::size_t const alpha = pixel * components + components - 1;
            std::memcpy(row + alpha * sizeof(T), source + alpha * sizeof(T), sizeof(T));
        }
    });
}
