// The generator maps the raw words of the Mersenne twister itself: the distributions of the
// standard library differ between implementations.

#include "StandardPixels.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace reference {

namespace {

constexpr std::uint32_t quietBit = 0x00400000U;

/// Evenly spread over [0, 1), in steps of 2^-24.
float unitValue(std::uint32_t word)
{
    return static_cast<float>(word >> 8U) * 0x1p-24F;
}

float randomValue(std::mt19937& words)
{
    auto const kind = words() % 16U;
    auto const word = static_cast<std::uint32_t>(words());
    if (kind < 8U) {
        return unitValue(word);
    }
    if (kind < 12U) {
        return unitValue(word) * 4.0F - 2.0F;
    }
    if (kind < 14U) {
        return std::ldexp(unitValue(word) - 0.5F, static_cast<int>(word % 18U)); // up to 2^16
    }
    auto const value = std::bit_cast<float>(word);
    return std::isnan(value) ? std::bit_cast<float>(word | quietBit) : value;
}

} // namespace

std::vector<float> standardValues()
{
    using Limits = std::numeric_limits<float>;
    constexpr float magnitudes[][6] = {
        {0.0F, 0x1p-149F, 0x1p-130F, Limits::min(), 0x1p-24F, 1e-7F},
        {0.001F, 0.05F, 0.18F, 0.5F, 0.9F, 0x1.fffffep-1F},
        {1.0F, 0x1.000002p+0F, 1.000001F, 1.5F, 2.2F, 10.0F},
        {255.0F, 65504.0F, 65520.0F, 1e20F, Limits::max(), Limits::infinity()}};
    std::vector<float> values;
    for (auto const& row : magnitudes) {
        for (float const magnitude : row) {
            values.insert(values.end(), {magnitude, -magnitude});
        }
    }
    for (std::uint32_t const payload : {0U, 1U, 0x12000U, 0x3FFFFFU}) {
        auto const notANumber = std::bit_cast<float>(0x7F800000U | quietBit | payload);
        values.insert(values.end(), {notANumber, -notANumber});
    }
    return values;
}

std::vector<Pixel> standardPixels()
{
    std::vector<Pixel> pixels;
    for (float const value : standardValues()) {
        pixels.push_back({value, 0.5F, 0.75F, 1.0F});
        pixels.push_back({0.25F, value, 0.75F, 0.3F});
        pixels.push_back({0.25F, 0.5F, value, 0.0F});
        pixels.push_back({0.25F, 0.5F, 0.75F, value});
        pixels.push_back({value, value, value, value});
    }
    return pixels;
}

std::vector<Pixel> randomPixels(std::size_t count, std::uint32_t seed)
{
    std::mt19937 words(seed);
    std::vector<Pixel> pixels;
    pixels.reserve(count);
    while (pixels.size() < count) {
        // Braces keep the draws in order.
        pixels.push_back(
            Pixel{randomValue(words), randomValue(words), randomValue(words), randomValue(words)});
    }
    return pixels;
}

} // namespace reference
