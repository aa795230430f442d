// Conversions between depths: every half, every byte, and floats of all kinds.

#include "pluginAPI/IxSampleConversion.h"

#include "pluginAPI/PiPixelLoopOneSource.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr bool notPremultiplied = false;

IxPixelFormat makeFormat(IxPixelFormat::Components components, IxPixelFormat::Depth depth)
{
    return {components, depth, Rational(), notPremultiplied};
}

TEST(IxSampleConversionTest, EveryHalfWidensExactlyAndComesBack)
{
    for (std::uint32_t bits = 0; bits < 0x10000U; ++bits) {
        auto const half = static_cast<std::uint16_t>(bits);
        ASSERT_TRUE(reference::sameBits(halfToFloat(half), reference::fromHalf(half))) << bits;
        bool const isSignallingNan = (bits & 0x7E00U) == 0x7C00U && (bits & 0x1FFU) != 0;
        ASSERT_EQ(floatToHalf(halfToFloat(half)), isSignallingNan ? (bits | 0x200U) : bits);
    }
}

TEST(IxSampleConversionTest, FloatsRoundAsTheReference)
{
    std::vector<float> values = reference::standardValues();
    std::mt19937 words(9);
    for (int round = 0; round < 300000; ++round) {
        values.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(words())));
        // Most of the numbers that halves can tell apart, and the ties between them.
        auto const half = static_cast<std::uint16_t>(words() & 0x7BFFU);
        float const low = reference::fromHalf(half);
        float const high = reference::fromHalf(static_cast<std::uint16_t>(half + 1));
        values.push_back(low + (high - low) * 0.5F);
        values.push_back(static_cast<float>(words() >> 8U) * 0x1p-24F);
    }
    for (int tie = -1; tie < 256; ++tie) {
        values.push_back((static_cast<float>(tie) + 0.5F) / 255.0F);
    }
    for (float const value : values) {
        ASSERT_EQ(floatToHalf(value), reference::toHalf(value)) << reference::describe(value);
        ASSERT_EQ(floatToUint8(value), reference::toByte(value)) << reference::describe(value);
    }
}

/// Replaces every component by its negative.
class NegateLoop : public PiPixelLoopOneSource {
public:
    using PiPixelLoopOneSource::PiPixelLoopOneSource;
    void processRow(Row destination, SourceRow source) override
    {
        for (std::size_t pixel = 0; pixel < source.size(); ++pixel) {
            destination[pixel] = processPixel(source[pixel]);
        }
    }
    Pixel processPixel(Pixel const& in) override
    {
        return {-in.red, -in.green, -in.blue, -in.alpha};
    }
};

TEST(PiPixelLoopTest, WorksOnThePartThatTheDestinationCovers)
{
    for (auto const depth : {IxPixelFormat::FLOAT16, IxPixelFormat::FLOAT32}) {
        auto const format = makeFormat(IxPixelFormat::ALPHA, depth);
        IxWriteGuard const source(IxTile(format, {-2, 0, 4, 3}));
        for (int y = 0; y < 3; ++y) {
            std::array<Pixel, 6> row;
            for (int x = 0; x < 6; ++x) {
                row.at(x).alpha = static_cast<float>(10 * y + x - 2);
            }
            writePixelRow(format, row, source.getRow(y));
        }
        IxWriteGuard destination(IxTile(format, {1, 1, 3, 3}));
        NegateLoop(destination, PiImageModifierTypes::AffectColourAndAlpha)
            .process(IxReadGuard(source.getTile()));
        std::array<Pixel, 2> result;
        readPixelRow(format, destination.getRow(2), result);
        EXPECT_EQ(result[0].alpha, -21.0F);
        EXPECT_EQ(result[1].alpha, -22.0F);
    }
}

} // namespace
