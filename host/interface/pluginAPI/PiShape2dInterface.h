#pragma once

#include "base/Vector.h"
#include "primitives/GePoint2.h"

/// The controller of a node that holds a drawn curve.
class PiShape2dInterface {
public:
    virtual ~PiShape2dInterface() noexcept(false) = default;

    /// Makes the curve constant over time with these control points (three per key). The change is
    /// recorded with the undo guard that is open. `keepTangents` asks for the handles to be taken
    /// over as they are even where a key is smooth; our host always takes them over.
    /// Throws a host exception that names the curve for points that are none: their number not a
    /// multiple of three, a coordinate that is not finite, keys whose x runs back.
    virtual void setControlPoints(Vector<GePoint2<float>> const& points, bool keepTangents) = 0;

    /// The control points; of an animated curve, those at time 0.
    virtual Vector<GePoint2<float>> getControlPoints() const = 0;
};
