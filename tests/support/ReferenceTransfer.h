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
#include <vector>

namespace reference {

struct Point {
    float x, y;
};

struct Pixel {
    float r, g, b, a;
};

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
/// `length` is at least 3. Throws std::logic_error for an empty or unordered polyline.
Table sampleTable(Polyline polyline, float rangeMin, float rangeMax,
                  std::size_t length = stageTableLength);

/// Straight continuation of a curve beyond an end key; all zero when the handle is on the key.
struct EndLine {
    float slope = 0.0F;
    float keyX = 0.0F;
    float keyY = 0.0F;
};

/// One adjustment curve as a value-to-value mapping. Immutable after construction.
class CurveLookup {
public:
    /// Samples the curve as the adjustment stage does. Throws std::logic_error without a key.
    explicit CurveLookup(ControlPoints const& curve);

    /// Uses the given table; `curve` (at least one key) only gives the two end lines.
    CurveLookup(ControlPoints const& curve, Table table);

    /// Maps one value. NaN, and every value when the table has no width, give entry 0.
    float map(float value) const;

    Table const& table() const { return samples; }

private:
    Table samples;
    float scale = 0.0F;  // table intervals per unit of input
    float offset = 0.0F; // table position of input 0
    EndLine below;
    EndLine above;
};

// Transfers -------------------------------------------------------------------------------------

/// The five parameters of one channel, in the mode's parameter order.
using ChannelParams = std::array<float, 5>;

/// Working values of one channel of the Linear mode.
struct LinearValues {
    float scale, offset, invGamma;
    float clampLow, clampHigh;
};

/// Parameters: input minimum, input maximum, output minimum, output maximum, gamma.
LinearValues linearValues(ChannelParams const& params);

/// True if the Linear mode leaves out the power step for this gamma. False for NaN.
bool gammaCountsAsOne(float gamma);

/// The levels line and, if `withGamma`, the power mirrored at the origin. Never clamps.
float transferLinear(LinearValues const& values, bool withGamma, float value);

/// The clamp that follows the curves. NaN passes; a reversed range gives its high end.
float clampLinear(LinearValues const& values, float value);

/// The drawn curve of the Linear mode: as many points as samples, or one more. Does not end for a
/// step that does not advance x. Throws std::length_error for a negative count.
Polyline computeLinearCurve(float rangeMin, float rangeMax, int samples,
                            ChannelParams const& params);

/// Working values of one channel of the EXR display mode.
struct ExrValues {
    float defog, exposureFactor, kneeLow, kneeFactor, invGamma;
};

/// Parameters: exposure, defog, knee high, knee low, gamma; all but defog and gamma in stops.
ExrValues exrValues(ChannelParams const& params);

/// The factor f with log(x * f + 1) / f = y, found by doubling and 30 bisections.
float findKneeFactor(double x, float y);

/// Defog, exposure, knee, gamma and scale. NaN becomes the result of 0. Never clamps.
float transferExr(ExrValues const& values, float value);

/// The drawn curve of the EXR display mode; points and failures as computeLinearCurve.
Polyline computeExrCurve(float rangeMin, float rangeMax, int samples, ChannelParams const& params);

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
    /// Throws std::logic_error if a channel's curve has no key, even with `adjust` off.
    explicit Chain(ChainParams const& params);

    /// Transfer, then curves, then clamp. Alpha is copied bit for bit.
    Pixel transform(Pixel const& in) const;

private:
    float transformChannel(std::size_t channel, float value) const;

    ChainParams params;
    std::array<LinearValues, 3> linear;
    std::array<ExrValues, 3> exr;
    std::vector<CurveLookup> lookups;
    bool gammaNeeded;
};

/// One pixel through a chain made for it alone.
Pixel transformPixel(ChainParams const& params, Pixel const& in);

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
