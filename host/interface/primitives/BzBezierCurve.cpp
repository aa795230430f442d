// Evaluation of Bezier curves and of the function curves made from them.

#include "primitives/BzBezierCurve.h"

#include "primitives/BzFunctionCurve.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

GePoint2<double> widen(GePoint2<float> const& point)
{
    return {point.x, point.y};
}

/// The shares of a segment's four points at a parameter t.
struct BernsteinWeights {
    explicit BernsteinWeights(double t)
    {
        double const s = 1.0 - t;
        start = s * s * s;
        outgoing = 3.0 * s * s * t;
        incoming = 3.0 * s * t * t;
        end = t * t * t;
    }

    double sum(double p0, double p1, double p2, double p3) const
    {
        return start * p0 + outgoing * p1 + incoming * p2 + end * p3;
    }

    double start;
    double outgoing;
    double incoming;
    double end;
};

/// Those of the samples within a segment.
std::vector<BernsteinWeights> makeWeights(int subdivisions)
{
    std::vector<BernsteinWeights> weights;
    weights.reserve(static_cast<std::size_t>(std::max(subdivisions, 1)) - 1);
    for (int sample = 1; sample < subdivisions; ++sample) {
        weights.emplace_back(static_cast<double>(sample) / subdivisions);
    }
    return weights;
}

/// The handle moved along its own direction towards `key` until its x is `limit`.
GePoint2<double> shortenHandle(GePoint2<double> const& key, GePoint2<double> const& handle,
                               double limit)
{
    double const share = (limit - key.x) / (handle.x - key.x);
    return {limit, key.y + (handle.y - key.y) * share};
}

} // namespace

void BzBezierCurve::evaluateCurve(Vector<GePoint2<float>>& data, int subdivisions, float) const
{
    std::size_t const nbKeys = controlPoints.size() / 3;
    if (nbKeys == 0) {
        return;
    }
    std::vector<BernsteinWeights> const weights = makeWeights(subdivisions);
    data.reserve(data.size() + (nbKeys - 1) * (weights.size() + 1) + 1);
    data.push_back(controlPoints[1]);
    for (std::size_t key = 0; key + 1 < nbKeys; ++key) {
        Segment segment{widen(controlPoints[3 * key + 1]), widen(controlPoints[3 * key + 2]),
                        widen(controlPoints[3 * key + 3]), widen(controlPoints[3 * key + 4])};
        prepareSegment(segment);
        auto const& [start, outgoing, incoming, end] = segment;
        for (BernsteinWeights const& weight : weights) {
            data.push_back(
                {static_cast<float>(weight.sum(start.x, outgoing.x, incoming.x, end.x)),
                 static_cast<float>(weight.sum(start.y, outgoing.y, incoming.y, end.y))});
        }
        data.push_back(controlPoints[3 * key + 4]);
    }
}

void BzBezierCurve::prepareSegment(Segment&) const {}

BzFunctionCurve::BzFunctionCurve(InfiniteType infinite, int nbKeys) : infiniteType(infinite)
{
    getCtrlPoints().resize(3 * static_cast<std::size_t>(nbKeys));
}

GePoint2<float> BzFunctionCurve::getTangentHandle(int key) const
{
    auto const point = static_cast<std::size_t>(key == 0 ? 0 : 3 * key + 2);
    return getCtrlPoints()[point];
}

void BzFunctionCurve::prepareSegment(Segment& segment) const
{
    auto& [start, outgoing, incoming, end] = segment;
    if (outgoing.x < start.x) {
        outgoing = start;
    } else if (outgoing.x > end.x) {
        outgoing = shortenHandle(start, outgoing, end.x);
    }
    if (incoming.x > end.x) {
        incoming = end;
    } else if (incoming.x < start.x) {
        incoming = shortenHandle(end, incoming, start.x);
    }
}
