// Pins the plain reference itself with numbers worked out by hand.

#include "ReferenceTransfer.h"
#include "PixelMatcher.h"
#include "StandardPixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace reference {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float handPrecision = 1e-5F; // relative; the worked values have five decimals

void expectHandValue(float expected, float actual)
{
    if (expected != actual) {
        EXPECT_NEAR(expected, actual, std::fabs(expected) * handPrecision);
    }
}

TEST(ReferenceTest, TransfersGiveHandValues)
{
    constexpr Mode levels = Mode::Linear;
    constexpr Mode display = Mode::ExrDisplay;
    constexpr ChannelParams narrow{0.1F, 0.9F, 0.0F, 1.0F, 2.0F};
    constexpr ChannelParams doubled{0.0F, 0.0F, 7.5F, 3.0F, 2.2F}; // bracket [1, 2]
    struct Case {
        char const* name;
        Mode mode;
        ChannelParams params;
        float input, expected;
    };
    for (auto const& [name, mode, params, input, expected] :
         {Case{"mirrored power", levels, narrow, 0.05F, -0.25F},
          Case{"above the input", levels, narrow, 1.0F, 1.0606602F},
          Case{"no span, above", levels, {0.5F, 0.5F, 0, 1, 1}, 0.6F, 1e6F},
          Case{"output reversed", levels, {0, 1, 0.8F, 0.2F, 1}, 7.0F, 0.8F},
          Case{"gamma 0, above", levels, {0, 1, 0, 1, 0}, 1.5F, infinity},
          Case{"gamma -1, below", levels, {0, 1, 0, 1, -1}, -0.5F, -2.0F},
          Case{"low", display, defaultExr, 0.18F, 0.33200F},
          Case{"in the knee", display, defaultExr, 1.0F, 0.64461F},
          Case{"above the knee", display, defaultExr, 100.0F, 1.46232F},
          Case{"NaN", display, defaultExr, std::nanf(""), 0.0F},
          Case{"doubled, above", display, doubled, 100.0F, 1.02656F},
          Case{"all defogged", display, {0, 0.5F, 5, 0, -1}, 0.5F, infinity}}) {
        SCOPED_TRACE(name);
        auto const channels = allChannels(params);
        const Chain chain({.mode = mode, .adjust = false, .linear = channels, .exr = channels});
        expectHandValue(expected, chain.transform({0.0F, input, 0.0F, 1.0F}, {}).g);
    }
    EXPECT_EQ(findKneeFactor(1.0, 10.3F), 0x1p-31F); // out of reach: halved thirty times
}

TEST(ReferenceTest, ClampComesLastAndAlphaIsCopied)
{
    const Chain chain({.clamp = true, .linear = allChannels(ChannelParams{0, 1, 0.8F, 0.2F, 1})});
    for (Pixel const& pixel : standardPixels()) {
        EXPECT_TRUE(samePixelBits({0.2F, 0.2F, 0.2F, pixel.a}, chain.transform(pixel, {})));
    }
}

TEST(ReferenceTest, TableFollowsLineInsideAndHandlesOutside)
{
    const Mapping identity = makeLookup(defaultCurvePoints());
    const Mapping half =
        makeLookup({{-1, -0.5F}, {0, 0}, {0.3F, 0.15F}, {0, 0}, {1, 0.5F}, {1, 0.5F}});
    for (float const value : {-0.5F, 0.0F, 0.25F, 0.5F, 1.0F, 2.0F}) {
        expectHandValue(value, identity(value));
        expectHandValue(value > 1.0F ? 0.0F : value / 2, half(value)); // handle on key
    }
    // A segment under a thousandth of the step of 3 / 4 is a step of the curve.
    EXPECT_EQ(sampleTable({{0, 2}, {0.9997F, 2}, {1.0003F, 8}, {3, 8}}, -1, 3, 5).entries,
              (std::vector<float>{2, 2, 8, 8, 8}));
    // Handles that run back count as lying on (0, 0) and at (0, 0.5).
    const Polyline line = evaluateCurve({{0, 0}, {0, 0}, {-9, 5}, {-1, 0}, {1, 1}, {1, 1}}, 2);
    EXPECT_EQ(line.at(1).x, 0.125F);
    EXPECT_EQ(line.at(1).y, 0.3125F);
}

} // namespace
} // namespace reference
