#include "editor/model/curves/CurveScale.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double graphMargin = 0.08;  // of a range, on either side
constexpr double farPlace = 1e6;      // pixels; beyond every screen, and within what is drawn
constexpr double leastShare = 5e-4;   // of a value: what floats tell apart well
constexpr double leastWidth = 1e-4;   // about 0
constexpr double greatestWidth = 1e6; // values
constexpr double leastStops = 0.01;
constexpr double greatestStops = 300.0;   // from the least float to the greatest
constexpr double leastStop = -149.0;      // of a float
constexpr double greatestStop = 127.9999; // of a float

double limitLength(double length, double middle)
{
    return std::clamp(length, std::max(leastWidth, leastShare * std::abs(middle)), greatestWidth);
}

double limitWidth(CurveAxis axis, double width, double middle)
{
    return axis == CurveAxis::Stops ? std::clamp(width, leastStops, greatestStops)
                                    : limitLength(width, middle);
}

} // namespace

GraphRange getPlainRange(CurveAxis axis)
{
    constexpr double firstStop = -8.0;
    constexpr double nbStops = 9.0;
    return addMargin(axis == CurveAxis::Stops ? GraphRange{firstStop, 0.0, nbStops, 1.0}
                                              : GraphRange{0.0, 0.0, 1.0, 1.0});
}

GraphRange addMargin(GraphRange const& range)
{
    double const dx = range.width > 0.0 ? graphMargin * range.width : 0.5;
    double const dy = range.height > 0.0 ? graphMargin * range.height : 0.5;
    return {range.left - dx, range.bottom - dy, range.width + 2 * dx, range.height + 2 * dy};
}

GraphRange zoomRange(CurveAxis axis, GraphRange const& range, double x, double y, double factorX,
                     double factorY)
{
    double const width = limitWidth(axis, range.width / factorX, x);
    double const height = limitLength(range.height / factorY, y);
    return {x - (x - range.left) * width / range.width,
            y - (y - range.bottom) * height / range.height, width, height};
}

CurveScale::CurveScale(CurveAxis shownAxis, GraphRange const& shownRange, double graphWidth,
                       double graphHeight)
    : axis(shownAxis), range(shownRange), width(graphWidth), height(graphHeight),
      start(axis == CurveAxis::Stops ? stripWidth : 0.0)
{
}

double CurveScale::toPlaceX(double x) const
{
    if (axis == CurveAxis::Stops && !(x > 0.0)) {
        return 0.5 * start;
    }
    return toPlaceOfCoordinate(toCoordinate(x));
}

double CurveScale::toPlaceY(double y) const
{
    return std::clamp(height - (y - range.bottom) / range.height * height, -farPlace, farPlace);
}

double CurveScale::toX(double place) const
{
    if (axis == CurveAxis::Linear) {
        return toCoordinateOfPlace(place);
    }
    return isInStrip(place)
               ? 0.0
               : std::exp2(std::clamp(toCoordinateOfPlace(place), leastStop, greatestStop));
}

double CurveScale::toY(double place) const
{
    return range.bottom + (height - place) / height * range.height;
}

double CurveScale::toCoordinate(double x) const
{
    return axis == CurveAxis::Linear ? x
           : x > 0.0                 ? std::log2(x)
                                     : -std::numeric_limits<double>::infinity();
}

double CurveScale::toPlaceOfCoordinate(double coordinate) const
{
    double const place = start + (coordinate - range.left) / range.width * (width - start);
    return std::clamp(place, -farPlace, farPlace);
}

double CurveScale::toCoordinateOfPlace(double place) const
{
    return range.left + (place - start) / (width - start) * range.width;
}
