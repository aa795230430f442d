// Every step stands as its own expression, in the precision it is meant to have: float unless a
// cast says otherwise. Minimum and maximum are written as comparisons because NaN and the order
// of the arguments decide the result.

#include "ReferenceTransfer.h"

#include <math.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace reference {

namespace {

constexpr float smallestNormal = std::numeric_limits<float>::min(); // 1.17549435e-38

// Curves ----------------------------------------------------------------------------------------

constexpr float handleReach = 0.16666667F;
constexpr float degenerateHandleLength = 1.1920929e-07F; // 2^-23

struct WidePoint {
    double x, y;
};

WidePoint widen(Point const& point)
{
    return {static_cast<double>(point.x), static_cast<double>(point.y)};
}

/// A handle that stays between its key and the other key in x. `side` is 1 for an outgoing handle
/// and -1 for an incoming one.
WidePoint held(WidePoint const& key, WidePoint const& handle, double otherX, double side)
{
    if (side * handle.x < side * key.x) {
        return key;
    }
    if (side * handle.x > side * otherX) {
        double const part = (otherX - key.x) / (handle.x - key.x);
        return {otherX, key.y + (handle.y - key.y) * part};
    }
    return handle;
}

double bernstein(double p0, double p1, double p2, double p3, double t)
{
    double const s = 1.0 - t;
    return s * s * s * p0 + 3.0 * s * s * t * p1 + 3.0 * s * t * t * p2 + t * t * t * p3;
}

/// Appends the points strictly between two keys.
void appendSegment(Polyline& polyline, ControlPoints const& curve, std::size_t key,
                   int subdivisions)
{
    const WidePoint p0 = widen(curve[3 * key + 1]);
    const WidePoint p3 = widen(curve[3 * key + 4]);
    const WidePoint p1 = held(p0, widen(curve[3 * key + 2]), p3.x, 1.0);
    const WidePoint p2 = held(p3, widen(curve[3 * key + 3]), p0.x, -1.0);
    for (int j = 1; j < subdivisions; ++j) {
        double const t = static_cast<double>(j) / static_cast<double>(subdivisions);
        polyline.push_back({static_cast<float>(bernstein(p0.x, p1.x, p2.x, p3.x, t)),
                            static_cast<float>(bernstein(p0.y, p1.y, p2.y, p3.y, t))});
    }
}

/// The polyline's y at `x`; `segment` only moves forward from call to call.
float sampleAt(Polyline const& data, std::size_t& segment, float x, float tolerance)
{
    if (data[segment].x > x) {
        return data[segment].y;
    }
    while (segment < data.size() - 2 && x >= data[segment + 1].x) {
        ++segment;
    }
    auto const [x0, y0] = data[segment];
    auto const [x1, y1] = data[segment + 1];
    if (x >= x1) {
        return y1;
    }
    float const dx = x1 - x0;
    if (tolerance > dx) {
        return y0;
    }
    return ((x1 - x) * y0 + (x - x0) * y1) / dx;
}

/// Straight continuation of a curve beyond an end key; all zero when the handle is on the key.
struct EndLine {
    float slope = 0.0F;
    float keyX = 0.0F;
    float keyY = 0.0F;
};

/// The line through `from` and `to`, one of which is the key and the other one its handle: the
/// order decides the sign of a slope of zero.
EndLine endLine(Point const& key, Point const& from, Point const& to)
{
    float const dx = to.x - from.x;
    float const dy = to.y - from.y;
    bool const isDegenerate = ::sqrtf(dx * dx + dy * dy) <= degenerateHandleLength;
    return isDegenerate ? EndLine() : EndLine{dy / dx, key.x, key.y};
}

/// Keeps a value at least one smallest normal away from zero, on its side; NaN counts as zero.
float guardFromZero(float value)
{
    if (value < 0.0F) {
        return value < -smallestNormal ? value : -smallestNormal;
    }
    return value > smallestNormal ? value : smallestNormal;
}

// Transfers -------------------------------------------------------------------------------------

constexpr float smallestInputSpan = 1e-7F;
constexpr float gammaTolerance = 1e-6F;
constexpr float largestGammaOfOne = 1.00000095367F; // bits 0x3F800008

float moved(float value, int steps)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    bool const isMoved = steps != 0 && value != 0.0F && std::isfinite(value);
    return isMoved ? std::nextafter(value, steps > 0 ? infinity : -infinity) : value;
}

float power(float value, float exponent, Nudge nudge)
{
    return moved(::powf(value, exponent), nudge.power);
}

float signedPower(float value, float exponent, Nudge nudge)
{
    if (0.0F > value) {
        return 0.0F - power(0.0F - value, exponent, nudge);
    }
    return power(value, exponent, nudge);
}

/// The drawing of a curve counts gammas around 0 as absent, unlike the processing.
bool gammaCountsAsAbsent(float gamma)
{
    return gamma > 0.0F ? gamma <= gammaTolerance : gamma + gammaTolerance >= 0.0F;
}

/// log(x * f + 1) / f, in double, then rounded once.
float knee(double x, float f)
{
    double const wideF = static_cast<double>(f);
    return static_cast<float>(::log(x * wideF + 1.0) / wideF);
}

/// Samples `transfer` at positions that are accumulated in float.
Polyline sampleTransfer(float rangeMin, float rangeMax, int samples, Transfer const& transfer,
                        Nudge nudge)
{
    Polyline points;
    if (!(rangeMax >= rangeMin)) {
        return points;
    }
    float const step = (rangeMax - rangeMin) / static_cast<float>(samples);
    float x = rangeMin;
    do {
        points.push_back({x, transfer(x, nudge)});
        x = x + step;
    } while (rangeMax >= x);
    return points;
}

} // namespace

std::array<Nudge, 9> const& allNudges()
{
    static std::array<Nudge, 9> const nudges{
        {{0, 0}, {0, 1}, {0, -1}, {1, 0}, {1, 1}, {1, -1}, {-1, 0}, {-1, 1}, {-1, -1}}};
    return nudges;
}

ControlPoints defaultCurvePoints()
{
    ControlPoints points;
    for (float const x : {-handleReach, 0.0F, handleReach, 0.5F - handleReach, 0.5F,
                          0.5F + handleReach, 0.8333333F, 1.0F, 1.1666666F}) {
        points.push_back({x, x});
    }
    return points;
}

Polyline evaluateCurve(ControlPoints const& curve, int subdivisions)
{
    const std::size_t keys = curve.size() / 3;
    Polyline polyline;
    for (std::size_t key = 0; key < keys; ++key) {
        polyline.push_back(curve[3 * key + 1]);
        if (key + 1 < keys) {
            appendSegment(polyline, curve, key, subdivisions);
        }
    }
    return polyline;
}

Table sampleTable(Polyline polyline, float rangeMin, float rangeMax, std::size_t length)
{
    float const step = (rangeMax - rangeMin) / static_cast<float>(length - 1);
    float const tolerance = step / 1000.0F;
    if (polyline.size() == 1) {
        polyline.push_back(polyline.front());
    }

    auto const byX = [](Point const& left, Point const& right) { return left.x < right.x; };
    auto const [leftmost, rightmost] = std::minmax_element(polyline.begin(), polyline.end(), byX);
    Table table;
    table.minX = rangeMin > leftmost->x ? rangeMin : leftmost->x;
    table.maxX = rangeMax < rightmost->x ? rangeMax : rightmost->x;

    // The samples are divided by length - 2, the tolerance's step by length - 1: both as meant.
    std::size_t segment = 0;
    for (std::size_t entry = 0; entry + 1 < length; ++entry) {
        float const x = entry == 0
                            ? table.minX
                            : table.minX + ((table.maxX - table.minX) * static_cast<float>(entry)) /
                                               static_cast<float>(length - 2);
        table.entries.push_back(sampleAt(polyline, segment, x, tolerance));
    }
    table.entries.push_back(table.entries.back());
    return table;
}

Mapping makeLookup(ControlPoints const& curve)
{
    return makeLookup(curve, sampleTable(evaluateCurve(curve, stageSubdivisions), curve[1].x,
                                         curve[curve.size() - 2].x));
}

Mapping makeLookup(ControlPoints const& curve, Table const& table)
{
    std::size_t const lastKey = curve.size() - 2;
    EndLine const below = endLine(curve[1], curve[0], curve[1]);
    EndLine const above = endLine(curve[lastKey], curve[lastKey], curve[lastKey + 1]);
    auto const intervals = static_cast<float>(table.entries.size() - 2);
    float const scale = intervals / guardFromZero(table.maxX - table.minX); // per unit of input
    float const offset = (0.0F - table.minX) * scale; // table position of input 0
    return [=](float value) {
        float const position = scale * value + offset;
        if (table.minX == table.maxX || std::isnan(position)) {
            return table.entries[0];
        }
        if (0.0F > position) {
            double const reach = static_cast<double>(below.keyX - value);
            return static_cast<float>(static_cast<double>(below.keyY) -
                                      reach * static_cast<double>(below.slope));
        }
        if (position > intervals) {
            double const reach = static_cast<double>(value - above.keyX);
            return static_cast<float>(static_cast<double>(above.keyY) +
                                      reach * static_cast<double>(above.slope));
        }
        auto const entry = static_cast<std::size_t>(position);
        float const fraction = position - static_cast<float>(entry);
        return (1.0F - fraction) * table.entries[entry] + fraction * table.entries[entry + 1];
    };
}

/// The levels line and, if `withGamma`, the power mirrored at the origin.
Transfer makeLinear(ChannelParams const& params, bool withGamma)
{
    auto const [inputMin, inputMax, outputMin, outputMax, gamma] = params;
    float const inputDifference = inputMax - inputMin;
    float const inputSpan =
        inputDifference > smallestInputSpan ? inputDifference : smallestInputSpan;
    float const outputDifference = outputMax - outputMin;
    float const outputSpan = outputDifference > 0.0F ? outputDifference : 0.0F;
    float const scale = outputSpan / inputSpan;
    float const offset = outputMin - inputMin * scale;
    float const invGamma = 1.0F / guardFromZero(gamma);
    return [=](float value, Nudge nudge) {
        float const level = value * scale + offset;
        return withGamma ? signedPower(level, invGamma, nudge) : level;
    };
}

bool gammaCountsAsOne(float gamma)
{
    return gamma > 1.0F ? gamma <= largestGammaOfOne : gamma + gammaTolerance >= 1.0F;
}

/// NaN passes; a reversed range gives its high end.
float clampLinear(ChannelParams const& params, float value)
{
    float const raised = params[2] > value ? params[2] : value;
    return params[3] < raised ? params[3] : raised;
}

Polyline computeLinearCurve(float rangeMin, float rangeMax, int samples,
                            ChannelParams const& params, Nudge nudge)
{
    return sampleTransfer(rangeMin, rangeMax, samples,
                          makeLinear(params, !gammaCountsAsAbsent(params[4])), nudge);
}

float findKneeFactor(double x, float y)
{
    float f0 = 0.0F;
    float f1 = 1.0F;
    while (knee(x, f1) > y) {
        f0 = f1;
        f1 = f1 + f1;
    }
    for (int halving = 0; halving < 30; ++halving) {
        float const f2 = (f0 + f1) * 0.5F;
        (y > knee(x, f2) ? f1 : f0) = f2;
    }
    return (f0 + f1) * 0.5F;
}

/// Defog, exposure, knee, gamma and scale. NaN becomes the result of 0.
Transfer makeExr(ChannelParams const& params)
{
    auto const [exposure, defog, kneeHigh, kneeLowStops, gamma] = params;
    auto const factor = static_cast<float>(::pow(2.0, static_cast<double>(exposure) + 2.47393));
    float const kneeEnd = ::powf(2.0F, kneeHigh);
    float const kneeLow = ::powf(2.0F, kneeLowStops);
    double const kneeSpan = static_cast<double>(kneeEnd - kneeLow);
    auto const kneeTarget = static_cast<float>(::pow(2.0, 3.5) - static_cast<double>(kneeLow));
    float const kneeFactor = findKneeFactor(kneeSpan, kneeTarget);
    float const invGamma = 1.0F / guardFromZero(gamma);
    return [=, black = defog](float value, Nudge nudge) {
        float const difference = value - black;
        float const defogged = difference > 0.0F ? difference : 0.0F;
        float exposed = defogged * factor;
        if (exposed > kneeLow) {
            exposed = kneeLow + moved(knee(static_cast<double>(exposed - kneeLow), kneeFactor),
                                      nudge.logarithm);
        }
        return power(exposed, invGamma, nudge) * 84.66F / 255.0F;
    };
}

Polyline computeExrCurve(float rangeMin, float rangeMax, int samples, ChannelParams const& params,
                         Nudge nudge)
{
    return sampleTransfer(rangeMin, rangeMax, samples, makeExr(params), nudge);
}

// Whole chain -----------------------------------------------------------------------------------

Chain::Chain(ChainParams const& chainParams) : params(chainParams)
{
    bool const withGamma =
        std::any_of(params.linear.begin(), params.linear.end(),
                    [](ChannelParams const& channel) { return !gammaCountsAsOne(channel[4]); });
    for (std::size_t channel = 0; channel < 3; ++channel) {
        transfers.at(channel) = params.mode == Mode::Linear
                                    ? makeLinear(params.linear.at(channel), withGamma)
                                    : makeExr(params.exr.at(channel));
        lookups.at(channel) = makeLookup(params.curves.at(channel));
    }
}

Pixel Chain::transform(Pixel const& in, Nudge nudge) const
{
    return {transformChannel(0, in.r, nudge), transformChannel(1, in.g, nudge),
            transformChannel(2, in.b, nudge), in.a};
}

float Chain::transformChannel(std::size_t channel, float value, Nudge nudge) const
{
    float result = transfers[channel](value, nudge);
    if (params.adjust) {
        result = lookups[channel](result);
    }
    bool const clamps = params.mode == Mode::Linear && params.clamp;
    return clamps ? clampLinear(params.linear[channel], result) : result;
}

// Pixel depths ----------------------------------------------------------------------------------

float fromByte(std::uint8_t byte)
{
    return static_cast<float>(byte) / 255.0F;
}

std::uint8_t toByte(float value)
{
    float const positive = value > 0.0F ? value : 0.0F;
    return static_cast<std::uint8_t>(std::nearbyint(positive < 1.0F ? positive * 255.0F : 255.0F));
}

float fromHalf(std::uint16_t bits)
{
    const std::uint32_t sign = static_cast<std::uint32_t>(bits & 0x8000U) << 16U;
    int const exponent = (bits >> 10) & 0x1F;
    const std::uint32_t mantissa = bits & 0x3FFU;
    if (exponent == 0x1F) {
        const std::uint32_t quiet = mantissa != 0 ? 0x00400000U : 0U;
        return std::bit_cast<float>(sign | 0x7F800000U | quiet | (mantissa << 13U));
    }
    auto const steps = static_cast<float>(exponent == 0 ? mantissa : mantissa + 1024U);
    float const magnitude = std::ldexp(steps, std::max(exponent, 1) - 25);
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(magnitude) | sign);
}

std::uint16_t toHalf(float value)
{
    constexpr float overflow = 65520.0F; // half-way between the largest half and the next step
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t sign = (bits >> 16U) & 0x8000U;
    float const magnitude = std::fabs(value);
    if (std::isnan(value)) {
        return static_cast<std::uint16_t>(sign | 0x7E00U | ((bits >> 13U) & 0x3FFU));
    }
    if (magnitude >= overflow) {
        return static_cast<std::uint16_t>(sign | 0x7C00U);
    }
    // Denormal halves share the spacing of the smallest normal ones; a mantissa that rounds up
    // to a full 2048 steps carries into the exponent by the addition.
    int const exponent = magnitude == 0.0F ? -14 : std::max(std::ilogb(magnitude), -14);
    auto const steps =
        static_cast<std::uint32_t>(std::nearbyint(std::ldexp(magnitude, 10 - exponent)));
    auto const exponentBits = static_cast<std::uint32_t>(exponent + 14) << 10U;
    return static_cast<std::uint16_t>(sign | (exponentBits + steps));
}

} // namespace reference
