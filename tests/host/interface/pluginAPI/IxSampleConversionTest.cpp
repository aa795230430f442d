// Conversions between depths: every half, every byte, and floats of all kinds.

#include "pluginAPI/IxSampleConversion.h"

#include "base/HostException.h"
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

constexpr auto alphaOnly = IxPixelFormat::ALPHA;
constexpr auto rgb = IxPixelFormat::RGB;
constexpr auto rgba = IxPixelFormat::RGBA;

// Samples are whole numbers of steps: 255 steps of a byte, 256 of a float, make 1.
int stepsOfOne(IxPixelFormat::Depth depth)
{
    return depth == IxPixelFormat::UINT8 ? 255 : 256;
}

void putSteps(IxPixelFormat::Depth depth, std::byte* row, std::size_t sample, int steps)
{
    float const value = static_cast<float>(steps) / 256.0F;
    switch (depth) {
    case IxPixelFormat::UINT8: row[sample] = static_cast<std::byte>(steps); break;
    case IxPixelFormat::FLOAT16:
        reinterpret_cast<std::uint16_t*>(row)[sample] = reference::toHalf(value);
        break;
    default: reinterpret_cast<float*>(row)[sample] = value;
    }
}

float getSteps(IxPixelFormat::Depth depth, std::byte const* row, std::size_t sample)
{
    switch (depth) {
    case IxPixelFormat::UINT8: return static_cast<float>(row[sample]);
    case IxPixelFormat::FLOAT16:
        return 256.0F * reference::fromHalf(reinterpret_cast<std::uint16_t const*>(row)[sample]);
    default: return 256.0F * reinterpret_cast<float const*>(row)[sample];
    }
}

/// Every component of every pixel differs from those around it.
int stepsAt(int x, int y, int component)
{
    return (5 * x + 77 * y + 31 * component) & 0xFF;
}

IxTile makeNumberedTile(IxPixelFormat const& format, GeRectangle<int> const& bounds)
{
    IxWriteGuard const guard(IxTile(format, bounds));
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        std::size_t sample = 0;
        for (int x = bounds.x0; x < bounds.x1; ++x) {
            for (int component = 0; component < format.getNbComponents(); ++component) {
                putSteps(format.getDepth(), guard.getRow(y), sample++, stepsAt(x, y, component));
            }
        }
    }
    return guard.getTile();
}

/// Gives 1 - value. Colour that the tile does not have is 0, alpha that it does not have is 1.
class InvertLoop : public PiPixelLoopOneSource {
public:
    InvertLoop(IxWriteGuard& destination, PiImageModifierTypes::AffectType affect)
        : PiPixelLoopOneSource(destination, affect),
          components(destination.getTile().getPixelFormat().getComponents())
    {
    }
    void processRow(Row destination, SourceRow source) override
    {
        for (std::size_t pixel = 0; pixel < source.size(); ++pixel) {
            destination[pixel] = processPixel(source[pixel]);
        }
    }
    Pixel processPixel(Pixel const& in) override
    {
        EXPECT_TRUE(components != rgb || in.alpha == 1.0F);
        EXPECT_TRUE(components != alphaOnly ||
                    (in.red == 0.0F && in.green == 0.0F && in.blue == 0.0F));
        return {1.0F - in.red, 1.0F - in.green, 1.0F - in.blue, 1.0F - in.alpha};
    }

private:
    IxPixelFormat::Components components;
};

void expectInverted(IxTile const& tile)
{
    auto const& bounds = tile.getBounds();
    auto const depth = tile.getPixelFormat().getDepth();
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        std::byte const* const row = IxReadGuard(tile).getRow(y);
        std::size_t sample = 0;
        for (int x = bounds.x0; x < bounds.x1; ++x) {
            for (int part = 0; part < tile.getPixelFormat().getNbComponents(); ++part) {
                int const expected = stepsOfOne(depth) - stepsAt(x, y, part);
                ASSERT_EQ(getSteps(depth, row, sample++), static_cast<float>(expected))
                    << "component " << part << " at " << x << ", " << y;
            }
        }
    }
}

TEST(PiPixelLoopTest, EveryFormatGetsEachPixelOfThePartThatTheDestinationCovers)
{
    struct Case {
        char const* name;
        GeRectangle<int> source, destination;
    };
    Case const cases[] = {{"the same at 0", {0, 0, 5, 3}, {0, 0, 5, 3}},
                          {"inside, from the left edge", {-2, 0, 4, 3}, {-2, 1, 3, 3}},
                          {"inside, to the right edge", {-2, -1, 4, 3}, {1, 0, 4, 2}},
                          {"a chunk", {0, 0, 256, 2}, {0, 0, 256, 2}},
                          {"a chunk, inside", {-3, 5, 300, 7}, {1, 6, 257, 7}},
                          {"a pixel short of a chunk", {0, 0, 255, 1}, {0, 0, 255, 1}},
                          {"a pixel more than a chunk", {7, 0, 264, 1}, {7, 0, 264, 1}},
                          {"two chunks", {0, 0, 512, 1}, {0, 0, 512, 1}},
                          {"two chunks and a pixel", {-1, 0, 512, 1}, {-1, 0, 512, 1}},
                          {"nothing", {0, 0, 5, 3}, {2, 2, 2, 2}}};
    for (auto const components : {alphaOnly, rgb, rgba}) {
        for (auto const depth :
             {IxPixelFormat::UINT8, IxPixelFormat::FLOAT16, IxPixelFormat::FLOAT32}) {
            for (Case const& row : cases) {
                SCOPED_TRACE(std::string(row.name) + " " + std::to_string(components) + "x" +
                             std::to_string(depth));
                IxTile const source = makeNumberedTile(makeFormat(components, depth), row.source);
                IxWriteGuard destination(IxTile(makeFormat(components, depth), row.destination));
                InvertLoop(destination, PiImageModifierTypes::AffectColourAndAlpha)
                    .process(IxReadGuard(source));
                expectInverted(destination.getTile());
            }
        }
    }
}

TEST(PiPixelLoopTest, OnlyAlphaThatIsLeftOutKeepsTheBitsOfAHalf)
{
    constexpr std::uint16_t signallingNan = 0x7C01;
    constexpr std::uint16_t quietNan = 0x7E01;
    for (auto const components : {alphaOnly, rgba}) {
        auto const nbComponents = static_cast<std::size_t>(components);
        auto const format = makeFormat(components, IxPixelFormat::FLOAT16);
        for (auto const affect :
             {PiImageModifierTypes::AffectColour, PiImageModifierTypes::AffectColourAndAlpha}) {
            for (int const width : {1, 256, 257}) {
                GeRectangle<int> const bounds{0, 0, width, 1};
                IxWriteGuard const source(IxTile(format, bounds));
                auto* const samples = reinterpret_cast<std::uint16_t*>(source.getRow(0));
                std::fill_n(samples, nbComponents * static_cast<std::size_t>(width), signallingNan);
                IxWriteGuard destination(IxTile(format, bounds));
                InvertLoop(destination, affect).process(IxReadGuard(source.getTile()));
                auto const* const results =
                    reinterpret_cast<std::uint16_t const*>(destination.getRow(0));
                bool const isKept = affect == PiImageModifierTypes::AffectColour;
                for (std::size_t pixel = 0; pixel < static_cast<std::size_t>(width); ++pixel) {
                    std::size_t const alpha = (pixel + 1) * nbComponents - 1;
                    ASSERT_EQ(results[alpha], isKept ? signallingNan : quietNan) << pixel;
                    if (nbComponents > 1) {
                        ASSERT_EQ(results[alpha - 1], quietNan) << pixel;
                    }
                }
            }
        }
    }
}

TEST(PiPixelLoopTest, SourceThatLacksPixelsOrHasOtherComponentsIsRefused)
{
    auto const format = makeFormat(rgba, IxPixelFormat::FLOAT32);
    IxTile const source = makeNumberedTile(format, {0, 0, 4, 3});
    for (GeRectangle<int> const& bounds :
         {GeRectangle<int>{-1, 0, 4, 3}, {0, -1, 4, 3}, {0, 0, 5, 3}, {0, 0, 4, 4}}) {
        IxWriteGuard destination(IxTile(format, bounds));
        InvertLoop loop(destination, PiImageModifierTypes::AffectColour);
        EXPECT_THROW(loop.process(IxReadGuard(source)), AssertionFailure);
    }
    for (auto const components : {alphaOnly, rgb}) {
        IxWriteGuard destination(
            IxTile(makeFormat(components, IxPixelFormat::FLOAT32), {0, 0, 4, 3}));
        InvertLoop loop(destination, PiImageModifierTypes::AffectColour);
        EXPECT_THROW(loop.process(IxReadGuard(source)), AssertionFailure);
    }
}

} // namespace
