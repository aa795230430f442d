#pragma once

/// Comparisons of pixels and floats for tests. A failure prints both sides in hexadecimal
/// floating point and in bits.

#include "ReferenceTransfer.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
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

/// Equal in every bit, the sign of zero and the payload of a NaN included.
inline bool sameBits(float left, float right)
{
    return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}

/// Equal in every bit, but any NaN matches any other: its payload is the processor's.
inline ::testing::AssertionResult sameValue(float expected, float actual)
{
    if (sameBits(expected, actual) || (std::isnan(expected) && std::isnan(actual))) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "expected " << describe(expected) << ", got " << describe(actual);
}

/// Compares colours as sameValue and alpha in every bit.
inline ::testing::AssertionResult samePixelBits(Pixel const& expected, Pixel const& actual)
{
    if (sameValue(expected.r, actual.r) && sameValue(expected.g, actual.g) &&
        sameValue(expected.b, actual.b) && sameBits(expected.a, actual.a)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "expected " << describe(expected) << ", got " << describe(actual);
}

/// Compares colours with what the chain gives for `in`, each logarithm and each power the
/// platform's or a float next to it, and alpha in every bit.
inline ::testing::AssertionResult isChainResult(Chain const& chain, Pixel const& in,
                                                Pixel const& actual)
{
    std::array<bool, 3> found{};
    for (Nudge const nudge : allNudges()) {
        Pixel const expected = chain.transform(in, nudge);
        found[0] = found[0] || sameValue(expected.r, actual.r);
        found[1] = found[1] || sameValue(expected.g, actual.g);
        found[2] = found[2] || sameValue(expected.b, actual.b);
        if (found[0] && found[1] && found[2] && sameBits(in.a, actual.a)) {
            return ::testing::AssertionSuccess();
        }
    }
    return ::testing::AssertionFailure()
           << "of " << describe(in) << " expected " << describe(chain.transform(in, {})) << ", got "
           << describe(actual);
}

} // namespace reference
