#pragma once

#include "base/RCBase.h"
#include "base/Vector.h"
#include "primitives/GePoint2.h"

/// A drawn shape at one moment.
class PmShape2d : public RCBase<LkCounter<int>> {
public:
    /// Whether the shape holds a curve.
    virtual bool hasControlPoints() const = 0;

    /// A copy of the curve's control points: three per key in key order (incoming handle, key,
    /// outgoing handle).
    virtual Vector<GePoint2<float>> takeControlPoints() const = 0;
};
