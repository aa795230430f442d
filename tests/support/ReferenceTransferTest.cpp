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
    if (std::isinf(expected)) {
        EXPECT_EQ(expected, actual);
    } else {
        EXPECT_NEAR(expected, actual, std::fabs(expected) * handPrecision);
    }
}

struct TransferCase {
    char const* name;
    Mode mode;
    ChannelParams params;
    float input, expected;
};

class TransferReferenceTest : public ::testing::TestWithParam<TransferCase> {};

TEST_P(TransferReferenceTest, MapsInputToHandValue)
{
    auto const& [name, mode, params, input, expected] = GetParam();
    SCOPED_TRACE(name);
    auto const channels = allChannels(params);
    const ChainParams chain{.mode = mode, .adjust = false, .linear = channels, .exr = channels};
    expectHandValue(expected, transformPixel(chain, {0.0F, input, 0.0F, 1.0F}).g);
}

constexpr Mode levels = Mode::Linear;
constexpr ChannelParams narrow{0.1F, 0.9F, 0.0F, 1.0F, 2.0F};
INSTANTIATE_TEST_SUITE_P(
    Linear, TransferReferenceTest,
    ::testing::Values(TransferCase{"mirrored power", levels, narrow, 0.05F, -0.25F},
                      TransferCase{"above the input", levels, narrow, 1.0F, 1.0606602F},
                      TransferCase{"no span, above", levels, {0.5F, 0.5F, 0, 1, 1}, 0.6F, 1e6F},
                      TransferCase{"output reversed", levels, {0, 1, 0.8F, 0.2F, 1}, 7.0F, 0.8F},
                      TransferCase{"gamma 0, above", levels, {0, 1, 0, 1, 0}, 1.5F, infinity},
                      TransferCase{"gamma -1", levels, {0, 1, 0, 1, -1}, 0.0F, infinity},
                      TransferCase{"gamma -1, below", levels, {0, 1, 0, 1, -1}, -0.5F, -2.0F}));

constexpr Mode display = Mode::ExrDisplay;
constexpr ChannelParams doubled{0.0F, 0.0F, 7.5F, 3.0F, 2.2F}; // bracket [1, 2]
INSTANTIATE_TEST_SUITE_P(
    ExrDisplay, TransferReferenceTest,
    ::testing::Values(TransferCase{"low", display, defaultExr, 0.18F, 0.33200F},
                      TransferCase{"in the knee", display, defaultExr, 1.0F, 0.64461F},
                      TransferCase{"above the knee", display, defaultExr, 100.0F, 1.46232F},
                      TransferCase{"NaN", display, defaultExr, std::nanf(""), 0.0F},
                      TransferCase{"doubled, above", display, doubled, 100.0F, 1.02656F},
                      TransferCase{"gamma -1", display, {0, 0.5F, 5, 0, -1}, 0.5F, infinity}));

TEST(ReferenceTest, KneeFactorOutOfReachIsHalvedThirtyTimes)
{
    EXPECT_EQ(findKneeFactor(1.0, 10.3F), 0x1p-31F);
}

TEST(ReferenceTest, ClampComesLastAndAlphaIsCopied)
{
    const Chain chain({.clamp = true, .linear = allChannels(ChannelParams{0, 1, 0.8F, 0.2F, 1})});
    for (Pixel const& pixel : standardPixels()) {
        EXPECT_TRUE(samePixelBits({0.2F, 0.2F, 0.2F, pixel.a}, chain.transform(pixel)));
    }
}

TEST(ReferenceTest, TableFollowsLineInsideAndHandlesOutside)
{
    const CurveLookup identity(defaultCurvePoints());
    const CurveLookup half({{-1, -0.5F}, {0, 0}, {0.3F, 0.15F}, {0, 0}, {1, 0.5F}, {1, 0.5F}});
    for (float const value : {-0.5F, 0.0F, 0.25F, 0.5F, 1.0F, 2.0F}) {
        expectHandValue(value, identity.map(value));
        expectHandValue(value > 1.0F ? 0.0F : value / 2, half.map(value)); // handle on key
    }
}

TEST(ReferenceTest, HandlesThatRunBackAreHeldInsideTheirSegment)
{
    // They count as lying on (0, 0) and at (0, 0.5).
    const Polyline line = evaluateCurve({{0, 0}, {0, 0}, {-9, 5}, {-1, 0}, {1, 1}, {1, 1}}, 2);
    EXPECT_EQ(line.at(1).x, 0.125F);
    EXPECT_EQ(line.at(1).y, 0.3125F);
}

TEST(ReferenceTest, DrawnCurveAccumulatesItsPositions)
{
    EXPECT_EQ(computeExrCurve(0, 1, 256, defaultExr).back().x, 1.0F);
    EXPECT_EQ(computeLinearCurve(0, 1, 100, defaultLinear).size(), 101U);
    expectHandValue(-0.35355341F, computeLinearCurve(0, 1, 4, narrow)[0].y);
    EXPECT_EQ(computeLinearCurve(0, 1, 4, {0, 1, 0, 1, 0})[3].y, 0.75F);
}

TEST(ReferenceTest, DepthsRoundToNearest)
{
    EXPECT_EQ(toByte(0.5F), 128);
    EXPECT_EQ(toHalf(0x1.ffdffep+15F), 0x7BFF); // just below half-way to overflow
    EXPECT_EQ(toHalf(65520.0F), 0x7C00);
    EXPECT_EQ(toHalf(0x3p-25F), 0x0002); // ties go to even
    for (unsigned bits = 0; bits < 0x7C01U; ++bits) {
        EXPECT_EQ(toHalf(-fromHalf(static_cast<std::uint16_t>(bits))), bits | 0x8000U);
        EXPECT_EQ(toByte(fromByte(static_cast<std::uint8_t>(bits & 0xFFU))), bits & 0xFFU);
    }
}

} // namespace
} // namespace reference
