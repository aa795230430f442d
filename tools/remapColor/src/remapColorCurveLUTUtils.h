#pragma once

#include "base/RCShdPtr.h"
#include "base/Vector.h"
#include "primitives/BzFunctionCurve.h"
#include "primitives/GePoint2.h"
#include "remapColorExport.h"

#include <memory>

namespace RemapColorSteps {
struct CurveTable;
} // namespace RemapColorSteps

/// Adjustment curves as lookup tables: sampling a Bezier function curve, and mapping values through
/// the samples. Any thread; nothing here keeps state between calls.
class RemapColorCurveLUTUtils {
public:
    class ScanlineLut;

    /// Fills `lut` (N >= 3 entries, sized by the caller) with the curve's values: entries 0 to N-2
    /// at evenly spaced x from `*lutMin` to `*lutMax`, both ends included; entry N-1 repeats entry
    /// N-2, so that an interpolation at the very end may read one further. The covered range is
    /// [rangeMin, rangeMax] clipped to the x extent of the curve's polyline; a curve of one key
    /// covers the one x. A reversed range gives positions that run down while the walk along the
    /// polyline cannot turn: such a table means nothing.
    ///
    /// Throws the null-pointer exception for an empty curve (nothing is written), and the assertion
    /// failure for a curve without points (nothing is written) or with points whose x runs back or
    /// is NaN (the table is partly filled).
    REMAPCOLOR_EXPORT static void curveToLUT(Vector<float>& lut, float rangeMin, float rangeMax,
                                             RCShdPtr<BzFunctionCurve>& curve, float* lutMin,
                                             float* lutMax);
};

/// Maps values through one curve's table, and through straight lines beyond its ends: each line
/// runs through the curve's end key in the direction of that key's tangent handle. An end handle
/// that lies on its key gives no direction: values beyond that end become 0, whatever the key.
///
/// The mapping is RemapColorSteps::adjust; NaN gives entry 0, and so does every value for a table
/// over a single x. Other libraries may derive from it.
/// Immutable after construction; several threads may map at once.
class REMAPCOLOR_EXPORT RemapColorCurveLUTUtils::ScanlineLut {
public:
    /// Takes the table that curveToLUT sampled from `curve`, over [lutMin, lutMax]. The curve is
    /// only read. Throws the null-pointer exception for an empty curve.
    ScanlineLut(RCShdPtr<BzFunctionCurve>& curve, Vector<float> lut, float lutMin, float lutMax);
    virtual ~ScanlineLut();

    /// Maps `value` into `out`.
    void processScanline(float& out, float value);

    /// Appends each point of `in`, in order, with the same x and its y mapped, to `out`.
    void processCurve(Vector<GePoint2<float>>& out, Vector<GePoint2<float>> const& in);

    /// What the mapping needs of it; valid as long as this object.
    RemapColorSteps::CurveTable getTable() const;

private:
    class InExtrapolator;
    class OutExtrapolator;

    float lutOffset; ///< table position of value 0
    float lutScale;  ///< table intervals per unit of value
    Vector<float> lut;
    std::unique_ptr<InExtrapolator> inExtrapolator;
    std::unique_ptr<OutExtrapolator> outExtrapolator;
};
