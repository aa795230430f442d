// The drawn curves of both modes.

#include "ToolBench.h"
#include "remapColorEXRMode.h"
#include "remapColorLinearMode.h"
#include "support/PixelMatcher.h"

#include <stdexcept>

namespace {

using reference::ChannelParams;
using Points = Vector<GePoint2<float>>;

/// `expected(nudge)` is the curve with logarithms and powers moved so.
template <typename Expected>
void expectOneOf(Expected const& expected, Points const& actual)
{
    std::vector<bool> found(actual.size());
    for (reference::Nudge const nudge : reference::allNudges()) {
        reference::Polyline const curve = expected(nudge);
        ASSERT_EQ(actual.size(), curve.size());
        for (std::size_t point = 0; point < actual.size(); ++point) {
            ASSERT_TRUE(reference::sameBits(curve[point].x, actual[point].x));
            found[point] = found[point] || reference::sameValue(curve[point].y, actual[point].y);
        }
    }
    for (std::size_t point = 0; point < actual.size(); ++point) {
        ASSERT_TRUE(found[point]) << "at x = " << actual[point].x << ", expected "
                                  << reference::describe(expected({})[point].y) << ", got "
                                  << reference::describe(actual[point].y);
    }
}

void expectReferenceCurves(GeInterval<float> const& range, int samples, ChannelParams const& linear,
                           ChannelParams const& exr)
{
    auto const low = range.minimum;
    auto const high = range.maximum;
    Points points{{9, 9}}; // gone afterwards
    for (bool const clamp : {false, true}) {
        RemapColorLinearMode::computeCurve(range, samples, clamp, linear[0], linear[1], linear[2],
                                           linear[3], linear[4], points);
        expectOneOf(
            [&](reference::Nudge nudge) {
                return reference::computeLinearCurve(low, high, samples, linear, nudge);
            },
            points);
    }
    RemapColorEXRMode::computeCurve(range, samples, exr[0], exr[1], exr[2], exr[3], exr[4], points);
    expectOneOf(
        [&](reference::Nudge nudge) {
            return reference::computeExrCurve(low, high, samples, exr, nudge);
        },
        points);
}

TEST(ComputeCurveTest, EqualsReferenceAndIsNeverClamped)
{
    for (std::uint32_t seed = 0; seed < 30; ++seed) {
        SCOPED_TRACE(seed);
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

TEST(ComputeCurveTest, KneesAreThePlatformsPowersOfTwo)
{
    // glibc's `powf` is not the nearest float at these stops; with a knee high of 3.5 the factor
    // comes from a difference, and a bright value shows it.
    for (float const low : {0x1.01ca5p+0F, 0x1.9d6778p+0F, 0x1.b44b6p-1F, -0x1.2a2f5p-2F,
                            -0x1.5d8afp-1F, 0x1.dab42p+0F, -0x1.7edceep+1F}) {
        expectReferenceCurves({1, 60000}, 4, reference::defaultLinear, {0, 0, 3.5F, low, 2.2F});
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
