// The whole chain against the plain reference: every parameter, alone and together, on odd pixels,
// in every format, by tile and by single pixel.

#include "ToolBench.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>
#include <limits>

namespace {

using namespace memoryHost;
using reference::ChainParams;
using reference::ChannelParams;
using reference::Mode;
using reference::Pixel;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

/// Standard pixels, a few hundred random ones and some with a signalling NaN in alpha.
Pixels const& oddPixels()
{
    static Pixels const pixels = [] {
        Pixels all = reference::standardPixels();
        Pixels const random = reference::randomPixels(400, 7);
        all.insert(all.end(), random.begin(), random.end());
        for (std::uint32_t const alpha : {0x7F800001U, 0xFF812345U}) {
            all.push_back({0.5F, 0.5F, 0.5F, std::bit_cast<float>(alpha)});
        }
        return all;
    }();
    return pixels;
}

struct ChannelCase {
    char const* name;
    Mode mode;
    ChannelParams params;
    bool clamp = false;
};

constexpr Mode levels = Mode::Linear;
constexpr Mode display = Mode::ExrDisplay;
ChannelCase const channelCases[] = {
    {"levels", levels, {0.1F, 0.9F, -0.2F, 1.3F, 1}},
    {"levels, clamped", levels, {0.1F, 0.9F, 0.2F, 0.7F, 1}, true},
    {"gamma, clamped", levels, {0.1F, 0.9F, 0, 1, 0.45F}, true},
    {"gamma just one", levels, {0, 1, 0, 1, 1.0000009F}},
    {"gamma no more one", levels, {0, 1, 0, 1, 1.000002F}},
    {"gamma only just one", levels, {0, 1, 0, 1, 0.9999995F}},
    {"gamma not yet one", levels, {0, 1, 0, 1, 0.9999985F}},
    {"gamma 0", levels, {0, 1, 0, 1, 0}},
    {"gamma -1", levels, {0, 1, 0, 1, -1}},
    {"gamma NaN", levels, {0, 1, 0, 1, notANumber}, true},
    {"no input span", levels, {0.5F, 0.5F, 0, 1, 1}},
    {"input reversed", levels, {0.9F, 0.1F, 0, 1, 2}, true},
    {"output reversed, clamped", levels, {0, 1, 0.8F, 0.2F, 1}, true},
    {"output NaN, clamped", levels, {0, 1, 0, notANumber, 1}, true},
    {"huge levels", levels, {-3e38F, 3e38F, -3e38F, 3e38F, 1}},
    {"defaults", display, reference::defaultExr},
    {"span is target", display, {0, 0, 3.5F, 0, 2.2F}},
    {"knee out of reach", display, {0, 0, 1, 0, 2.2F}},
    {"target below zero", display, {0, 0, 10, 9, 2.2F}},
    {"all defogged", display, {0, 1e30F, 5, 0, 2.2F}},
    {"display gamma -1", display, {0, 0.5F, 5, 0, -1}},
    {"infinite knee", display, {0, 0, infinity, 0, 2.2F}},
    {"NaN", display, {notANumber, notANumber, notANumber, notANumber, notANumber}}};

TEST(RemapColorChainTest, EveryKindOfParameterEqualsReferenceWithAndWithoutCurves)
{
    ToolBench bench;
    for (ChannelCase const& row : channelCases) {
        SCOPED_TRACE(row.name);
        ChainParams params;
        params.mode = row.mode;
        params.clamp = row.clamp;
        params.linear = params.exr = reference::allChannels(row.params);
        params.curves = {makeRandomCurve(1), makeRandomCurve(2), reference::defaultCurvePoints()};
        for (bool const adjust : {false, true}) {
            params.adjust = adjust;
            expectReference(bench, params, oddPixels());
        }
    }
}

TEST(RemapColorChainTest, AParameterOfOneChannelLeavesTheOthersAsTheyAre)
{
    constexpr ChannelParams otherLevels{0.1F, 0.9F, -0.2F, 1.3F, 2};
    constexpr ChannelParams otherDisplay{1.5F, 0.2F, 4, 1.2F, 1.7F};
    ToolBench bench;
    for (Mode const mode : {levels, display}) {
        for (std::size_t changed = 0; changed < 15; ++changed) {
            std::size_t const channel = changed % 3;
            SCOPED_TRACE(
                getParamInputName(mode, static_cast<int>(changed / 3), static_cast<int>(channel)));
            ChainParams params;
            params.mode = mode;
            params.linear[channel][changed / 3] = otherLevels[changed / 3];
            params.exr[channel][changed / 3] = otherDisplay[changed / 3];
            for (bool const isFurther : {false, true}) { // clamp, and a curve for the channel
                params.clamp = params.adjust = isFurther;
                expectReference(bench, params, oddPixels());
                params.curves[channel] = makeRandomCurve(static_cast<std::uint32_t>(changed));
            }
        }
    }
}

TEST(RemapColorChainTest, RandomParametersOfEachChannelEqualReference)
{
    ToolBench bench;
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        expectReference(bench,
                        makeRandomParams(seed, seed % 2 == 0 ? Draw::WithinRanges : Draw::Wild),
                        reference::randomPixels(300, seed));
    }
}

TEST(RemapColorChainTest, DefaultsOfANewNodeAreThoseOfTheReference)
{
    auto const graph = makeShared<HostGraph>();
    auto const node = createToolNode(*graph, "Remap Color");
    for (Mode const mode : {Mode::Linear, Mode::ExrDisplay}) {
        node->setValues({{"Mode", Animated<int>(static_cast<int>(mode))}});
        reference::Chain const expected(ChainParams{.mode = mode});
        Picture result = renderPicture(*node, Picture(oddPixels()));
        for (std::size_t pixel = 0; pixel < oddPixels().size(); ++pixel) {
            ASSERT_TRUE(
                reference::isChainResult(expected, oddPixels()[pixel], result.getPixels()[pixel]));
        }
    }
}

TEST(RemapColorChainTest, BitsDoNotDependOnThreadsOrStrips)
{
    auto const graph = makeShared<HostGraph>();
    auto const node = createToolNode(*graph, "Remap Color");
    node->setValues({{"Mode", Animated<int>(1)}, {"EXRDisplay.Gamma.Red", Animated<double>(1.7)}});
    constexpr int width = 1 << 16; // strips of some rows
    Pixels pixels = reference::randomPixels(9973, 5);
    while (pixels.size() < 21 * width) {
        pixels.push_back(pixels[pixels.size() - 9973]);
    }
    Picture const picture(pixels, width);
    Picture const expected = renderPicture(*node, picture, {.threads = 1, .rowsPerBlock = 100});
    for (auto const& renderCase : {RenderCase{1, 1, false}, RenderCase{2, 1, true},
                                   RenderCase{16, 1, false}, RenderCase{5, 5, true}}) {
        EXPECT_TRUE(renderPicture(*node, picture, renderCase).bytes == expected.bytes)
            << renderCase.threads << " threads, " << renderCase.rowsPerBlock << " rows";
    }
}

/// Of a picture that is large enough for tables of halves, each component takes all of them in an
/// order of its own; its parts are not.
TEST(RemapColorChainTest, LargeHalfPicturesAreTheirPartsToTheBit)
{
    auto const graph = makeShared<HostGraph>();
    auto const node = createToolNode(*graph, "Remap Color");
    struct Row {
        char const* name;
        NodeValues values;
    };
    CurvePoints curve;
    for (auto const& [x, y] : makeRandomCurve(3)) {
        curve.push_back({x, y});
    }
    for (auto const& [name, values] :
         {Row{"levels", {{"Mode", Animated<int>(0)}, {"Linear.Gamma.Red", Animated<double>(2.2)}}},
          Row{"clamped", {{"Linear.Clamp", Animated<bool>(true)}}},
          Row{"display", {{"Mode", Animated<int>(1)}}},
          Row{"curve", {{"Adjust Curve.Green", Animated<CurvePoints>(curve)}}},
          Row{"no curve", {{"Adjust", Animated<bool>(false)}}},
          Row{"mixed", {{"Mix", Animated<double>(0.3)}}}}) {
        SCOPED_TRACE(name);
        node->setValues(values);
        for (auto const components : {IxPixelFormat::RGBA, IxPixelFormat::RGB}) {
            Picture picture(makeFormat(components, IxPixelFormat::FLOAT16), {0, 0, 1024, 512});
            auto const samples = picture.getSamples<std::uint16_t>();
            for (std::size_t sample = 0; sample < samples.size(); ++sample) {
                auto const component = sample % static_cast<std::size_t>(components);
                samples[sample] =
                    static_cast<std::uint16_t>(sample * (4099 + 2 * component) + sample / 65536);
            }
            Picture const whole = renderPicture(*node, picture, {.threads = 2});
            Picture part(picture.format, {0, 0, 1024, 32});
            std::size_t const partBytes = part.bytes.size();
            for (std::size_t place = 0; place < picture.bytes.size(); place += partBytes) {
                std::copy_n(&picture.bytes[place], partBytes, part.bytes.begin());
                ASSERT_EQ(std::memcmp(renderPicture(*node, part).bytes.data(), &whole.bytes[place],
                                      partBytes),
                          0);
            }
        }
    }
}

/// A sample of a picture of any depth as float.
float readSample(Picture& picture, std::size_t index)
{
    switch (picture.format.getDepth()) {
    case IxPixelFormat::UINT8:
        return reference::fromByte(picture.getSamples<std::uint8_t>()[index]);
    case IxPixelFormat::FLOAT16:
        return reference::fromHalf(picture.getSamples<std::uint16_t>()[index]);
    default: return picture.getSamples<float>()[index];
    }
}

/// A float as it comes out of a tile of that depth.
float roundTo(IxPixelFormat::Depth depth, float value)
{
    switch (depth) {
    case IxPixelFormat::UINT8: return reference::fromByte(reference::toByte(value));
    case IxPixelFormat::FLOAT16: return reference::fromHalf(reference::toHalf(value));
    default: return value;
    }
}

/// 65,536 pixels in which each component takes every byte and every half.
Picture makePicture(IxPixelFormat const& format)
{
    Picture picture(format, {0, 0, 256, 256});
    auto const components = static_cast<std::size_t>(format.getNbComponents());
    for (std::size_t sample = 0; sample < components * 65536; ++sample) {
        std::size_t const bits = (sample / components * 4099 + sample % components * 77) % 65536;
        if (format.getDepth() == IxPixelFormat::UINT8) {
            picture.getSamples<std::uint8_t>()[sample] = static_cast<std::uint8_t>(bits);
        } else if (format.getDepth() == IxPixelFormat::FLOAT16) {
            picture.getSamples<std::uint16_t>()[sample] = static_cast<std::uint16_t>(bits);
        } else {
            picture.getSamples<float>()[sample] = static_cast<float>(bits) * 0x1p-12F - 8.0F;
        }
    }
    return picture;
}

/// The components that should come out for the pixel whose first sample that is.
std::vector<float> transformSamples(reference::Chain const& chain, Picture& picture,
                                    std::size_t first)
{
    int const components = picture.format.getNbComponents();
    auto const sample = [&](std::size_t component) {
        return readSample(picture, first + component);
    };
    if (components == 1) {
        return {sample(0)};
    }
    Pixel const out = chain.transform({sample(0), sample(1), sample(2), 1.0F}, {});
    return components == 3 ? std::vector{out.r, out.g, out.b}
                           : std::vector{out.r, out.g, out.b, sample(3)};
}

struct FormatCase {
    IxPixelFormat::Components components;
    IxPixelFormat::Depth depth;
    int outputDepth;
};

struct RemapColorFormatTest : ::testing::TestWithParam<FormatCase> {};

TEST_P(RemapColorFormatTest, ConvertsAsTheReferenceAndKeepsTheBitsOfAlpha)
{
    auto const [components, depth, outputDepth] = GetParam();
    ChainParams params = makeRandomParams(50, Draw::WithinRanges);
    params.mode = Mode::Linear;
    for (auto& channel : params.linear) {
        channel[4] = 1.0F; // without powers every bit is sure
    }
    ToolBench bench;
    bench.inputs.setParams(params);
    bench.inputs.set<int>("Output Depth", outputDepth);
    Picture picture = makePicture(makeFormat(components, depth));
    bench.setPicture(picture);
    bench.buildChain();
    Picture result = bench.computePicture();
    constexpr std::array depths{IxPixelFormat::UINT8, IxPixelFormat::FLOAT16,
                                IxPixelFormat::FLOAT32};
    auto const wanted = outputDepth == 3 ? depth : depths.at(outputDepth);
    ASSERT_EQ(result.format, makeFormat(components, wanted));
    reference::Chain const chain(params);
    auto const nbComponents = static_cast<std::size_t>(components);
    std::size_t const sampleBytes = picture.format.getBytesPerPixel() / nbComponents;
    for (std::size_t sample = 0; sample < nbComponents * 65536; ++sample) {
        std::size_t const component = sample % nbComponents;
        float const expected = transformSamples(chain, picture, sample - component)[component];
        ASSERT_TRUE(reference::sameValue(roundTo(wanted, expected), readSample(result, sample)));
    }
    for (int const mode : {0, 1}) {
        bench.inputs.set<int>("Mode", mode);
        Picture const made = bench.computePicture();
        bool const keepsAlpha = nbComponents != 3 && wanted == depth;
        for (std::size_t pixel = 1; keepsAlpha && pixel <= 65536; ++pixel) {
            std::size_t const byte = (pixel * nbComponents - 1) * sampleBytes;
            ASSERT_EQ(std::memcmp(&made.bytes[byte], &picture.bytes[byte], sampleBytes), 0)
                << mode << " " << pixel;
        }
    }
}

constexpr auto rgba = IxPixelFormat::RGBA;
constexpr auto rgb = IxPixelFormat::RGB;
constexpr auto alpha = IxPixelFormat::ALPHA;
INSTANTIATE_TEST_SUITE_P(Formats, RemapColorFormatTest,
                         ::testing::Values(FormatCase{rgba, IxPixelFormat::UINT8, 3},
                                           FormatCase{rgba, IxPixelFormat::UINT8, 2},
                                           FormatCase{rgba, IxPixelFormat::FLOAT16, 0},
                                           FormatCase{rgba, IxPixelFormat::FLOAT16, 3},
                                           FormatCase{rgba, IxPixelFormat::FLOAT32, 1},
                                           FormatCase{rgb, IxPixelFormat::UINT8, 1},
                                           FormatCase{rgb, IxPixelFormat::FLOAT16, 3},
                                           FormatCase{alpha, IxPixelFormat::UINT8, 3},
                                           FormatCase{alpha, IxPixelFormat::FLOAT16, 3},
                                           FormatCase{alpha, IxPixelFormat::FLOAT32, 0}));

} // namespace
