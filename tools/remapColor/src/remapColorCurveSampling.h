#pragma once

// How an adjustment curve becomes the table that values go through: 1024 samples evenly spaced from
// its first key to its last, and a guard. The second stage of a pixel and whoever draws what it
// does share these functions. Any thread.

#include "primitives/BzFunctionCurve.h"
#include "remapColorCurveLUTUtils.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace RemapColorCurveSampling {

/// Entries of a curve's table: 1024 samples and a guard.
constexpr std::size_t tableLength = 1025;

/// A curve through these control points, three per key.
inline RCShdPtr<BzFunctionCurve> makeCurve(Vector<GePoint2<float>> points)
{
    auto curve = makeShared<BzFunctionCurve>(static_cast<BzFunctionCurve::InfiniteType>(3), 0);
    std::swap(points, curve->getCtrlPoints());
    return curve;
}

struct SampledCurve {
    Vector<float> table;
    float lutMin = 0.0F;
    float lutMax = 0.0F;
};

/// Samples the curve from its first key to its last. Throws the null-pointer exception for an empty
/// handle and what curveToLUT throws.
inline SampledCurve sampleCurve(RCShdPtr<BzFunctionCurve>& curve)
{
    SampledCurve sampled;
    sampled.table.assign(tableLength, 0.0F);
    Vector<GePoint2<float>> const& points = curve->getCtrlPoints();
    float const rangeMin = points.empty() ? 0.0F : points[1].x;
    float const rangeMax = points.empty() ? 0.0F : points[3 * (points.size() / 3 - 1) + 1].x;
    RemapColorCurveLUTUtils::curveToLUT(sampled.table, rangeMin, rangeMax, curve, &sampled.lutMin,
                                        &sampled.lutMax);
    return sampled;
}

/// The map through the samples of `curve`, which it takes.
inline std::unique_ptr<RemapColorCurveLUTUtils::ScanlineLut>
makeLut(RCShdPtr<BzFunctionCurve>& curve, SampledCurve& sampled)
{
    return std::make_unique<RemapColorCurveLUTUtils::ScanlineLut>(curve, std::move(sampled.table),
                                                                  sampled.lutMin, sampled.lutMax);
}

} // namespace RemapColorCurveSampling
