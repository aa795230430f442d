#pragma once

/// Comparisons of pixels and floats for tests. A failure prints both sides in hexadecimal
/// floating point and in bits.

#include "ReferenceTransfer.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>

namespace reference {

inline std::string describe(float value)
{
    std::ostringstream text;
    text << std::hexfloat << value << " [" << std::hex << std::showbase
         << std::bit_cast<std::uint32_t>(value) << ']';
    return text.str();
}

inline std::string describe(Pixel const& pixel)
{
    return '(' + describe(pixel.r) + ", " + describe(pixel.g) + ", " + describe(pixel.b) + ", " +
           describe(pixel.a) + ')';
}

/// Lets GoogleTest print pixels.
inline void PrintTo(Pixel const& pixel, std::ostream* stream)
{
    *stream << describe(pixel);
}

/// Steps from one float to the next between two values; both zeros are one place. 0 for two
/// NaNs whatever their payload, the largest count for a NaN and a number.
inline std::uint32_t ulpDistance(float left, float right)
{
    if (std::isnan(left) || std::isnan(right)) {
        bool const bothNan = std::isnan(left) && std::isnan(right);
        return bothNan ? 0U : std::numeric_limits<std::uint32_t>::max();
    }
    auto const place = [](float value) {
        const auto magnitude =
            static_cast<std::int64_t>(std::bit_cast<std::uint32_t>(value) & 0x7FFFFFFFU);
        return std::signbit(value) ? -magnitude : magnitude;
    };
    const std::int64_t distance = place(left) - place(right);
    return static_cast<std::uint32_t>(distance < 0 ? -distance : distance);
}

/// Equal in every bit, the sign of zero and the payload of a NaN included.
inline bool sameBits(float left, float right)
{
    return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}

/// Compares two floats within `maxUlps`; the tolerance is for powers alone. At 0 ULP the sign of
/// zero counts as well, and NaN matches any NaN.
inline ::testing::AssertionResult nearFloat(float expected, float actual, std::uint32_t maxUlps)
{
    bool const bothNan = std::isnan(expected) && std::isnan(actual);
    const std::uint32_t distance = ulpDistance(expected, actual);
    if (bothNan || sameBits(expected, actual) || (maxUlps > 0 && distance <= maxUlps)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "expected " << describe(expected) << ", got "
                                         << describe(actual) << ", " << distance << " ULP apart";
}

/// Compares colours within `maxUlps` (NaN matches any NaN) and alpha in every bit.
inline ::testing::AssertionResult nearPixel(Pixel const& expected, Pixel const& actual,
                                            std::uint32_t maxUlps)
{
    const std::array colours{nearFloat(expected.r, actual.r, maxUlps),
                             nearFloat(expected.g, actual.g, maxUlps),
                             nearFloat(expected.b, actual.b, maxUlps)};
    std::string differences;
    for (std::size_t channel = 0; channel < colours.size(); ++channel) {
        if (!colours[channel]) {
            differences += std::string("\n  ") + "rgb"[channel] + ": " + colours[channel].message();
        }
    }
    if (!sameBits(expected.a, actual.a)) {
        differences += "\n  a: expected " + describe(expected.a) + ", got " + describe(actual.a);
    }
    if (differences.empty()) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "pixels differ" << differences;
}

/// Compares bit for bit; a colour NaN matches any NaN, an alpha NaN only its own payload.
inline ::testing::AssertionResult samePixelBits(Pixel const& expected, Pixel const& actual)
{
    return nearPixel(expected, actual, 0);
}

} // namespace reference
