#pragma once

#include "runtime/values/Animated.h"

#include <string>
#include <vector>

/// Throws ValueError naming the curve `name` unless the points are three per key, finite, and the
/// keys' x do not run back. No point at all is a shape without a curve and passes.
void checkCurvePoints(std::string const& name, CurvePoints const& points);

/// The same for a curve that somebody has drawn: throws also unless it has keys at two places.
void checkDrawnCurve(std::string const& name, CurvePoints const& points);

/// A smooth curve through at least one key with non-decreasing x (two keys at one x are a step).
/// Handles lie a third of a segment away in x; their slopes are limited so that between two keys y
/// never leaves the keys' range. Source of the limit: F. N. Fritsch, R. E. Carlson, "Monotone
/// Piecewise Cubic Interpolation", SIAM Journal on Numerical Analysis 17 (1980).
/// End keys get a handle on their outer side along the curve's end tangent.
CurvePoints makeSmoothCurve(std::vector<GePoint2<double>> const& keys);

/// Gives an end key whose outer handle lies on it one along the curve's end tangent: without a
/// direction there, every value beyond that end would become 0.
void completeEndHandles(CurvePoints& points);
