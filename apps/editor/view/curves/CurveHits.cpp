#include "editor/view/curves/CurveHits.h"

#include <QLineF>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

using CurveEditing::Side;

constexpr double keyReach = 9.0; // pixels
constexpr double curveReach = 6.0;
constexpr double markReach = 8.0;
constexpr double edge = 7.0; // kept free for handles from beyond

double measure(QPointF const& a, QPointF const& b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

/// From a place to the line between two.
double measure(QPointF const& place, QPointF const& from, QPointF const& to)
{
    QPointF const way = to - from;
    double const square = QPointF::dotProduct(way, way);
    double const share =
        square > 0.0 ? std::clamp(QPointF::dotProduct(place - from, way) / square, 0.0, 1.0) : 0.0;
    return measure(place, from + share * way);
}

/// As far along the line from `from` as it stays inside.
QPointF keepInside(QRectF const& inside, QPointF const& from, QPointF const& to)
{
    if (!inside.contains(from) || inside.contains(to)) {
        return to;
    }
    QLineF const line(from, to);
    std::array<QLineF, 4> const edges = {QLineF(inside.topLeft(), inside.topRight()),
                                         QLineF(inside.topRight(), inside.bottomRight()),
                                         QLineF(inside.bottomRight(), inside.bottomLeft()),
                                         QLineF(inside.bottomLeft(), inside.topLeft())};
    for (QLineF const& side : edges) {
        QPointF crossing;
        if (line.intersects(side, &crossing) == QLineF::BoundedIntersection) {
            return crossing;
        }
    }
    return to;
}

} // namespace

QRectF CurveHits::getInside() const
{
    return QRectF(0.0, 0.0, scale.getWidth(), scale.getHeight()).adjusted(edge, edge, -edge, -edge);
}

QPointF CurveHits::toPlace(GePoint2<float> const& point) const
{
    return {scale.toPlaceX(point.x), scale.toPlaceY(point.y)};
}

QPointF CurveHits::placeKey(CurveEditor::Key const& key) const
{
    return toPlace(CurveEditing::getKey(model.editor.getCurve(key.channel), key.key));
}

QPointF CurveHits::placeHandle(CurveEditor::Key const& key, Side side) const
{
    CurvePoints const points = model.editor.getCurve(key.channel);
    return keepInside(getInside(), toPlace(CurveEditing::getKey(points, key.key)),
                      toPlace(CurveEditing::getCountingHandle(points, key.key, side)));
}

std::optional<CurveGrip> CurveHits::findGrip(QPointF const& place) const
{
    std::optional<CurveGrip> nearest;
    double least = keyReach;
    auto const offer = [&](CurveGrip const& grip, QPointF const& there) {
        double const distance = measure(there, place);
        if (distance < least) {
            least = distance;
            nearest = grip;
        }
    };
    // The curve that was touched last lies on the others.
    int const lead = model.editor.getLead();
    for (int const channel : {lead, 0, 1, 2}) {
        CurvePoints const points = model.editor.getCurve(channel);
        for (std::size_t key = 0;
             model.editor.isEdited(channel) && key < CurveEditing::countKeys(points); ++key) {
            offer({{channel, key}}, toPlace(CurveEditing::getKey(points, key)));
        }
    }
    if (auto const only = model.editor.getOnlyKey()) {
        for (Side const side : {Side::Incoming, Side::Outgoing}) {
            offer({*only, side}, placeHandle(*only, side));
        }
    }
    return nearest;
}

double CurveHits::measureCurve(int channel, QPointF const& place) const
{
    CurvePoints const points = model.editor.getCurve(channel);
    if (points.empty()) {
        return std::numeric_limits<double>::infinity();
    }
    std::vector<float> xs;
    for (double x = place.x() - curveReach; x <= place.x() + curveReach; x += 1.0) {
        xs.push_back(static_cast<float>(scale.toX(x)));
    }
    std::vector<float> const ys = model.document.getLink().mapThroughCurve(points, xs);
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t index = 1; index < xs.size(); ++index) {
        least = std::min(least, measure(place, toPlace({xs[index - 1], ys[index - 1]}),
                                        toPlace({xs[index], ys[index]})));
    }
    return least;
}

std::optional<int> CurveHits::findCurve(QPointF const& place) const
{
    std::optional<int> nearest;
    double least = curveReach;
    for (int const channel : {model.editor.getLead(), 0, 1, 2}) {
        double const distance = model.editor.isEdited(channel)
                                    ? measureCurve(channel, place)
                                    : std::numeric_limits<double>::infinity();
        if (distance < least) {
            least = distance;
            nearest = channel;
        }
    }
    return nearest;
}

std::array<QPointF, 3> CurveHits::placeMark(CurveMark const& mark) const
{
    CurveLines::Color const between = model.lines.transfer(mark.in);
    CurveLines::Color const after = model.lines.curve(between);
    std::array<QPointF, 3> places;
    for (std::size_t channel = 0; channel < places.size(); ++channel) {
        places[channel] = toPlace({between[channel], after[channel]});
    }
    return places;
}

std::optional<CurveMark> CurveHits::findMark(QPointF const& place) const
{
    for (CurveMark const& mark : model.marks.list()) {
        for (QPointF const& there : placeMark(mark)) {
            if (measure(there, place) < markReach) {
                return mark;
            }
        }
    }
    return {};
}
