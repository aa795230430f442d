// Conversions of runs of samples, compiled once for each instruction set (INSTRUCTION_SET is its
// name). Written without branches on the values, so that the compiler turns the loops into vector
// code; no step depends on the rounding mode or on denormals being kept. Functions of the standard
// library are kept out: their copies for this instruction set might be taken for everybody's.

#include "pluginAPI/IxSampleKernels.h"

#if defined(__F16C__)
#include <immintrin.h>
#endif

namespace INSTRUCTION_SET {

namespace {

constexpr std::uint32_t floatInfinity = 0x7f800000;
constexpr std::uint32_t halfInfinity = 0x7c00;
constexpr std::uint32_t halfQuietBit = 0x0200;
constexpr int mantissaShift = 23 - 10;
constexpr std::uint32_t exponentRebias = (127 - 15) << 23;
constexpr std::uint32_t smallestNormalHalf = (127 - 14) << 23; // as a float's bits
constexpr std::uint32_t halfOverflow = (127 + 16) << 23;       // 65536, as a float's bits

float toFloat(std::uint32_t bits)
{
    return __builtin_bit_cast(float, bits);
}

std::uint32_t toBits(float value)
{
    return __builtin_bit_cast(std::uint32_t, value);
}

float halfToFloat(std::uint16_t half)
{
    std::uint32_t const sign = (half & 0x8000U) << 16;
    std::uint32_t const magnitude = half & 0x7fffU;
    std::uint32_t const shifted = magnitude << mantissaShift;

    std::uint32_t const normal = shifted + exponentRebias;
    // A denormal half is a multiple of 2^-24: as the mantissa of 2^-14 it is exact, less that
    // 2^-14.
    float const denormal = toFloat(shifted + smallestNormalHalf) - toFloat(smallestNormalHalf);
    std::uint32_t const quietBit = magnitude > halfInfinity ? halfQuietBit << mantissaShift : 0;
    std::uint32_t const special = shifted | floatInfinity | quietBit;

    std::uint32_t const finite = magnitude < 0x0400U ? toBits(denormal) : normal;
    return toFloat(sign | (magnitude >= halfInfinity ? special : finite));
}

std::uint16_t floatToHalf(float value)
{
    std::uint32_t const bits = toBits(value);
    std::uint32_t const sign = (bits >> 16) & 0x8000U;
    std::uint32_t const magnitude = bits & 0x7fffffffU;

    std::uint32_t const tieToEven = (magnitude >> mantissaShift) & 1U;
    std::uint32_t const normal =
        (magnitude - exponentRebias + 0x0fffU + tieToEven) >> mantissaShift;
    // Adding 0.5 lines a denormal half's last bit up with the float's last bit.
    constexpr std::uint32_t half = 126U << 23;
    std::uint32_t const denormal = toBits(toFloat(magnitude) + toFloat(half)) - half;
    std::uint32_t const nan =
        halfInfinity | halfQuietBit | ((magnitude >> mantissaShift) & 0x03ffU);

    std::uint32_t const finite = magnitude < smallestNormalHalf ? denormal : normal;
    std::uint32_t const special = magnitude > floatInfinity ? nan : halfInfinity;
    return static_cast<std::uint16_t>(sign | (magnitude >= halfOverflow ? special : finite));
}

std::uint8_t floatToByte(float value)
{
    // The limits by masks: the compiler makes branches of two conditions in a row.
    std::uint32_t const isAbove0 = 0U - static_cast<std::uint32_t>(value > 0.0F); // no NaN is
    std::uint32_t const isBelow1 = 0U - static_cast<std::uint32_t>(!(value >= 1.0F));
    float const limited =
        toFloat((toBits(value) & isAbove0 & isBelow1) | (toBits(1.0F) & ~isBelow1));
    // At 2^23 a float's last bit is worth 1: the addition rounds to the nearest integer.
    constexpr float rounder = 8388608.0F;
    return static_cast<std::uint8_t>(toBits(limited * 255.0F + rounder));
}

void halvesToFloats(std::uint16_t const* halves, float* floats, std::size_t count)
{
    std::size_t sample = 0;
#if defined(__F16C__)
    for (; sample + 8 <= count; sample += 8) {
        auto const eight = _mm_loadu_si128(reinterpret_cast<__m128i const*>(halves + sample));
        _mm256_storeu_ps(floats + sample, _mm256_cvtph_ps(eight));
    }
#endif
    for (; sample < count; ++sample) {
        floats[sample] = halfToFloat(halves[sample]);
    }
}

void floatsToHalves(float const* floats, std::uint16_t* halves, std::size_t count)
{
    std::size_t sample = 0;
#if defined(__F16C__)
    for (; sample + 8 <= count; sample += 8) {
        auto const eight = _mm256_cvtps_ph(_mm256_loadu_ps(floats + sample),
                                           _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(halves + sample), eight);
    }
#endif
    for (; sample < count; ++sample) {
        halves[sample] = floatToHalf(floats[sample]);
    }
}

void bytesToFloats(std::uint8_t const* bytes, float* floats, std::size_t count)
{
    for (std::size_t sample = 0; sample < count; ++sample) {
        floats[sample] = static_cast<float>(bytes[sample]) / 255.0F;
    }
}

void floatsToBytes(float const* __restrict floats, std::uint8_t* __restrict bytes,
                   std::size_t count)
{
    for (std::size_t sample = 0; sample < count; ++sample) {
        bytes[sample] = floatToByte(floats[sample]);
    }
}

} // namespace

extern IxSampleKernels const kernels;
IxSampleKernels const kernels = {&halvesToFloats, &floatsToHalves, &bytesToFloats, &floatsToBytes};

} // namespace INSTRUCTION_SET
