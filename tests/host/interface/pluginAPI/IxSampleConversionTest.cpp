// Conversions between depths: every half, every byte, and floats of all kinds.

#include "pluginAPI/IxSampleConversion.h"

#include "pluginAPI/IxSampleKernels.h"
#include "pluginAPI/PiPixelLoopOneSource.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <random>
#include <vector>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr bool notPremultiplied = false;

IxPixelFormat makeFormat(IxPixelFormat::Components components, IxPixelFormat::Depth depth)
{
    return {components, depth, Rational(), notPremultiplied};
}

/// The kernels of every set that this processor runs, the way all pictures go.
class IxSampleKernelsTest : public ::testing::TestWithParam<InInstructionSet> {
protected:
    void SetUp() override
    {
        if (!isInstructionSetAvailable(GetParam())) {
            GTEST_SKIP() << "not on this processor";
        }
    }
    ~IxSampleKernelsTest() noexcept override = default;

    IxSampleKernels const& kernels = IxSampleKernels::of(GetParam());
};

TEST_P(IxSampleKernelsTest, EveryHalfWidensExactlyAndComesBack)
{
    std::vector<std::uint16_t> halves(0x10000);
    std::iota(halves.begin(), halves.end(), std::uint16_t{0});
    std::vector<float> floats(halves.size());
    std::vector<std::uint16_t> back(halves.size());
    kernels.halvesToFloats(halves.data(), floats.data(), halves.size());
    kernels.floatsToHalves(floats.data(), back.data(), floats.size());
    for (std::uint16_t const half : halves) {
        ASSERT_TRUE(reference::sameBits(floats[half], reference::fromHalf(half))) << half;
        bool const isSignallingNan = (half & 0x7E00U) == 0x7C00U && (half & 0x1FFU) != 0;
        ASSERT_EQ(back[half], isSignallingNan ? (half | 0x200U) : half);
    }
}

TEST_P(IxSampleKernelsTest, FloatsRoundAsTheReference)
{
    std::vector<float> values = reference::standardValues();
    std::mt19937 words(9);
    for (int round = 0; round < 100000; ++round) {
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
    std::vector<std::uint16_t> halves(values.size());
    std::vector<std::uint8_t> bytes(values.size());
    kernels.floatsToHalves(values.data(), halves.data(), values.size());
    kernels.floatsToBytes(values.data(), bytes.data(), values.size());
    for (std::size_t value = 0; value < values.size(); ++value) {
        ASSERT_EQ(halves[value], reference::toHalf(values[value]))
            << reference::describe(values[value]);
        ASSERT_EQ(bytes[value], reference::toByte(values[value]))
            << reference::describe(values[value]);
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, IxSampleKernelsTest, ::testing::ValuesIn(inAllInstructionSets));

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
