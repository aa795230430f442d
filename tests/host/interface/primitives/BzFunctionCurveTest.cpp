// Evaluation of curves: against the plain reference, and as functions of x.

#include "primitives/BzFunctionCurve.h"

#include "base/RCShdPtr.h"
#include "support/PixelMatcher.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using Points = Vector<GePoint2<float>>;

template <typename Curve>
Points evaluate(RCShdPtr<Curve> const& curve, Points const& points, int subdivisions)
{
    curve->getCtrlPoints() = points;
    Points polyline;
    curve->evaluateCurve(polyline, subdivisions, 0.25F);
    return polyline;
}

Points evaluateFunction(Points const& points, int subdivisions)
{
    return evaluate(makeShared<BzFunctionCurve>(BzFunctionCurve::Tangent, 0), points, subdivisions);
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
        Points const actual = evaluateFunction(points, subdivisions);
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

TEST(BzFunctionCurveTest, KeysStandOnceAndAsStored)
{
    EXPECT_EQ(evaluateFunction({}, 30), Points());
    EXPECT_EQ(evaluateFunction({{0, 0}, {0.1F, 0.7F}, {9, 9}}, 30), (Points{{0.1F, 0.7F}}));
    EXPECT_EQ(evaluateFunction({{0, 0}, {0, 0}, {1, 0}, {2, 3}, {3, 3}, {4, 4}}, 3),
              (Points{{0, 0}, {1, 7.0F / 9.0F}, {2, 20.0F / 9.0F}, {3, 3}}));
}

TEST(BzFunctionCurveTest, StoredHandlesStayAndGiveTheTangents)
{
    BzFunctionCurve curve(BzFunctionCurve::Tangent, 2);
    EXPECT_EQ(curve.getCtrlPoints(), Points(6));
    Points const points{{5, 1}, {0, 0}, {-5, 2}, {9, 3}, {1, 1}, {-9, 4}};
    curve.getCtrlPoints() = points;
    Points polyline;
    curve.evaluateCurve(polyline, 30, 0.0F);
    EXPECT_EQ(curve.getCtrlPoints(), points);
    EXPECT_EQ(curve.getTangentHandle(0), (GePoint2<float>{5, 1}));
    EXPECT_EQ(curve.getTangentHandle(1), (GePoint2<float>{-9, 4}));
}

TEST(BzBezierCurveTest, OnlyFunctionCurvesHoldTheirHandlesBack)
{
    Points const points{{0, 0}, {0, 0}, {-4, 0}, {5, 1}, {1, 1}, {1, 1}};
    EXPECT_EQ(evaluate(makeShared<BzBezierCurve>(), points, 2)[1], (GePoint2<float>{0.5F, 0.5F}));
    Points const early = evaluate(makeShared<BzBezierCurve>(), points, 4);
    EXPECT_LT(early[1].x, 0.0F);
}

} // namespace
