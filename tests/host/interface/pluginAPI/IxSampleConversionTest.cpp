// Conversions between depths: every half, every byte, and floats of all kinds.

#include "pluginAPI/IxSampleConversion.h"

#include "base/HostException.h"
#include "pluginAPI/PiPixelLoopOneSource.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
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

TEST(IxSampleConversionTest, EveryByteWidensToItsShareAndComesBack)
{
    auto const format = makeFormat(IxPixelFormat::RGBA, IxPixelFormat::UINT8);
    std::array<std::uint8_t, 256> bytes{};
    for (std::size_t byte = 0; byte < bytes.size(); ++byte) {
        bytes.at(byte) = static_cast<std::uint8_t>(byte);
    }
    std::array<Pixel, 64> pixels;
    readPixelRow(format, reinterpret_cast<std::byte const*>(bytes.data()), pixels);
    EXPECT_EQ(pixels[12].green, reference::fromByte(49));
    EXPECT_EQ(pixels[63].alpha, 1.0F);
    std::array<std::uint8_t, 256> back{};
    writePixelRow(format, pixels, reinterpret_cast<std::byte*>(back.data()));
    EXPECT_EQ(back, bytes);
}

TEST(IxSampleConversionTest, MissingComponentsAreBlackAndOpaque)
{
    std::array<float, 4> const samples{0.5F, -2.0F, 3.0F, 0.25F};
    auto const* const row = reinterpret_cast<std::byte const*>(samples.data());
    std::array<Pixel, 1> pixel;
    readPixelRow(makeFormat(IxPixelFormat::ALPHA, IxPixelFormat::FLOAT32), row, pixel);
    EXPECT_EQ(pixel[0], (Pixel{0, 0, 0, 0.5F}));
    readPixelRow(makeFormat(IxPixelFormat::RGB, IxPixelFormat::FLOAT32), row, pixel);
    EXPECT_EQ(pixel[0], (Pixel{0.5F, -2.0F, 3.0F, 1}));
    std::array<float, 4> written{9, 9, 9, 9};
    writePixelRow(makeFormat(IxPixelFormat::ALPHA, IxPixelFormat::FLOAT32),
                  std::array{Pixel{1, 2, 3, 4}}, reinterpret_cast<std::byte*>(written.data()));
    EXPECT_EQ(written, (std::array<float, 4>{4, 9, 9, 9}));
}

TEST(IxPixelFormatTest, RefusesWhatNoPictureIsMadeOf)
{
    struct Case {
        int components, depth;
        Rational aspectRatio;
        char const* expression;
    };
    for (auto const& [components, depth, aspectRatio, expression] :
         {Case{2, 32, {}, "_comps == ALPHA || _comps == RGB || _comps == RGBA"},
          Case{4,
               24,
               {},
               "_depth == UINT8 || _depth == FLOAT16 || _depth == FLOAT32 || _depth == COMPLEX"},
          Case{4, 8, {0, 1}, "aspectRatio.getFloat() is greater than 0.F"},
          Case{1, 64, {-1, 2}, "aspectRatio.getFloat() is greater than 0.F"}}) {
        try {
            IxPixelFormat const format(static_cast<IxPixelFormat::Components>(components),
                                       static_cast<IxPixelFormat::Depth>(depth), aspectRatio,
                                       notPremultiplied);
            ADD_FAILURE() << expression;
        } catch (AssertionFailure const& failure) {
            EXPECT_EQ(failure.getExpression(), expression);
        }
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

TEST(PiPixelLoopTest, RefusesASourceWithoutThePixels)
{
    auto const rgba = makeFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32);
    auto const rgb = makeFormat(IxPixelFormat::RGB, IxPixelFormat::FLOAT32);
    IxWriteGuard destination(IxTile(rgba, {0, 0, 4, 4}));
    for (IxTile const& source :
         {IxTile(rgb, {0, 0, 4, 4}), IxTile(rgba, {0, 0, 4, 3}), IxTile(rgba, {1, 0, 5, 4})}) {
        NegateLoop loop(destination, PiImageModifierTypes::AffectColour);
        EXPECT_THROW(loop.process(IxReadGuard(source)), AssertionFailure);
    }
}

} // namespace
