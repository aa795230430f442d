// Curves: from text, or from samples of the host's own curves.

#include "CurveInput.h"

#include "HostAccess.h"
#include "runtime/curves/CurveSetText.h"
#include "runtime/values/TextParts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

constexpr int nbChannels = 3;
constexpr int nbSamples = 1024; // of the tool's table, from 0 to 1
constexpr double identityTolerance = 1e-6;
constexpr double noAnimation = 0.0;

using Samples = std::vector<GePoint2<double>>;

/// "Red" of "Adjust Curve.Red".
std::vector<std::string> listChannels(ParamTable const& table)
{
    std::vector<std::string> names;
    for (std::string const& input : table.getCurveInputs()) {
        names.push_back(input.substr(input.rfind('.') + 1));
    }
    return names;
}

/// Nothing for a curve that the host does not give, and for the identity.
std::optional<Samples> sampleWidget(OfxParam* widget, int curve, OfxTime time)
{
    auto const* const suite = HostAccess::get().curves;
    Samples samples;
    samples.reserve(nbSamples);
    bool isIdentity = true;
    for (int sample = 0; sample < nbSamples; ++sample) {
        float const x = static_cast<float>(sample) / static_cast<float>(nbSamples - 1);
        double y = 0.0;
        if (suite->parametricParamGetValue(widget, curve, time, x, &y) != OfxStat::ok ||
            !std::isfinite(static_cast<float>(y))) {
            return std::nullopt;
        }
        isIdentity = isIdentity && std::abs(y - x) <= identityTolerance;
        samples.push_back({x, y});
    }
    return isIdentity ? std::nullopt : std::optional(std::move(samples));
}

/// A run of samples as one cubic whose x goes evenly.
struct Segment {
    std::size_t first;
    std::size_t last;
    double firstSlope;
    double lastSlope;
};

/// The slope at a sample, from it and the two beyond it in that direction: what lies on the other
/// side of a bend does not count.
double findSlope(Samples const& samples, std::size_t at, int direction)
{
    auto const near = at + static_cast<std::size_t>(direction);
    auto const far = near + static_cast<std::size_t>(direction);
    return (4.0 * samples[near].y - 3.0 * samples[at].y - samples[far].y) /
           (samples[far].x - samples[at].x);
}

bool meetsSamples(Samples const& samples, Segment const& segment)
{
    constexpr double tolerance = 3e-7;
    auto const& [x0, y0] = samples[segment.first];
    auto const& [x1, y1] = samples[segment.last];
    double const width = x1 - x0;
    for (std::size_t sample = segment.first + 1; sample < segment.last; ++sample) {
        double const t = (samples[sample].x - x0) / width;
        double const s = 1.0 - t;
        double const y = y0 * s * s * (1.0 + 2.0 * t) + y1 * t * t * (1.0 + 2.0 * s) +
                         width * s * t * (segment.firstSlope * s - segment.lastSlope * t);
        if (!(std::abs(y - samples[sample].y) <= tolerance * std::max(1.0, std::abs(y)))) {
            return false;
        }
    }
    return true;
}

/// Cubics through the samples from `first` to `last`: one if that meets all of them, else those of
/// both halves; straight between two neighbours.
void fit(Samples const& samples, std::size_t first, std::size_t last,
         std::vector<Segment>& segments)
{
    if (last - first == 1) {
        double const slope =
            (samples[last].y - samples[first].y) / (samples[last].x - samples[first].x);
        segments.push_back({first, last, slope, slope});
        return;
    }
    Segment const whole{first, last, findSlope(samples, first, 1), findSlope(samples, last, -1)};
    if (meetsSamples(samples, whole)) {
        segments.push_back(whole);
        return;
    }
    std::size_t const middle = first + (last - first) / 2;
    fit(samples, first, middle, segments);
    fit(samples, middle, last, segments);
}

/// A curve through all samples that goes on straight beyond the first and the last two. Few keys:
/// the tool's tables are made anew for every tile.
CurvePoints joinSamples(Samples const& samples)
{
    constexpr std::size_t longestRun = 32; // the tool divides a segment into 30
    std::vector<Segment> segments;
    for (std::size_t first = 0; first + 1 < samples.size(); first += longestRun) {
        fit(samples, first, std::min(first + longestRun, samples.size() - 1), segments);
    }
    CurvePoints points;
    auto const add = [&](GePoint2<double> const& key, double distance, double slope) {
        points.push_back(
            {static_cast<float>(key.x + distance), static_cast<float>(key.y + distance * slope)});
    };
    auto const secant = [&](std::size_t key) {
        return (samples[key + 1].y - samples[key].y) / (samples[key + 1].x - samples[key].x);
    };
    constexpr double endHandle = 0.25;
    add(samples.front(), -endHandle, secant(0));
    add(samples.front(), 0.0, 0.0);
    for (Segment const& segment : segments) {
        double const third = (samples[segment.last].x - samples[segment.first].x) / 3.0;
        add(samples[segment.first], third, segment.firstSlope);
        add(samples[segment.last], -third, segment.lastSlope);
        add(samples[segment.last], 0.0, 0.0);
    }
    add(samples.back(), endHandle, secant(samples.size() - 2));
    return points;
}

} // namespace

NodeValues readCurves(ParamTable const& table, ParamHandle const& widget, std::string const& text,
                      OfxTime time)
{
    std::vector<std::string> const& inputs = table.getCurveInputs();
    NodeValues values;
    for (std::string const& input : inputs) {
        values.emplace(input, table.getDefaultCurve());
    }
    if (!trim(text).empty()) {
        for (auto const& [channel, curve] : parseCurveSet(text, listChannels(table))) {
            std::string const prefix = inputs.front().substr(0, inputs.front().rfind('.') + 1);
            values.insert_or_assign(prefix + channel, curve);
        }
        return values;
    }
    for (int curve = 0; curve < nbChannels && widget.get() != nullptr; ++curve) {
        if (auto const samples = sampleWidget(widget.get(), curve, time)) {
            values.insert_or_assign(inputs[static_cast<std::size_t>(curve)],
                                    Animated<CurvePoints>(joinSamples(*samples)));
        }
    }
    return values;
}

void checkCurves(ParamTable const& table, std::string const& text)
{
    static_cast<void>(parseCurveSet(text, listChannels(table)));
}

void resetWidget(ParamHandle const& widget)
{
    auto const* const suite = HostAccess::get().curves;
    if (suite == nullptr || widget.get() == nullptr) {
        return;
    }
    constexpr bool addsKey = false;
    for (int curve = 0; curve < nbChannels; ++curve) {
        suite->parametricParamDeleteAllControlPoints(widget.get(), curve);
        for (double const end : {0.0, 1.0}) {
            suite->parametricParamAddControlPoint(widget.get(), curve, noAnimation, end, end,
                                                  addsKey);
        }
    }
}
