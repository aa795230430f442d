// Curves made from what a user typed or drew.

#include "runtime/curves/CurveShapes.h"

#include "runtime/values/HostValue.h"
#include "runtime/values/NumberText.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

using Key = GePoint2<double>;

GePoint2<float> toFloat(double x, double y)
{
    return {static_cast<float>(x), static_cast<float>(y)};
}

/// Slope of the straight line between two keys; 0 across a step.
double secant(Key const& a, Key const& b)
{
    return b.x > a.x ? (b.y - a.y) / (b.x - a.x) : 0.0;
}

/// Slopes at the keys: the mean of the neighbouring secants (the secant itself at an end or beside
/// a step), 0 at an extremum, and at most three times the flatter secant.
std::vector<double> limitedSlopes(std::vector<Key> const& keys)
{
    std::vector<double> slopes(keys.size(), 0.0);
    for (std::size_t key = 0; key < keys.size(); ++key) {
        bool const hasLeft = key > 0 && keys[key].x > keys[key - 1].x;
        bool const hasRight = key + 1 < keys.size() && keys[key + 1].x > keys[key].x;
        double const left = hasLeft ? secant(keys[key - 1], keys[key]) : 0.0;
        double const right = hasRight ? secant(keys[key], keys[key + 1]) : 0.0;
        if (!hasLeft || !hasRight) {
            slopes[key] = hasLeft ? left : right;
        } else if (left * right > 0.0) {
            double const mean = 0.5 * (left + right);
            double const limit = 3.0 * std::min(std::abs(left), std::abs(right));
            slopes[key] = std::clamp(mean, -limit, limit);
        }
    }
    return slopes;
}

bool isSame(GePoint2<float> const& a, GePoint2<float> const& b)
{
    return a == b;
}

/// The point on the other side of `key` from `towards`; a unit step along x where there is none.
GePoint2<float> mirrored(GePoint2<float> const& key, GePoint2<float> const& towards, float side)
{
    if (isSame(key, towards)) {
        return {key.x + side, key.y};
    }
    return {key.x + (key.x - towards.x), key.y + (key.y - towards.y)};
}

} // namespace

void checkCurvePoints(std::string const& name, CurvePoints const& points)
{
    auto const fail = [&](std::string const& why) {
        throw ValueError("the curve \"" + name + "\" " + why);
    };
    if (points.size() % 3 != 0) {
        fail("needs three points per key (handle, key, handle), not " +
             std::to_string(points.size()) + " in all");
    }
    for (GePoint2<float> const& point : points) {
        if (!std::isfinite(point.x) || !std::isfinite(point.y)) {
            fail("has a point that is not a finite number");
        }
    }
    for (std::size_t key = 4; key < points.size(); key += 3) {
        if (points[key].x < points[key - 3].x) {
            fail("runs back: key x " + formatNumber(points[key].x) + " comes after " +
                 formatNumber(points[key - 3].x) + "; give keys from left to right");
        }
    }
}

void checkDrawnCurve(std::string const& name, CurvePoints const& points)
{
    checkCurvePoints(name, points);
    std::string const wanted = "; give at least two keys, one right of the other";
    if (points.empty()) {
        throw ValueError("the curve \"" + name + "\" has no key" + wanted);
    }
    float const first = points[1].x;
    if (points[points.size() - 2].x == first) {
        throw ValueError("the curve \"" + name + "\" has keys at x " + formatNumber(first) +
                         " alone" + wanted);
    }
}

CurvePoints makeSmoothCurve(std::vector<GePoint2<double>> const& keys)
{
    std::vector<double> const slopes = limitedSlopes(keys);
    CurvePoints points;
    for (std::size_t key = 0; key < keys.size(); ++key) {
        auto const [x, y] = keys[key];
        double const leftThird = key > 0 ? (x - keys[key - 1].x) / 3.0 : 0.0;
        double const rightThird = key + 1 < keys.size() ? (keys[key + 1].x - x) / 3.0 : 0.0;
        points.push_back(toFloat(x - leftThird, y - slopes[key] * leftThird));
        points.push_back(toFloat(x, y));
        points.push_back(toFloat(x + rightThird, y + slopes[key] * rightThird));
    }
    completeEndHandles(points);
    return points;
}

void completeEndHandles(CurvePoints& points)
{
    if (points.size() < 3) {
        return;
    }
    // An inner handle that lies on its key leaves the tangent to the next point of the curve.
    auto const tangentEnd = [&](std::size_t key, bool goesRight) {
        std::size_t point = key;
        while (goesRight ? point + 1 < points.size() : point > 0) {
            point = goesRight ? point + 1 : point - 1;
            if (!isSame(points[point], points[key])) {
                break;
            }
        }
        return points[point];
    };
    std::size_t const first = 1;
    std::size_t const last = points.size() - 2;
    if (isSame(points[first - 1], points[first])) {
        points[first - 1] = mirrored(points[first], tangentEnd(first, true), -1.0F);
    }
    if (isSame(points[last + 1], points[last])) {
        points[last + 1] = mirrored(points[last], tangentEnd(last, false), 1.0F);
    }
}
