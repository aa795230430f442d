// Curves made from keys: smooth, without overshoot, with a direction at both ends.

#include "runtime/curves/CurveShapes.h"

#include "primitives/BzFunctionCurve.h"
#include "runtime/values/HostValue.h"

#include <gtest/gtest.h>

#include <random>

namespace {

Vector<GePoint2<float>> evaluate(CurvePoints const& points)
{
    auto const curve = makeShared<BzFunctionCurve>(BzFunctionCurve::Tangent, 0);
    curve->getCtrlPoints() = points;
    Vector<GePoint2<float>> polyline;
    curve->evaluateCurve(polyline, 30, 0.0F);
    return polyline;
}

TEST(CurveShapesTest, SmoothCurvePassesItsKeysAndNeverOvershoots)
{
    constexpr float rounding = 1e-6F;
    std::mt19937 words(3);
    for (int round = 0; round < 200; ++round) {
        std::vector<GePoint2<double>> keys;
        for (double x = -1.0; keys.size() < 2 + words() % 6; x += (words() % 5) * 0.11) {
            keys.push_back({x, static_cast<double>(words() % 200) * 0.01});
        }
        CurvePoints const points = makeSmoothCurve(keys);
        ASSERT_EQ(points.size(), keys.size() * 3);
        auto const polyline = evaluate(points);
        for (std::size_t point = 0; point < polyline.size(); ++point) {
            std::size_t const left = point / 30;
            std::size_t const right = std::min(left + 1, keys.size() - 1);
            auto const [low, high] = std::minmax(keys[left].y, keys[right].y);
            ASSERT_GE(polyline[point].y, static_cast<float>(low) - rounding) << round;
            ASSERT_LE(polyline[point].y, static_cast<float>(high) + rounding) << round;
        }
        for (std::size_t key = 0; key < keys.size(); ++key) {
            EXPECT_EQ(polyline[key * 30].y, static_cast<float>(keys[key].y));
        }
    }
}

TEST(CurveShapesTest, KeysOnALineGiveTheLineAndItsContinuation)
{
    CurvePoints const points = makeSmoothCurve({{0, 0}, {3, 6}, {6, 12}});
    EXPECT_EQ(
        points,
        (CurvePoints{{-1, -2}, {0, 0}, {1, 2}, {2, 4}, {3, 6}, {4, 8}, {5, 10}, {6, 12}, {7, 14}}));
}

TEST(CurveShapesTest, EndHandlesNeverLieOnTheirKeys)
{
    struct Case {
        CurvePoints given, completed;
    };
    for (auto const& [given, completed] :
         {Case{{}, {}}, Case{{{2, 3}, {2, 3}, {2, 3}}, {{1, 3}, {2, 3}, {3, 3}}},
          // Along the inner handle, along the next point, and left alone.
          Case{{{0, 0}, {0, 0}, {1, 2}, {2, 2}, {4, 4}, {5, 5}},
               {{-1, -2}, {0, 0}, {1, 2}, {2, 2}, {4, 4}, {5, 5}}},
          Case{{{0, 0}, {0, 0}, {0, 0}, {2, 4}, {2, 4}, {2, 4}},
               {{-2, -4}, {0, 0}, {0, 0}, {2, 4}, {2, 4}, {4, 8}}}}) {
        CurvePoints points = given;
        completeEndHandles(points);
        EXPECT_EQ(points, completed);
    }
}

TEST(CurveShapesTest, PointsThatAreNoCurveAreRefused)
{
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    using Case = std::pair<CurvePoints, char const*>;
    for (auto const& [points, text] :
         {Case{CurvePoints(2), "needs three points per key (handle, key, handle), not 2 in all"},
          Case{{{0, 0}, {0, notANumber}, {0, 0}}, "has a point that is not a finite number"},
          Case{{{0, 0}, {0.5F, 0}, {1, 0}, {0, 0}, {0.25F, 0}, {1, 0}},
               "runs back: key x 0.25 comes after 0.5; give keys from left to right"}}) {
        try {
            checkCurvePoints("c", points);
            ADD_FAILURE() << text;
        } catch (ValueError const& error) {
            EXPECT_EQ(error.what(), std::string("the curve \"c\" ") + text);
        }
    }
    checkCurvePoints("c", {{0, 0}, {0, 0}, {9, 9}, {-9, 0}, {0, 1}, {1, 1}}); // a step
    checkCurvePoints("c", {});
}

} // namespace
