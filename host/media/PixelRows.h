#pragma once

#include "pluginAPI/IxPixelFormat.h"

#include <cstddef>
#include <span>

// Conversions of rows of samples for the cases in which a file and a tile differ. Any thread.

/// Converts samples of `depth` at `samples` to float: 8 bit as v / 255, half and float as they are
/// (NaN payloads too). `values` has one element per sample.
void samplesToFloat(std::byte const* samples, IxPixelFormat::Depth depth, std::span<float> values);

/// Multiplies the first three components of RGBA pixels by the fourth.
void premultiply(std::span<float> pixels);

/// Divides the first three components of RGBA pixels by the fourth; leaves pixels with alpha 0,
/// infinite or NaN alone.
void unpremultiply(std::span<float> pixels);

/// Clamps to 0 to 1 (NaN becomes 0), scales to 0 to `largest` (16 bits at most) and rounds to
/// nearest.
inline unsigned toInteger(float value, unsigned largest)
{
    if (!(value > 0.F)) {
        return 0; // NaN too
    }
    if (value >= 1.F) {
        return largest;
    }
    // Double holds the product of a float and a 16-bit number, and half of one more, without
    // rounding. NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<unsigned>(static_cast<double>(value) * largest + 0.5);
}
