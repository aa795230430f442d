// Evaluation of Bezier curves and of the function curves made from them.

#include "primitives/BzBezierCurve.h"

#include "primitives/BzFunctionCurve.h"

#include <cstddef>

namespace {

GePoint2<double> widen(GePoint2<float> const& point)
{
    return {point.x, point.y};
}

double bernstein(double t, double p0, double p1, double p2, double p3)
{
    double const s = 1.0 - t;
    return s * s * s * p0 + 3.0 * s * s * t * p1 + 3.0 * s * t * t * p2 + t * t * t * p3;
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
    data.push_back(controlPoints[1]);
    for (std::size_t key = 0; key + 1 < nbKeys; ++key) {
        Segment segment{widen(controlPoints[3 * key + 1]), widen(controlPoints[3 * key + 2]),
                        widen(controlPoints[3 * key + 3]), widen(controlPoints[3 * key + 4])};
        prepareSegment(segment);
        for (int sample = 1; sample < subdivisions; ++sample) {
            double const t = static_cast<double>(sample) / subdivisions;
            data.push_back({static_cast<float>(bernstein(t, segment.start.x, segment.outgoing.x,
                                                         segment.incoming.x, segment.end.x)),
                            static_cast<float>(bernstein(t, segment.start.y, segment.outgoing.y,
                                                         segment.incoming.y, segment.end.y))});
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
