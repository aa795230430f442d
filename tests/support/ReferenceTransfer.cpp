// Every step stands as its own expression, in the precision it is meant to have: float unless a
// cast says otherwise. Minimum and maximum are written as comparisons because NaN and the order
// of the arguments decide the result.

#include "ReferenceTransfer.h"

#include <math.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>
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

/// The handle, moved towards its key along their line until its x is `endX`.
WidePoint shortened(WidePoint const& key, WidePoint const& handle, double endX)
{
    double const part = (endX - key.x) / (handle.x - key.x);
    return {endX, key.y + (handle.y - key.y) * part};
}

WidePoint heldOutgoing(WidePoint const& key, WidePoint const& handle, double nextKeyX)
{
    if (handle.x < key.x) {
        return key;
    }
    return handle.x > nextKeyX ? shortened(key, handle, nextKeyX) : handle;
}

WidePoint heldIncoming(WidePoint const& key, WidePoint const& handle, double previousKeyX)
{
    if (handle.x > key.x) {
        return key;
    }
    return handle.x < previousKeyX ? shortened(key, handle, previousKeyX) : handle;
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
    const WidePoint p1 = heldOutgoing(p0, widen(curve[3 * key + 2]), p3.x);
    const WidePoint p2 = heldIncoming(p3, widen(curve[3 * key + 3]), p0.x);
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
    if (!(x0 <= x) || !(x1 > x)) {
        throw std::logic_error("polyline is not ordered by x");
    }
    float const dx = x1 - x0;
    if (tolerance > dx) {
        return y0;
    }
    return ((x1 - x) * y0 + (x - x0) * y1) / dx;
}

bool isDegenerate(Point const& key, Point const& handle)
{
    float const dx = handle.x - key.x;
    float const dy = handle.y - key.y;
    float const length = ::sqrtf(dx * dx + dy * dy);
    return length > 0.0F ? degenerateHandleLength >= length
                         : length + degenerateHandleLength >= 0.0F;
}

EndLine lineBelow(ControlPoints const& curve)
{
    const Point key = curve[1];
    const Point handle = curve[0];
    if (isDegenerate(key, handle)) {
        return {};
    }
    return {(key.y - handle.y) / (key.x - handle.x), key.x, key.y};
}

EndLine lineAbove(ControlPoints const& curve)
{
    const std::size_t last = curve.size() / 3 - 1;
    const Point key = curve[3 * last + 1];
    const Point handle = curve[3 * last + 2];
    if (isDegenerate(key, handle)) {
        return {};
    }
    return {(handle.y - key.y) / (handle.x - key.x), key.x, key.y};
}

Table stageTable(ControlPoints const& curve)
{
    if (curve.size() < 3) {
        throw std::logic_error("curve has no key");
    }
    float const firstX = curve[1].x;
    float const lastX = curve[3 * (curve.size() / 3 - 1) + 1].x;
    return sampleTable(evaluateCurve(curve, stageSubdivisions), firstX, lastX);
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

float signedPower(float value, float exponent)
{
    if (0.0F > value) {
        return 0.0F - ::powf(0.0F - value, exponent);
    }
    return ::powf(value, exponent);
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
template <typename Transfer>
Polyline sampleTransfer(float rangeMin, float rangeMax, int samples, Transfer transfer)
{
    if (samples < 0) {
        throw std::length_error("negative number of samples");
    }
    Polyline points;
    if (!(rangeMax >= rangeMin)) {
        return points;
    }
    float const step = (rangeMax - rangeMin) / static_cast<float>(samples);
    float x = rangeMin;
    do {
        points.push_back({x, transfer(x)});
        x = x + step;
    } while (rangeMax >= x);
    return points;
}

} // namespace

ControlPoints defaultCurvePoints()
{
    ControlPoints points;
    for (float const x : {0.0F, 0.5F}) {
        points.push_back({x - handleReach, x - handleReach});
        points.push_back({x, x});
        points.push_back({x + handleReach, x + handleReach});
    }
    points.push_back({0.8333333F, 0.8333333F}); // bits 0x3F555555
    points.push_back({1.0F, 1.0F});
    points.push_back({1.1666666F, 1.1666666F}); // bits 0x3F955555
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
    if (polyline.empty()) {
        throw std::logic_error("polyline is empty");
    }
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

CurveLookup::CurveLookup(ControlPoints const& curve) : CurveLookup(curve, stageTable(curve)) {}

CurveLookup::CurveLookup(ControlPoints const& curve, Table table) : samples(std::move(table))
{
    if (curve.size() < 3) {
        throw std::logic_error("curve has no key");
    }
    below = lineBelow(curve);
    above = lineAbove(curve);
    float const range = guardFromZero(samples.maxX - samples.minX);
    auto const intervals = static_cast<std::uint64_t>(samples.entries.size() - 2);
    scale = static_cast<float>(intervals) / range;
    offset = (0.0F - samples.minX) * scale;
}

float CurveLookup::map(float value) const
{
    if (samples.minX == samples.maxX) {
        return samples.entries[0];
    }
    float const position = scale * value + offset;
    if (std::isnan(position)) {
        return samples.entries[0];
    }
    if (0.0F > position) {
        double const reach = static_cast<double>(below.keyX - value);
        return static_cast<float>(static_cast<double>(below.keyY) -
                                  reach * static_cast<double>(below.slope));
    }
    if (position > static_cast<float>(samples.entries.size() - 2)) {
        double const reach = static_cast<double>(value - above.keyX);
        return static_cast<float>(static_cast<double>(above.keyY) +
                                  reach * static_cast<double>(above.slope));
    }
    auto const entry = static_cast<std::size_t>(position);
    float const fraction = position - static_cast<float>(entry);
    return (1.0F - fraction) * samples.entries[entry] + fraction * samples.entries[entry + 1];
}

LinearValues linearValues(ChannelParams const& params)
{
    auto const [inputMin, inputMax, outputMin, outputMax, gamma] = params;
    float const inputDifference = inputMax - inputMin;
    float const inputSpan =
        inputDifference > smallestInputSpan ? inputDifference : smallestInputSpan;
    float const outputDifference = outputMax - outputMin;
    float const outputSpan = outputDifference > 0.0F ? outputDifference : 0.0F;

    LinearValues values{};
    values.scale = outputSpan / inputSpan;
    values.offset = outputMin - inputMin * values.scale;
    values.invGamma = 1.0F / guardFromZero(gamma);
    values.clampLow = outputMin;
    values.clampHigh = outputMax;
    return values;
}

bool gammaCountsAsOne(float gamma)
{
    return gamma > 1.0F ? gamma <= largestGammaOfOne : gamma + gammaTolerance >= 1.0F;
}

float transferLinear(LinearValues const& values, bool withGamma, float value)
{
    float const level = value * values.scale + values.offset;
    return withGamma ? signedPower(level, values.invGamma) : level;
}

float clampLinear(LinearValues const& values, float value)
{
    float const raised = values.clampLow > value ? values.clampLow : value;
    return values.clampHigh < raised ? values.clampHigh : raised;
}

Polyline computeLinearCurve(float rangeMin, float rangeMax, int samples,
                            ChannelParams const& params)
{
    const LinearValues values = linearValues(params);
    bool const withGamma = !gammaCountsAsAbsent(params[4]);
    return sampleTransfer(rangeMin, rangeMax, samples,
                          [&](float x) { return transferLinear(values, withGamma, x); });
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
        if (y > knee(x, f2)) {
            f1 = f2;
        } else {
            f0 = f2;
        }
    }
    return (f0 + f1) * 0.5F;
}

ExrValues exrValues(ChannelParams const& params)
{
    auto const [exposure, defog, kneeHigh, kneeLow, gamma] = params;
    float const kneeEnd = ::powf(2.0F, kneeHigh);

    ExrValues values{};
    values.defog = defog;
    values.exposureFactor = static_cast<float>(::pow(2.0, static_cast<double>(exposure) + 2.47393));
    values.kneeLow = ::powf(2.0F, kneeLow);
    double const kneeSpan = static_cast<double>(kneeEnd - values.kneeLow);
    auto const kneeTarget =
        static_cast<float>(::pow(2.0, 3.5) - static_cast<double>(values.kneeLow));
    values.kneeFactor = findKneeFactor(kneeSpan, kneeTarget);
    values.invGamma = 1.0F / guardFromZero(gamma);
    return values;
}

float transferExr(ExrValues const& values, float value)
{
    float const difference = value - values.defog;
    float const defogged = difference > 0.0F ? difference : 0.0F;
    float exposed = defogged * values.exposureFactor;
    if (exposed > values.kneeLow) {
        double const factor = static_cast<double>(values.kneeFactor);
        double const excess = static_cast<double>(exposed - values.kneeLow);
        auto const compressed = static_cast<float>(::log(excess * factor + 1.0) / factor);
        exposed = values.kneeLow + compressed;
    }
    float const power = ::powf(exposed, values.invGamma);
    return power * 84.66F / 255.0F;
}

Polyline computeExrCurve(float rangeMin, float rangeMax, int samples, ChannelParams const& params)
{
    const ExrValues values = exrValues(params);
    return sampleTransfer(rangeMin, rangeMax, samples,
                          [&](float x) { return transferExr(values, x); });
}

// Whole chain -----------------------------------------------------------------------------------

Chain::Chain(ChainParams const& chainParams)
    : params(chainParams), linear{linearValues(params.linear[0]), linearValues(params.linear[1]),
                                  linearValues(params.linear[2])},
      exr{exrValues(params.exr[0]), exrValues(params.exr[1]), exrValues(params.exr[2])},
      lookups{CurveLookup(params.curves[0]), CurveLookup(params.curves[1]),
              CurveLookup(params.curves[2])},
      gammaNeeded(!gammaCountsAsOne(params.linear[0][4]) ||
                  !gammaCountsAsOne(params.linear[1][4]) || !gammaCountsAsOne(params.linear[2][4]))
{
}

Pixel Chain::transform(Pixel const& in) const
{
    return {transformChannel(0, in.r), transformChannel(1, in.g), transformChannel(2, in.b), in.a};
}

float Chain::transformChannel(std::size_t channel, float value) const
{
    bool const isLinear = params.mode == Mode::Linear;
    float result = isLinear ? transferLinear(linear[channel], gammaNeeded, value)
                            : transferExr(exr[channel], value);
    if (params.adjust) {
        result = lookups[channel].map(result);
    }
    return isLinear && params.clamp ? clampLinear(linear[channel], result) : result;
}

Pixel transformPixel(ChainParams const& params, Pixel const& in)
{
    return Chain(params).transform(in);
}

// Pixel depths ----------------------------------------------------------------------------------

float fromByte(std::uint8_t byte)
{
    return static_cast<float>(byte) / 255.0F;
}

std::uint8_t toByte(float value)
{
    if (std::isnan(value) || value <= 0.0F) {
        return 0;
    }
    if (value >= 1.0F) {
        return 255;
    }
    return static_cast<std::uint8_t>(std::nearbyint(value * 255.0F));
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
