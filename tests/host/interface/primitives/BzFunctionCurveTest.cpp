// Evaluation of curves: against the plain reference, and as functions of x.

#include "primitives/BzFunctionCurve.h"

#include "support/PixelMatcher.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using Points = Vector<GePoint2<float>>;

Points evaluate(Points const& points, int subdivisions)
{
    BzFunctionCurve curve(BzFunctionCurve::Tangent, 0);
    curve.getCtrlPoints() = points;
    Points polyline;
    curve.evaluateCurve(polyline, subdivisions, 0.25F);
    return polyline;
}

/// Handles anywhere: they run back, reach past the next key, or lie on their own.
Points makeWildPoints(std::mt19937& words)
{
    auto const around = [&](float middle) {
        return middle + static_cast<float>(words() % 41) * 0.1F - 2.0F;
    };
    Points points;
    float x = 0.0F;
    for (std::uint32_t key = 0; key <= words() % 4; ++key) {
        float const y = around(0.0F);
        points.insert(points.end(), {{around(x), around(y)}, {x, y}, {around(x), around(y)}});
        x += static_cast<float>(words() % 3) * 0.4F;
    }
    return points;
}

TEST(BzFunctionCurveTest, EqualsReferenceAndNeverRunsBack)
{
    std::mt19937 words(5);
    for (int round = 0; round < 300; ++round) {
        Points const points = makeWildPoints(words);
        reference::ControlPoints plain;
        for (auto const& point : points) {
            plain.push_back({point.x, point.y});
        }
        int const subdivisions = round % 2 == 0 ? 30 : 7;
        reference::Polyline const expected = reference::evaluateCurve(plain, subdivisions);
        Points const actual = evaluate(points, subdivisions);
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t point = 0; point < actual.size(); ++point) {
            ASSERT_TRUE(reference::sameBits(actual[point].x, expected[point].x));
            ASSERT_TRUE(reference::sameBits(actual[point].y, expected[point].y));
            if (point > 0) {
                ASSERT_GE(actual[point].x, actual[point - 1].x) << round;
            }
        }
    }
}

} // namespace
