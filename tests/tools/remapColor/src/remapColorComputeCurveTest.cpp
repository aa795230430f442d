// The drawn curves of both modes.

#include "ToolBench.h"
#include "remapColorEXRMode.h"
#include "remapColorLinearMode.h"
#include "support/PixelMatcher.h"

#include <stdexcept>

namespace {

using reference::ChannelParams;
using Points = Vector<GePoint2<float>>;

void expectSame(reference::Polyline const& expected, Points const& actual)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t point = 0; point < actual.size(); ++point) {
        ASSERT_TRUE(reference::sameBits(expected[point].x, actual[point].x));
        ASSERT_TRUE(reference::sameValue(expected[point].y, actual[point].y)) << point;
    }
}

void expectReferenceCurves(GeInterval<float> const& range, int samples, ChannelParams const& linear,
                           ChannelParams const& exr)
{
    auto const& [low, high] = range;
    Points points{{9, 9}}; // gone afterwards
    for (bool const clamp : {false, true}) {
        RemapColorLinearMode::computeCurve(range, samples, clamp, linear[0], linear[1], linear[2],
                                           linear[3], linear[4], points);
        expectSame(reference::computeLinearCurve(low, high, samples, linear), points);
    }
    RemapColorEXRMode::computeCurve(range, samples, exr[0], exr[1], exr[2], exr[3], exr[4], points);
    expectSame(reference::computeExrCurve(low, high, samples, exr), points);
}

TEST(ComputeCurveTest, EqualsReferenceAndIsNeverClamped)
{
    for (std::uint32_t seed = 0; seed < 30; ++seed) {
        auto const params = makeRandomParams(seed, Draw::Wild);
        for (auto const& range : {GeInterval<float>{0, 1}, {-0.7F, 3.3F}, {5, 5.01F}}) {
            expectReferenceCurves(range, 57, params.linear[0], params.exr[0]);
        }
    }
    // Next to 0 there is no power.
    for (float const gamma : {0.0F, -0.0F, 1e-6F, -1e-6F, 1.1e-6F, -1.1e-6F}) {
        expectReferenceCurves({0, 1}, 4, {0, 1, 0, 1, gamma}, reference::defaultExr);
    }
    struct Case {
        GeInterval<float> range;
        int samples;
    };
    for (auto const& [range, samples] : {Case{{0, 1}, 256}, Case{{0, 1}, 10}, Case{{0, 1}, 100},
                                         Case{{1, 0}, 10}, Case{{0, 1}, 0}, Case{{2, 2}, 0}}) {
        expectReferenceCurves(range, samples, reference::defaultLinear, reference::defaultExr);
    }
}

TEST(ComputeCurveTest, NegativeCountIsALengthErrorAndLeavesNoPoints)
{
    Points linear{{9, 9}};
    catchFailure<std::length_error>([&] {
        RemapColorLinearMode::computeCurve({0, 1}, -1, false, 0, 1, 0, 1, 1, linear);
    });
    Points exr{{9, 9}};
    catchFailure<std::length_error>([&] {
        RemapColorEXRMode::computeCurve({0, 1}, -1, 0, 0, 5, 0, 2.2F, exr);
    });
    EXPECT_TRUE(linear.empty() && exr.empty());
}

} // namespace
