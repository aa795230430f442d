#pragma once

#include "primitives/BzBezierCurve.h"

/// A Bezier curve that is a function, y of x: x never runs back within a segment. A handle that
/// points out of its segment counts as lying on its key; one that reaches past the segment's other
/// end is shortened along its own direction until its x is at that end. Both happen in the
/// evaluation only: the stored points stay as they were set.
class BzFunctionCurve : public BzBezierCurve {
public:
    /// How the curve goes on beyond its end keys. Our host's evaluation ends at the keys and only
    /// keeps the code.
    enum InfiniteType { Constant = 0, Linear = 1, Cycle = 2, Tangent = 3 };

    /// A curve of `nbKeys` keys at the origin with their handles on them.
    BzFunctionCurve(InfiniteType infinite, int nbKeys);

    InfiniteType getInfiniteType() const { return infiniteType; }

    /// The handle that gives the direction in which the curve goes on beyond an end key: the
    /// incoming handle of key 0, the outgoing handle of any other key. `key` must exist.
    virtual GePoint2<float> getTangentHandle(int key) const;

protected:
    void prepareSegment(Segment& segment) const override;

private:
    InfiniteType infiniteType;
};
