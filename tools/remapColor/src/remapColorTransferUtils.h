#pragma once

#include "base/Vector.h"
#include "primitives/GeInterval.h"
#include "primitives/GePoint2.h"

#include <cstddef>
#include <cstdint>
#include <limits>

/// Arithmetic that both modes' transfers share. Pure functions; any thread.
namespace RemapColorTransferUtils {

/// 1 / gamma, with gamma kept away from 0 by the smallest normal float and its sign kept: zero and
/// NaN count as the positive one, so the exponent is at most about 8.507059e37.
inline float invertGamma(float gamma)
{
    constexpr float guard = std::numeric_limits<float>::min();
    if (gamma < 0.0F) {
        return 1.0F / (gamma < -guard ? gamma : -guard);
    }
    return 1.0F / (gamma > guard ? gamma : guard);
}

/// Replaces `points` by (x, x) for x from the range's minimum in steps of its width over
/// `samples`, as long as x is not beyond the maximum. x is the running sum in float, so there are
/// as many points as samples or one more. An empty range (maximum below minimum or NaN) gives no
/// point. A negative number of samples throws std::length_error. Does not end if the step is too
/// small to move x: callers pass a range of some width and a moderate number of samples.
inline void samplePositions(GeInterval<float> const& range, int samples,
                            Vector<GePoint2<float>>& points)
{
    points.clear();
    points.reserve(static_cast<std::size_t>(static_cast<std::int64_t>(samples)));
    float const step = (range.maximum - range.minimum) / static_cast<float>(samples);
    if (!(range.maximum >= range.minimum)) {
        return;
    }
    float x = range.minimum;
    do {
        points.push_back({x, x});
        x = x + step;
    } while (range.maximum >= x);
}

} // namespace RemapColorTransferUtils
