// Curves as they are typed.

#include "runtime/curves/CurveText.h"

#include "runtime/curves/CurveShapes.h"
#include "runtime/values/KeyframeText.h"
#include "runtime/values/NumberText.h"
#include "runtime/values/TextParts.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace {

using Point = GePoint2<double>;

constexpr std::size_t pointsPerKey = 3; // incoming handle, key, outgoing handle
constexpr std::size_t fewestKeys = 2;

/// "key 2"
std::string nameKey(std::size_t key)
{
    return "key " + std::to_string(key + 1);
}

Point parsePoint(std::string const& where, std::string_view text)
{
    std::vector<std::string_view> const parts = split(text, ',');
    if (parts.size() == 2) {
        std::optional<double> const x = parseNumber(parts[0]);
        std::optional<double> const y = parseNumber(parts[1]);
        if (x.has_value() && y.has_value()) {
            return {*x, *y};
        }
    }
    throw ValueError(where + ": " + "\"" + std::string(text) + "\"" +
                     " is no point; write x,y as in 0.5,0.7");
}

/// Keys one after another, smooth.
std::vector<Point> parseKeys(std::string const& where, std::string_view text)
{
    std::vector<Point> keys;
    for (std::string_view const word : splitWords(text)) {
        keys.push_back(parsePoint(where + ": " + nameKey(keys.size()), word));
    }
    return keys;
}

/// Three points per key, keys between semicolons; one at the very end does no harm.
std::vector<Point> parseKeysWithHandles(std::string const& where, std::string_view text)
{
    std::vector<std::string_view> groups = split(text, ';');
    if (groups.back().empty()) {
        groups.pop_back();
    }
    std::vector<Point> points;
    for (std::size_t key = 0; key < groups.size(); ++key) {
        std::string const place = where + ": " + nameKey(key);
        std::vector<std::string_view> const words = splitWords(groups[key]);
        if (words.size() != pointsPerKey) {
            throw ValueError(place + " has " + std::to_string(words.size()) +
                             " points; write three between semicolons: handle, key, handle");
        }
        for (std::string_view const word : words) {
            points.push_back(parsePoint(place, word));
        }
    }
    return points;
}

void checkOrder(std::string const& where, std::vector<Point> const& keys)
{
    if (keys.size() < fewestKeys) {
        throw ValueError(where + ": a curve needs at least two keys, not " +
                         std::to_string(keys.size()) + "; write them as in \"0,0 0.5,0.6 1,1\"");
    }
    for (std::size_t key = 1; key < keys.size(); ++key) {
        if (keys[key].x < keys[key - 1].x) {
            throw ValueError(where + ": " + nameKey(key) + " at x " + formatNumber(keys[key].x) +
                             " runs back behind " + nameKey(key - 1) + " at x " +
                             formatNumber(keys[key - 1].x) + "; give keys from left to right");
        }
    }
}

std::vector<Point> takeKeys(std::vector<Point> const& points)
{
    std::vector<Point> keys;
    for (std::size_t point = 1; point < points.size(); point += pointsPerKey) {
        keys.push_back(points[point]);
    }
    return keys;
}

CurvePoints toCurvePoints(std::vector<Point> const& points)
{
    CurvePoints curve;
    for (Point const& point : points) {
        curve.push_back({static_cast<float>(point.x), static_cast<float>(point.y)});
    }
    completeEndHandles(curve);
    return curve;
}

std::size_t countKeys(CurvePoints const& points)
{
    return points.size() / pointsPerKey;
}

/// Between two keyframes each point goes its own way.
void checkShapes(std::string const& where, std::vector<Keyframe<CurvePoints>> const& keyframes)
{
    auto const& first = keyframes.front();
    for (auto const& [time, points] : keyframes) {
        if (points.size() != first.value.size()) {
            throw ValueError(where + ": the curve at time " + formatNumber(time) + " has " +
                             std::to_string(countKeys(points)) + " keys, the one at " +
                             formatNumber(first.time) + " has " +
                             std::to_string(countKeys(first.value)) +
                             "; give all keyframes the same number");
        }
    }
}

std::string formatPoint(GePoint2<float> const& point)
{
    return formatNumber(point.x) + "," + formatNumber(point.y);
}

} // namespace

CurvePoints parseCurve(std::string const& where, std::string_view text)
{
    if (text.find(';') == std::string_view::npos) {
        std::vector<Point> const keys = parseKeys(where, text);
        checkOrder(where, keys);
        return makeSmoothCurve(keys);
    }
    std::vector<Point> const points = parseKeysWithHandles(where, text);
    checkOrder(where, takeKeys(points));
    return toCurvePoints(points);
}

Animated<CurvePoints> parseAnimatedCurve(std::string const& where, std::string_view text)
{
    if (text.find_first_of("@|") == std::string_view::npos) {
        return Animated<CurvePoints>(parseCurve(where, text));
    }
    KeyframeForm const form{'|', "KEYS @TIME as in \"0,0 1,1 @1 | 0,0 1,2 @24\""};
    auto const parsePart = [&](std::string_view part, double time) {
        if (part.find('@') != std::string_view::npos) {
            throw ValueError(where + ": put a | between keyframes; write " + form.example);
        }
        return parseCurve(where + " at time " + formatNumber(time), part);
    };
    auto keyframes = parseKeyframes<CurvePoints>(where, text, form, parsePart);
    checkShapes(where, keyframes);
    return Animated<CurvePoints>(std::move(keyframes));
}

std::string formatCurveKeys(CurvePoints const& points)
{
    std::string text;
    for (std::size_t point = 1; point < points.size(); point += pointsPerKey) {
        text += (text.empty() ? "" : " ") + formatPoint(points[point]);
    }
    return text;
}

std::string formatCurve(CurvePoints const& points)
{
    std::string text;
    for (std::size_t point = 0; point < points.size(); ++point) {
        bool const startsKey = point > 0 && point % pointsPerKey == 0;
        text += (startsKey ? "; " : point > 0 ? " " : "") + formatPoint(points[point]);
    }
    return text;
}

std::string formatAnimatedCurve(Animated<CurvePoints> const& curve)
{
    if (!curve.isAnimated()) {
        return formatCurve(curve.getKeys().front().value);
    }
    std::string text;
    for (Keyframe<CurvePoints> const& key : curve.getKeys()) {
        text +=
            (text.empty() ? "" : " | ") + formatCurve(key.value) + " @" + formatNumber(key.time);
    }
    return text;
}
