#pragma once

// The steps that a value of red, green or blue goes through, written for reading, one value at a
// time:
//
//   Linear       alongLevels; signedPower, unless all gammas count as 1; adjust; limit, if "Clamp"
//   EXR display  expose; compress; power; display; adjust
//
// The row kernels take many values through the same steps at once. Float, each operation rounded;
// minimum and maximum are comparisons whose order decides what becomes of a NaN. Pure functions;
// any thread.

#include "remapColorPower.h"

namespace RemapColorSteps {

using RemapColorPower::power;
using RemapColorPower::signedPower;

/// Does not follow the gamma, on purpose: only a gamma of 2.2 brings the knee's end near 1.
inline constexpr float displayScale = 84.66F;
inline constexpr float displayMaximum = 255.0F;

inline float alongLevels(float value, float scale, float offset)
{
    return value * scale + offset;
}

/// A NaN passes; `high` for reversed bounds.
inline float limit(float value, float low, float high)
{
    float const raised = low > value ? low : value;
    return high < raised ? high : raised;
}

/// Scene to exposed light; a NaN counts as black.
inline float expose(float value, float defog, float exposureFactor)
{
    float const difference = value - defog;
    return (difference > 0.0F ? difference : 0.0F) * exposureFactor;
}

/// kneeLow + log((exposed - kneeLow) * kneeFactor + 1) / kneeFactor above kneeLow; the quotient in
/// double, rounded once.
inline float compress(float exposed, float kneeLow, float kneeFactor)
{
    if (!(exposed > kneeLow)) {
        return exposed;
    }
    return kneeLow + RemapColorPower::knee(static_cast<double>(exposed - kneeLow), kneeFactor);
}

/// The power of a compressed value, as a share of the display's white.
inline float display(float raised)
{
    return raised * displayScale / displayMaximum;
}

/// A straight line through a curve's end key.
struct EndLine {
    float slope = 0.0F;
    float keyX = 0.0F;
    float keyY = 0.0F;
};

/// One channel's curve: a table and the lines beyond its ends.
struct CurveTable {
    float const* entries = nullptr;
    float scale = 0.0F;        ///< table intervals per unit of value
    float offset = 0.0F;       ///< table position of value 0
    float lastPosition = 0.0F; ///< 0 or more; the entry after it may be read
    EndLine below;
    EndLine above;
};

/// Below the table keyY - (keyX - value) * slope, above it keyY + (value - keyX) * slope, with the
/// difference in float and the rest in double: tables and lines meet bit for bit. A NaN reads the
/// first entry.
inline float adjust(float value, CurveTable const& table)
{
    float const position = table.scale * value + table.offset;
    if (0.0F > position) {
        auto const [slope, keyX, keyY] = table.below;
        return static_cast<float>(static_cast<double>(keyY) -
                                  static_cast<double>(keyX - value) * static_cast<double>(slope));
    }
    if (position > table.lastPosition) {
        auto const [slope, keyX, keyY] = table.above;
        return static_cast<float>(static_cast<double>(keyY) +
                                  static_cast<double>(value - keyX) * static_cast<double>(slope));
    }
    float const valid = position > 0.0F ? position : 0.0F;
    auto const entry = static_cast<int>(valid);
    float const share = valid - static_cast<float>(entry);
    return (1.0F - share) * table.entries[entry] + share * table.entries[entry + 1];
}

} // namespace RemapColorSteps
