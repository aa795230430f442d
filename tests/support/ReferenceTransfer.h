#pragma once

/// Plain scalar re-computation of the whole colour chain, the yardstick of the tests.
///
/// Written for reading, one value at a time, and independent of the code under test: it includes
/// nothing but the standard library. Colour values are unbounded floats (1.0 is display white),
/// channel order is red, green, blue. Float steps are rounded one by one, so build it without
/// floating-point contraction. All functions are pure and may be called from any thread.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace reference {

struct Point {
    float x, y;
};

struct Pixel {
    float r, g, b, a;
};

/// What becomes of one value.
using Mapping = std::function<float(float)>;

/// Steps from float to float by which the results of logarithms and powers are moved: the math
/// library's last bit is no yardstick.
struct Nudge {
    int logarithm = 0;
    int power = 0;
};

/// One step up or down or none, in every combination.
std::array<Nudge, 9> const& allNudges();

/// What becomes of one value in a transfer.
using Transfer = std::function<float(float, Nudge)>;

// Curves ----------------------------------------------------------------------------------------

/// A sampled curve, ordered by non-decreasing x.
using Polyline = std::vector<Point>;

/// A Bezier function curve: three points per key (incoming handle, key, outgoing handle).
using ControlPoints = std::vector<Point>;

/// Entries of a table that the adjustment stage uses, the guard entry included.
inline constexpr std::size_t stageTableLength = 1025;

/// Parameter steps per Bezier segment that the adjustment stage uses.
inline constexpr int stageSubdivisions = 30;

/// The identity line: keys at 0, 0.5 and 1, handles on the diagonal.
ControlPoints defaultCurvePoints();

/// The curve as a polyline: each key once, as stored, and between two keys the cubic at
/// t = j / subdivisions. A handle that leaves the segment in x counts as lying on its key, one
/// that reaches past the other key is shortened to that key's x. No key gives no point.
Polyline evaluateCurve(ControlPoints const& curve, int subdivisions);

/// Evenly spaced samples; the last entry is a guard copy of the one before it.
struct Table {
    std::vector<float> entries;
    float minX = 0.0F; ///< input value of entry 0
    float maxX = 0.0F; ///< input value of the last entry but one
};

/// Samples `polyline` over [rangeMin, rangeMax], clipped to the polyline's own extent.
/// `length` is at least 3; the polyline has a point.
Table sampleTable(Polyline polyline, float rangeMin, float rangeMax,
                  std::size_t length = stageTableLength);

/// One adjustment curve: every value when the table has no width, and NaN, give entry 0. The curve
/// has a key; with a table of its own it only gives the two end lines.
Mapping makeLookup(ControlPoints const& curve);
Mapping makeLookup(ControlPoints const& curve, Table const& table);

// Transfers -------------------------------------------------------------------------------------

/// The five parameters of one channel. Linear: input minimum and maximum, output minimum and
/// maximum, gamma. EXR display: exposure, defog, knee high, knee low, gamma; all but defog and
/// gamma in stops.
using ChannelParams = std::array<float, 5>;

/// The drawn curve of the Linear mode: as many points as samples, or one more. Does not end for a
/// step that does not advance x.
Polyline computeLinearCurve(float rangeMin, float rangeMax, int samples,
                            ChannelParams const& params, Nudge nudge);

/// The factor f with log(x * f + 1) / f = y, found by doubling and 30 bisections.
float findKneeFactor(double x, float y);

/// The drawn curve of the EXR display mode; points as computeLinearCurve.
Polyline computeExrCurve(float rangeMin, float rangeMax, int samples, ChannelParams const& params,
                         Nudge nudge);

// Whole chain -----------------------------------------------------------------------------------

enum class Mode { Linear = 0, ExrDisplay = 1 };

inline constexpr ChannelParams defaultLinear{0.0F, 1.0F, 0.0F, 1.0F, 1.0F};
inline constexpr ChannelParams defaultExr{0.0F, 0.0F, 5.0F, 0.0F, static_cast<float>(2.200000022)};

/// The same parameters or the same curve for red, green and blue.
template <typename T>
std::array<T, 3> allChannels(const T& channel)
{
    return {channel, channel, channel};
}

/// Everything that decides a pixel's result, at the tool's defaults. Channels: red, green, blue.
struct ChainParams {
    Mode mode = Mode::Linear;
    bool clamp = false; ///< Linear mode only
    bool adjust = true; ///< whether the adjustment curves are applied
    std::array<ChannelParams, 3> linear = allChannels(defaultLinear);
    std::array<ChannelParams, 3> exr = allChannels(defaultExr);
    std::array<ControlPoints, 3> curves = allChannels(defaultCurvePoints());
};

/// The chain with its tables prepared, for many pixels. Immutable after construction.
class Chain {
public:
    /// Every channel's curve has a key, even with `adjust` off.
    explicit Chain(ChainParams const& params);

    /// Transfer, then curves, then clamp. Alpha is copied bit for bit.
    Pixel transform(Pixel const& in, Nudge nudge) const;

private:
    float transformChannel(std::size_t channel, float value, Nudge nudge) const;

    ChainParams params;
    std::array<Transfer, 3> transfers;
    std::array<Mapping, 3> lookups;
};

// Pixel depths ----------------------------------------------------------------------------------

/// 0 to 255 as 0 to 1.
float fromByte(std::uint8_t byte);

/// 0 to 1 as 0 to 255, clamped, rounded to nearest (even at a tie); NaN gives 0.
std::uint8_t toByte(float value);

/// The exact value of a half given by its bits. NaN keeps sign and payload and becomes quiet.
float fromHalf(std::uint16_t bits);

/// Bits of the nearest half (even at a tie); overflow gives infinity. NaN keeps sign and the
/// payload's leading bits and becomes quiet.
std::uint16_t toHalf(float value);

} // namespace reference
