#pragma once

#include "base/RCBase.h"
#include "base/Vector.h"
#include "primitives/GePoint2.h"

/// A run of cubic Bezier segments through keys. The control points are one flat list of three per
/// key in key order: incoming handle, key, outgoing handle; key k is element 3k + 1.
/// One thread changes a curve; several may read one that nobody changes.
class BzBezierCurve : public RCBase<LkCounter<int>> {
public:
    Vector<GePoint2<float>>& getCtrlPoints() { return controlPoints; }
    Vector<GePoint2<float>> const& getCtrlPoints() const { return controlPoints; }

    /// Appends a polyline through the curve to `data`: each segment at `subdivisions` equal
    /// parameter steps t = j / subdivisions in Bernstein form (double, rounded to float once), the
    /// keys once and as they are stored, in order. One key gives one point, no key none. `step`,
    /// the spacing at which the caller wants values, is not used.
    /// Source of the form: G. Farin, "Curves and Surfaces for CAGD".
    virtual void evaluateCurve(Vector<GePoint2<float>>& data, int subdivisions, float step) const;

protected:
    /// The control points of a segment from `start` to `end` as they are evaluated.
    struct Segment {
        GePoint2<double> start;
        GePoint2<double> outgoing;
        GePoint2<double> incoming;
        GePoint2<double> end;
    };

    /// What a derived curve changes about a segment before it is evaluated; here nothing.
    virtual void prepareSegment(Segment& segment) const;

private:
    Vector<GePoint2<float>> controlPoints;
};
