// Keys that a curve's table misses. What a key gets is asked of the tool.

#include "session/CurveNotes.h"

#include "runtime/graph/EvaluatedValue.h"
#include "runtime/graph/ValueNames.h"
#include "runtime/values/NumberText.h"
#include "session/Failures.h"
#include "session/NodePart.h"
#include "session/ToolKeys.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace {

using Pixel = CoRgbaColorTyped<float>;
using Point = GePoint2<float>;

constexpr std::array curveChannels = {&Pixel::red, &Pixel::green,
                                      &Pixel::blue}; // as the curves' order

std::vector<Point> takeKeys(CurvePoints const& points)
{
    constexpr std::size_t pointsPerKey = 3;
    std::vector<Point> keys;
    for (std::size_t point = 1; point < points.size(); point += pointsPerKey) {
        keys.push_back(points[point]);
    }
    return keys;
}

/// How far `got` is from the key; from the nearest of all keys at its x for a step.
float measureMiss(std::vector<Point> const& keys, Point const& key, float got)
{
    float lowest = key.y;
    float highest = key.y;
    for (Point const& other : keys) {
        if (other.x == key.x) {
            lowest = std::min(lowest, other.y);
            highest = std::max(highest, other.y);
        }
    }
    return std::max({lowest - got, got - highest, 0.0F});
}

/// Shares alone would count the rounding of keys at 0.
bool isNoticeable(float error, Point const& key)
{
    constexpr float mostError = 0.001F;
    constexpr float mostShare = 0.01F;
    constexpr float rounding = 1e-5F;
    return error > mostError || (error > rounding && error > mostShare * std::abs(key.y));
}

/// One for each channel.
using Misses = std::array<std::vector<CurveMiss>, curveChannels.size()>;

void collect(NodePart const& probe, ValueSlots const& curves, double time, Misses& misses)
{
    std::array<CurvePoints, curveChannels.size()> points;
    std::array<std::vector<float>, curveChannels.size()> places;
    std::size_t nbKeys = 0;
    for (std::size_t channel = 0; channel < curveChannels.size(); ++channel) {
        auto const state = curves[channel].value->getState();
        points[channel] = std::get<Animated<CurvePoints>>(*state).evaluate(time).getValue();
        places[channel] = listKeyPlaces(points[channel]);
        nbKeys = std::max(nbKeys, places[channel].size());
    }
    std::vector<Pixel> pixels(nbKeys);
    for (std::size_t channel = 0; channel < curveChannels.size(); ++channel) {
        for (std::size_t key = 0; key < places[channel].size(); ++key) {
            pixels[key].*curveChannels[channel] = places[channel][key];
        }
    }
    std::vector<Pixel> const answer = probe.send(pixels, time);
    for (std::size_t channel = 0; channel < curveChannels.size(); ++channel) {
        std::vector<float> got;
        for (Pixel const& pixel : answer) {
            got.push_back(pixel.*curveChannels[channel]);
        }
        auto const found = findCurveMisses(points[channel], got, time);
        misses[channel].insert(misses[channel].end(), found.begin(), found.end());
    }
}

bool isConstant(HostNode::ValueSlot const& curve)
{
    return std::get<Animated<CurvePoints>>(*curve.value->getState()).isConstant();
}

} // namespace

std::vector<float> listKeyPlaces(CurvePoints const& points)
{
    std::vector<float> places;
    for (Point const& key : takeKeys(points)) {
        places.push_back(key.x);
    }
    return places;
}

std::vector<CurveMiss> findCurveMisses(CurvePoints const& points, std::vector<float> const& got,
                                       double time)
{
    std::vector<Point> const keys = takeKeys(points);
    std::vector<CurveMiss> misses;
    for (std::size_t key = 0; key < keys.size(); ++key) {
        float const error = measureMiss(keys, keys[key], got[key]);
        if (isNoticeable(error, keys[key])) {
            misses.push_back({keys[key], got[key], time, error});
        }
    }
    return misses;
}

std::string describeMisses(std::string const& name, std::vector<CurveMiss> const& misses,
                           bool isAnimated)
{
    CurveMiss const& worst =
        *std::max_element(misses.begin(), misses.end(),
                          [](CurveMiss const& a, CurveMiss const& b) { return a.error < b.error; });
    std::size_t const nbMore = misses.size() - 1;
    return "the curve " + quote(name) + " misses its key " + formatNumber(worst.key.x) + "," +
           formatNumber(worst.key.y) +
           (isAnimated ? " at time " + formatNumber(worst.time) : std::string()) + ", which gets " +
           formatShort(worst.got) +
           (nbMore == 0 ? "" : " (and " + std::to_string(nbMore) + " more)") +
           ": the places of its table lie evenly between its ends; end the curve nearer, it goes "
           "on as a straight line by itself";
}

std::vector<std::string> findCurveNotes(HostNode const& node, std::vector<double> const& times)
{
    ValueSlots const curves = findValues(node, ToolKeys::adjustCurve);
    if (findChangedValues(node).empty()) {
        return {};
    }
    NodePart const probe = NodePart::takeCurves(node);
    Misses misses;
    bool const areConstant = std::all_of(curves.begin(), curves.end(), isConstant);
    for (double const time : times) {
        if (evaluateValue<bool>(node, ToolKeys::adjust, time)) {
            collect(probe, curves, time, misses);
            if (areConstant) {
                break;
            }
        }
    }
    ValueSlots missing;
    for (std::size_t channel = 0; channel < curveChannels.size(); ++channel) {
        if (!misses[channel].empty()) {
            missing.push_back(curves[channel]);
        }
    }
    std::vector<std::string> notes;
    for (auto const& [name, first] : summarise(node, missing)) {
        for (std::size_t channel = 0; channel < curveChannels.size(); ++channel) {
            if (curves[channel].value == first) {
                notes.push_back(describeMisses(name, misses[channel], !areConstant));
            }
        }
    }
    return notes;
}
