// The drawn curves of both modes.

#include "ToolBench.h"
#include "remapColorEXRMode.h"
#include "remapColorLinearMode.h"
#include "support/PixelMatcher.h"

#include <stdexcept>

namespace {

using reference::ChannelParams;
using Points = Vector<GePoint2<float>>;

Points computeLinear(GeInterval<float> const& range, int samples, ChannelParams const& p,
                     bool clamp)
{
    Points points{{9, 9}}; // gone afterwards
    RemapColorLinearMode::computeCurve(range, samples, clamp, p[0], p[1], p[2], p[3], p[4], points);
    return points;
}

Points computeExr(GeInterval<float> const& range, int samples, ChannelParams const& p)
{
    Points points{{9, 9}};
    RemapColorEXRMode::computeCurve(range, samples, p[0], p[1], p[2], p[3], p[4], points);
    return points;
}

void expectSame(reference::Polyline const& expected, Points const& actual)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t point = 0; point < actual.size(); ++point) {
        ASSERT_TRUE(reference::sameBits(expected[point].x, actual[point].x));
        ASSERT_TRUE(reference::nearFloat(expected[point].y, actual[point].y, 0)) << point;
    }
}

TEST(ComputeCurveTest, EqualsReferenceAndIsNeverClamped)
{
    for (std::uint32_t seed = 0; seed < 30; ++seed) {
        auto const params = makeRandomParams(seed, Draw::Wild);
        for (auto const& range : {GeInterval<float>{0, 1}, {-0.7F, 3.3F}, {5, 5.01F}}) {
            auto const& linear = params.linear[0];
            auto const expected =
                reference::computeLinearCurve(range.minimum, range.maximum, 57, linear);
            expectSame(expected, computeLinear(range, 57, linear, true));
            expectSame(expected, computeLinear(range, 57, linear, false));
            expectSame(reference::computeExrCurve(range.minimum, range.maximum, 57, params.exr[0]),
                       computeExr(range, 57, params.exr[0]));
        }
    }
}

TEST(ComputeCurveTest, GammaNextToZeroDrawsTheStraightLine)
{
    for (float const gamma : {0.0F, -0.0F, 1e-6F, -1e-6F}) {
        EXPECT_EQ(computeLinear({0, 1}, 4, {0, 1, 0, 1, gamma}, false)[3],
                  (GePoint2<float>{0.75F, 0.75F}));
    }
    for (float const gamma : {1.1e-6F, -1.1e-6F, 2.0F}) {
        EXPECT_NE(computeLinear({0, 1}, 4, {0, 1, 0, 1, gamma}, false)[3].y, 0.75F);
    }
}

TEST(ComputeCurveTest, HasAsManyPointsAsSamplesOrOneMore)
{
    struct Case {
        GeInterval<float> range;
        int samples;
        std::size_t count;
        float lastX;
    };
    for (auto const& [range, samples, count, lastX] :
         {Case{{0, 1}, 256, 257, 1.0F}, Case{{0, 1}, 10, 10, 0.9000001F},
          Case{{0, 1}, 100, 101, 0.9999993F}, Case{{1, 0}, 10, 0, 0}, Case{{0, 1}, 0, 1, 0},
          Case{{2, 2}, 0, 1, 2.0F}}) {
        for (Points const& points : {computeLinear(range, samples, reference::defaultLinear, false),
                                     computeExr(range, samples, reference::defaultExr)}) {
            ASSERT_EQ(points.size(), count) << samples;
            if (count > 0) {
                EXPECT_FLOAT_EQ(points.back().x, lastX);
            }
        }
    }
}

TEST(ComputeCurveTest, NegativeCountIsALengthErrorAndLeavesNoPoints)
{
    Points points{{9, 9}};
    catchFailure<std::length_error>([&] {
        RemapColorLinearMode::computeCurve({0, 1}, -1, false, 0, 1, 0, 1, 1, points);
    });
    EXPECT_TRUE(points.empty());
    points = {{9, 9}};
    catchFailure<std::length_error>([&] {
        RemapColorEXRMode::computeCurve({0, 1}, -1, 0, 0, 5, 0, 2.2F, points);
    });
    EXPECT_TRUE(points.empty());
}

} // namespace
