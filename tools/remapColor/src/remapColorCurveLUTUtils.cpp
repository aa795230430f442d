// Adjustment curves as tables: sampling a curve, and mapping values through the samples.

#include "remapColorCurveLUTUtils.h"

#include "base/Assertions.h"
#include "base/RCExUtil.h"
#include "remapColorSteps.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <utility>

namespace {

constexpr char const* sourceFile = "tools\\remapColor\\src\\remapColorCurveLUTUtils";
constexpr int curveSubdivisions = 30;
/// A segment narrower than this share of the evaluation step is a step of the curve.
constexpr float stepsPerTolerance = 1000.0F;
constexpr float degenerateHandleLength = std::numeric_limits<float>::epsilon();
constexpr float smallestRange = std::numeric_limits<float>::min();

using Point = GePoint2<float>;
using RemapColorSteps::EndLine;

void check(bool holds, int line, char const* expression)
{
    if (!holds) {
        Assertions::throwAssertionFailed(sourceFile, line, expression);
    }
}

/// Reads a polyline off at evenly spaced positions, one after the other.
class PolylineWalk {
public:
    PolylineWalk(Vector<Point> const& polyline, float narrowestSegment)
        : data(polyline), tolerance(narrowestSegment)
    {
    }

    /// Fills `values`, one for each of `positions`; all positions within a segment at once.
    void readOff(std::span<float const> positions, std::span<float> values)
    {
        std::size_t first = 0;
        while (first < positions.size()) {
            float const x = positions[first];
            if (data[segment].x > x) {
                values[first++] = data[segment].y;
                continue;
            }
            while (segment + 2 < data.size() && x >= data[segment + 1].x) {
                ++segment;
            }
            if (x >= data[segment + 1].x) {
                values[first++] = data[segment + 1].y;
                continue;
            }
            check(data[segment].x <= x, 156, "x0 <= lutX");
            check(data[segment + 1].x > x, 159, "x1 > lutX");
            std::size_t const end = findSegmentEnd(positions, first);
            interpolate(positions.subspan(first, end - first), values.subspan(first, end - first));
            first = end;
        }
    }

private:
    /// The first position after `first`, which lies in the segment, that does not.
    std::size_t findSegmentEnd(std::span<float const> positions, std::size_t first) const
    {
        float const x0 = data[segment].x;
        float const x1 = data[segment + 1].x;
        auto const isInside = [&](std::size_t index) {
            return index < positions.size() && positions[index] >= x0 && positions[index] < x1;
        };
        // Between two positions of a segment all are in it.
        constexpr std::size_t stride = 8;
        std::size_t end = first + 1;
        while (isInside(end + stride)) {
            end += stride;
        }
        while (isInside(end)) {
            ++end;
        }
        return end;
    }

    /// Along the segment.
    void interpolate(std::span<float const> positions, std::span<float> values) const
    {
        auto const [x0, y0] = data[segment];
        auto const [x1, y1] = data[segment + 1];
        float const dx = x1 - x0;
        if (tolerance > dx) {
            std::fill(values.begin(), values.end(), y0);
            return;
        }
        for (std::size_t index = 0; index < positions.size(); ++index) {
            float const x = positions[index];
            values[index] = ((x1 - x) * y0 + (x - x0) * y1) / dx;
        }
    }

    Vector<Point> const& data;
    float tolerance;
    std::size_t segment = 0;
};

bool isDegenerate(Point const& key, Point const& handle)
{
    Point const d{handle.x - key.x, handle.y - key.y};
    float const length = ::sqrtf(d.x * d.x + d.y * d.y);
    return length > 0.0F ? degenerateHandleLength >= length
                         : length + degenerateHandleLength >= 0.0F;
}

/// The line through `key` along the direction from `from` to `to`, which are the key and its handle
/// in the caller's order: it decides the sign of a slope of zero.
EndLine makeEndLine(Point const& key, Point const& handle, Point const& from, Point const& to)
{
    if (isDegenerate(key, handle)) {
        return {};
    }
    return {(to.y - from.y) / (to.x - from.x), key.x, key.y};
}

} // namespace

void RemapColorCurveLUTUtils::curveToLUT(Vector<float>& lut, float rangeMin, float rangeMax,
                                         RCShdPtr<BzFunctionCurve>& curve, float* lutMin,
                                         float* lutMax)
{
    // The evaluation step divides the range by N - 1, the table's spacing by N - 2: the last entry
    // is a guard.
    std::size_t const nbEntries = lut.size();
    float const step = (rangeMax - rangeMin) / static_cast<float>(nbEntries - 1);

    Vector<Point> data;
    curve->evaluateCurve(data, curveSubdivisions, step);
    check(!data.empty(), 78, "!data.empty()");
    if (data.size() == 1) {
        data.push_back(Point(data.front()));
    }

    float leftmost = data.front().x;
    float rightmost = leftmost;
    for (Point const& point : data) {
        leftmost = std::min(leftmost, point.x);
        rightmost = std::max(rightmost, point.x);
    }
    *lutMin = std::max(rangeMin, leftmost);
    *lutMax = std::min(rangeMax, rightmost);

    std::size_t const nbSamples = nbEntries - 1;
    auto const nbIntervals = static_cast<float>(nbEntries - 2);
    float const first = *lutMin;
    float const width = *lutMax - first;
    Vector<float> positions(nbSamples, first);
    for (int entry = 1; entry < static_cast<int>(nbSamples); ++entry) {
        positions[static_cast<std::size_t>(entry)] =
            first + (width * static_cast<float>(entry)) / nbIntervals;
    }
    PolylineWalk(data, step / stepsPerTolerance).readOff(positions, {lut.data(), nbSamples});
    lut[nbEntries - 1] = lut[nbEntries - 2];
}

/// The line below the table.
class RemapColorCurveLUTUtils::ScanlineLut::InExtrapolator {
public:
    explicit InExtrapolator(EndLine const& line)
        : slope(line.slope), keyX(line.keyX), keyY(line.keyY)
    {
    }
    virtual ~InExtrapolator() = default;

    EndLine getLine() const { return {slope, keyX, keyY}; }

private:
    float slope;
    float keyX;
    float keyY;
};

/// The line above the table.
class RemapColorCurveLUTUtils::ScanlineLut::OutExtrapolator {
public:
    explicit OutExtrapolator(EndLine const& line)
        : slope(line.slope), keyX(line.keyX), keyY(line.keyY)
    {
    }
    virtual ~OutExtrapolator() = default;

    EndLine getLine() const { return {slope, keyX, keyY}; }

private:
    float slope;
    float keyX;
    float keyY;
};

RemapColorCurveLUTUtils::ScanlineLut::ScanlineLut(RCShdPtr<BzFunctionCurve>& curve,
                                                  Vector<float> table, float lutMin, float lutMax)
    : lut(std::move(table))
{
    Vector<Point> const& points = std::as_const(*curve).getCtrlPoints();
    Point const firstKey = points[1];
    Point const firstHandle = curve->getTangentHandle(0);
    inExtrapolator =
        std::make_unique<InExtrapolator>(makeEndLine(firstKey, firstHandle, firstHandle, firstKey));

    std::size_t const last = points.size() / 3 - 1;
    Point const lastKey = points[3 * last + 1];
    Point const lastHandle = curve->getTangentHandle(static_cast<int>(last));
    outExtrapolator =
        std::make_unique<OutExtrapolator>(makeEndLine(lastKey, lastHandle, lastKey, lastHandle));

    if (lutMin == lutMax) {
        // A single x: position 0 for every number.
        lutScale = 0.0F;
        lutOffset = 0.0F;
        return;
    }
    float range = lutMax - lutMin;
    range = range < 0.0F ? std::min(range, -smallestRange) : std::max(range, smallestRange);
    lutScale = static_cast<float>(lut.size() - 2) / range;
    lutOffset = (0.0F - lutMin) * lutScale;
}

RemapColorCurveLUTUtils::ScanlineLut::~ScanlineLut()
{
    outExtrapolator.reset();
    inExtrapolator.reset();
}

RemapColorSteps::CurveTable RemapColorCurveLUTUtils::ScanlineLut::getTable() const
{
    return {lut.data(),
            lutScale,
            lutOffset,
            static_cast<float>(lut.size() - 2),
            inExtrapolator->getLine(),
            outExtrapolator->getLine()};
}

void RemapColorCurveLUTUtils::ScanlineLut::processScanline(float& out, float value)
{
    out = RemapColorSteps::adjust(value, getTable());
}

void RemapColorCurveLUTUtils::ScanlineLut::processCurve(Vector<GePoint2<float>>& out,
                                                        Vector<GePoint2<float>> const& in)
{
    out.reserve(out.size() + in.size());
    for (Point const& point : in) {
        out.push_back({point.x, RemapColorSteps::adjust(point.y, getTable())});
    }
}
