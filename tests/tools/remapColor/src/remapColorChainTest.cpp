// The whole chain against the plain reference: every parameter, alone and together, on odd pixels,
// in every format, by tile and by single pixel.

#include "ToolBench.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace {

using namespace memoryHost;
using reference::ChainParams;
using reference::ChannelParams;
using reference::Mode;
using reference::Pixel;
using reference::sameBits;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

/// Standard pixels and a few hundred random ones.
Pixels const& oddPixels()
{
    static Pixels const pixels = [] {
        Pixels all = reference::standardPixels();
        Pixels const random = reference::randomPixels(400, 7);
        all.insert(all.end(), random.begin(), random.end());
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

void PrintTo(ChannelCase const& channelCase, std::ostream* stream)
{
    *stream << channelCase.name;
}

class RemapColorChannelTest : public ::testing::TestWithParam<ChannelCase> {};

TEST_P(RemapColorChannelTest, EqualsReferenceWithAndWithoutCurves)
{
    ToolBench bench;
    ChainParams params;
    params.mode = GetParam().mode;
    params.clamp = GetParam().clamp;
    params.linear = params.exr = reference::allChannels(GetParam().params);
    params.curves = {makeRandomCurve(1), makeRandomCurve(2), reference::defaultCurvePoints()};
    for (bool const adjust : {false, true}) {
        params.adjust = adjust;
        expectReference(bench, params, oddPixels());
    }
}

constexpr Mode levels = Mode::Linear;
INSTANTIATE_TEST_SUITE_P(
    Linear, RemapColorChannelTest,
    ::testing::Values(ChannelCase{"defaults", levels, {0, 1, 0, 1, 1}},
                      ChannelCase{"levels", levels, {0.1F, 0.9F, -0.2F, 1.3F, 1}},
                      ChannelCase{"levels, clamped", levels, {0.1F, 0.9F, 0.2F, 0.7F, 1}, true},
                      ChannelCase{"gamma", levels, {0.1F, 0.9F, 0, 1, 2}},
                      ChannelCase{"gamma, clamped", levels, {0.1F, 0.9F, 0, 1, 0.45F}, true},
                      ChannelCase{"gamma just one", levels, {0, 1, 0, 1, 1.0000009F}},
                      ChannelCase{"gamma no more one", levels, {0, 1, 0, 1, 1.000002F}},
                      ChannelCase{"gamma no less one", levels, {0, 1, 0, 1, 0.999998F}},
                      ChannelCase{"gamma 0", levels, {0, 1, 0, 1, 0}},
                      ChannelCase{"gamma -1", levels, {0, 1, 0, 1, -1}},
                      ChannelCase{"gamma NaN", levels, {0, 1, 0, 1, notANumber}, true},
                      ChannelCase{"gamma infinite", levels, {0, 1, 0, 1, infinity}},
                      ChannelCase{"no input span", levels, {0.5F, 0.5F, 0, 1, 1}},
                      ChannelCase{"input reversed", levels, {0.9F, 0.1F, 0, 1, 2}, true},
                      ChannelCase{"output reversed", levels, {0, 1, 0.8F, 0.2F, 1}},
                      ChannelCase{"output reversed, clamped", levels, {0, 1, 0.8F, 0.2F, 1}, true},
                      ChannelCase{"output NaN, clamped", levels, {0, 1, 0, notANumber, 1}, true},
                      ChannelCase{"huge levels", levels, {-3e38F, 3e38F, -3e38F, 3e38F, 1}},
                      ChannelCase{"tiny input span", levels, {0, 0.9e-7F, 0, 1, 1}}));

constexpr Mode display = Mode::ExrDisplay;
INSTANTIATE_TEST_SUITE_P(
    ExrDisplay, RemapColorChannelTest,
    ::testing::Values(ChannelCase{"defaults", display, reference::defaultExr},
                      ChannelCase{"doubled bracket", display, {0, 0, 7.5F, 3, 2.2F}},
                      ChannelCase{"lowest knee", display, {2, 0.1F, 3.5F, -3, 1.8F}},
                      ChannelCase{"span is target", display, {0, 0, 3.5F, 0, 2.2F}},
                      ChannelCase{"knee out of reach", display, {0, 0, 1, 0, 2.2F}},
                      ChannelCase{"knee reversed", display, {0, 0, 4, 9, 2.2F}},
                      ChannelCase{"target below zero", display, {0, 0, 10, 9, 2.2F}},
                      ChannelCase{"brightest", display, {10, 0, 5, 0, 2.2F}},
                      ChannelCase{"darkest", display, {-10, 0, 5, 0, 2.2F}},
                      ChannelCase{"all defogged", display, {0, 1e30F, 5, 0, 2.2F}},
                      ChannelCase{"gamma 0", display, {0, 0, 5, 0, 0}},
                      ChannelCase{"gamma -1", display, {0, 0.5F, 5, 0, -1}},
                      ChannelCase{"gamma NaN", display, {0, 0, 5, 0, notANumber}},
                      ChannelCase{"infinite knee", display, {0, 0, infinity, 0, 2.2F}},
                      ChannelCase{"NaN everywhere",
                                  display,
                                  {notANumber, notANumber, notANumber, notANumber, notANumber}}));

class RemapColorRandomChainTest : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(RemapColorRandomChainTest, EqualsReference)
{
    ToolBench bench;
    Pixels const pixels = reference::randomPixels(300, GetParam());
    for (std::uint32_t chain = 0; chain < 40; ++chain) {
        SCOPED_TRACE(chain);
        std::uint32_t const seed = GetParam() * 1000 + chain;
        expectReference(bench,
                        makeRandomParams(seed, chain % 2 == 0 ? Draw::WithinRanges : Draw::Wild),
                        pixels);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RemapColorRandomChainTest, ::testing::Range(1U, 6U));

/// The channels in which some pixel differs: a bit each.
int findChangedChannels(Pixels const& before, Pixels const& after)
{
    int changed = 0;
    for (std::size_t pixel = 0; pixel < before.size(); ++pixel) {
        changed |= sameBits(before[pixel].r, after[pixel].r) ? 0 : 1;
        changed |= sameBits(before[pixel].g, after[pixel].g) ? 0 : 2;
        changed |= sameBits(before[pixel].b, after[pixel].b) ? 0 : 4;
        changed |= sameBits(before[pixel].a, after[pixel].a) ? 0 : 8;
    }
    return changed;
}

TEST(RemapColorChainTest, EachParameterChangesItsChannelAlone)
{
    ToolBench bench;
    Pixels pixels;
    for (Pixel const& pixel : reference::randomPixels(100, 3)) {
        pixels.push_back({std::fabs(pixel.b), std::fabs(pixel.b), std::fabs(pixel.b), pixel.a});
    }
    ChainParams params;
    // No gamma is one: changing one channel's gamma to that must not switch the others' powers.
    params.linear = reference::allChannels(ChannelParams{0, 1, 0, 1, 1.5F});
    params.clamp = true;
    for (Mode const mode : {Mode::Linear, Mode::ExrDisplay}) {
        params.mode = mode;
        Pixels const before = bench.transform(params, pixels);
        for (int input = 0; input < 15; ++input) {
            SCOPED_TRACE(getParamInputName(mode, input / 3, input % 3));
            ChainParams changed = params;
            auto& values = mode == Mode::Linear ? changed.linear : changed.exr;
            values.at(input % 3).at(input / 3) += 0.25F;
            EXPECT_EQ(findChangedChannels(before, bench.transform(changed, pixels)),
                      1 << (input % 3));
            expectReference(bench, changed, pixels);
        }
        for (int channel = 0; channel < 3; ++channel) {
            ChainParams changed = params;
            changed.curves.at(channel) = {{-1, -1},     {0, 0},    {0.3F, 0.1F},
                                          {0.6F, 0.4F}, {1, 0.5F}, {1.5F, 0.6F}};
            EXPECT_EQ(findChangedChannels(before, bench.transform(changed, pixels)), 1 << channel);
        }
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
            ASSERT_TRUE(reference::samePixelBits(expected.transform(oddPixels()[pixel]),
                                                 result.getPixels()[pixel]));
        }
    }
}

TEST(RemapColorChainTest, SinglePixelsAreThoseOfTiles)
{
    ToolBench bench;
    for (std::uint32_t seed = 100; seed < 112; ++seed) {
        ChainParams const params = makeRandomParams(seed, Draw::Wild);
        Pixels const pixels = reference::randomPixels(20, seed);
        Pixels const tile = bench.transform(params, pixels);
        for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel) {
            auto const picked = bench.pick(pixels[pixel]);
            ASSERT_TRUE(picked.has_value());
            ASSERT_TRUE(reference::samePixelBits(tile[pixel], *picked)) << "seed " << seed;
        }
    }
}

class RemapColorRenderTest : public ::testing::TestWithParam<RenderCase> {};

TEST_P(RemapColorRenderTest, BitsDoNotDependOnThreadsOrStrips)
{
    auto const graph = makeShared<HostGraph>();
    auto const node = createToolNode(*graph, "Remap Color");
    node->setValues({{"Mode", Animated<int>(1)}, {"EXRDisplay.Gamma.Red", Animated<double>(1.7)}});
    constexpr int width = 1 << 16; // strips of some rows
    constexpr std::size_t height = 21;
    Pixels pixels = reference::randomPixels(9973, 5);
    while (pixels.size() < width * height) {
        pixels.push_back(pixels[pixels.size() - 9973]);
    }
    Picture const picture(pixels, width);
    Picture const expected = renderPicture(*node, picture, {.threads = 1, .rowsPerBlock = 100});
    EXPECT_EQ(renderPicture(*node, picture, GetParam()).bytes, expected.bytes);
}

INSTANTIATE_TEST_SUITE_P(Cases, RemapColorRenderTest,
                         ::testing::Values(RenderCase{1, 1, false}, RenderCase{2, 1, true},
                                           RenderCase{5, 1, false}, RenderCase{5, 5, true}));

/// All halves in `component` of a picture, neighbours ordinary.
Picture makeHalfPicture(int component)
{
    Picture picture(makeFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT16), {0, 0, 256, 256});
    auto const samples = picture.getSamples<std::uint16_t>();
    for (std::size_t sample = 0; sample < samples.size(); ++sample) {
        samples[sample] = static_cast<int>(sample % 4) == component
                              ? static_cast<std::uint16_t>(sample / 4)
                              : reference::toHalf(0.4F);
    }
    return picture;
}

/// What the reference makes of a half picture; alpha keeps its bits.
std::vector<std::uint16_t> transformHalves(reference::Chain const& chain,
                                           std::span<std::uint16_t const> in)
{
    std::vector<std::uint16_t> out;
    for (std::size_t sample = 0; sample < in.size(); sample += 4) {
        using reference::fromHalf;
        Pixel const pixel = chain.transform(
            {fromHalf(in[sample]), fromHalf(in[sample + 1]), fromHalf(in[sample + 2]), 0.0F});
        for (float const colour : {pixel.r, pixel.g, pixel.b}) {
            out.push_back(reference::toHalf(colour));
        }
        out.push_back(in[sample + 3]);
    }
    return out;
}

bool isHalfNan(std::uint16_t bits)
{
    return (bits & 0x7FFFU) > 0x7C00U;
}

class RemapColorHalfTest : public ::testing::TestWithParam<std::tuple<Mode, int>> {};

TEST_P(RemapColorHalfTest, EveryHalfPassesAsTheReferenceSaysAndAlphaKeepsItsBits)
{
    auto const [mode, component] = GetParam();
    ChainParams const params{.mode = mode,
                             .clamp = true,
                             .linear =
                                 reference::allChannels(ChannelParams{0.1F, 0.9F, 0, 4, 0.7F}),
                             .curves = reference::allChannels(makeRandomCurve(4))};
    ToolBench bench;
    bench.inputs.setParams(params);
    Picture picture = makeHalfPicture(component);
    bench.setPicture(picture);
    bench.buildChain();
    Picture result = readTile(bench.compute().getTileGuard().getTile());
    auto const expected =
        transformHalves(reference::Chain(params), picture.getSamples<std::uint16_t>());
    auto const actual = result.getSamples<std::uint16_t>();
    for (std::size_t sample = 0; sample < expected.size(); ++sample) {
        // The payload of a colour's NaN is the processor's.
        bool const bothNan =
            sample % 4 < 3 && isHalfNan(expected[sample]) && isHalfNan(actual[sample]);
        ASSERT_TRUE(bothNan || expected[sample] == actual[sample]) << sample;
    }
}

INSTANTIATE_TEST_SUITE_P(Components, RemapColorHalfTest,
                         ::testing::Combine(::testing::Values(Mode::Linear, Mode::ExrDisplay),
                                            ::testing::Range(0, 4)));

TEST(RemapColorChainTest, FloatAlphaKeepsEveryBit)
{
    ToolBench bench;
    Pixels pixels;
    for (std::uint32_t bits : {0x7F800001U, 0xFF812345U, 0x7FC00001U, 0x00000001U, 0x80000000U}) {
        pixels.push_back({0.5F, 0.5F, 0.5F, std::bit_cast<float>(bits)});
    }
    for (std::uint32_t seed = 0; seed < 8; ++seed) {
        Pixels const results = bench.transform(makeRandomParams(seed, Draw::WithinRanges), pixels);
        EXPECT_EQ(findChangedChannels(pixels, results) & 8, 0);
    }
}

struct FormatCase {
    IxPixelFormat::Components components;
    IxPixelFormat::Depth depth;
    int outputDepth;
};

class RemapColorFormatTest : public ::testing::TestWithParam<FormatCase> {};

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

Picture makeByteRamp(IxPixelFormat const& format)
{
    Picture picture(format, {0, 0, 64, 16});
    for (std::size_t sample = 0; sample < picture.bytes.size(); ++sample) {
        // Any bytes make halves and floats; they keep clear of NaN.
        picture.bytes[sample] = static_cast<std::byte>(sample * 7 % 120);
    }
    return picture;
}

/// The components that should come out for the pixel whose first sample that is.
std::vector<float> transformSamples(reference::Chain const& chain, Picture& picture,
                                    std::size_t first)
{
    auto const sample = [&](std::size_t component) {
        return readSample(picture, first + component);
    };
    switch (picture.format.getComponents()) {
    case IxPixelFormat::ALPHA: return {sample(0)};
    case IxPixelFormat::RGB: {
        Pixel const out = chain.transform({sample(0), sample(1), sample(2), 1.0F});
        return {out.r, out.g, out.b};
    }
    case IxPixelFormat::RGBA: break;
    }
    Pixel const out = chain.transform({sample(0), sample(1), sample(2), sample(3)});
    return {out.r, out.g, out.b, out.a};
}

TEST_P(RemapColorFormatTest, ConvertsAsTheReferenceAndKeepsMissingComponentsAway)
{
    auto const [components, depth, outputDepth] = GetParam();
    ChainParams const params = makeRandomParams(50, Draw::WithinRanges);
    ToolBench bench;
    bench.inputs.setParams(params);
    bench.inputs.set<int>("Output Depth", outputDepth);
    Picture picture = makeByteRamp(makeFormat(components, depth));
    bench.setPicture(picture);
    bench.buildChain();
    Picture result = readTile(bench.compute().getTileGuard().getTile());
    constexpr std::array depths{IxPixelFormat::UINT8, IxPixelFormat::FLOAT16,
                                IxPixelFormat::FLOAT32};
    auto const wanted = outputDepth == 3 ? depth : depths.at(outputDepth);
    ASSERT_EQ(result.format, makeFormat(components, wanted));
    reference::Chain const chain(params);
    auto const nbComponents = static_cast<std::size_t>(components);
    for (std::size_t first = 0; first < nbComponents * 64 * 16; first += nbComponents) {
        auto const expected = transformSamples(chain, picture, first);
        for (std::size_t component = 0; component < nbComponents; ++component) {
            ASSERT_TRUE(reference::nearFloat(roundTo(wanted, expected[component]),
                                             readSample(result, first + component), 0));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, RemapColorFormatTest,
    ::testing::Values(FormatCase{IxPixelFormat::RGBA, IxPixelFormat::UINT8, 3},
                      FormatCase{IxPixelFormat::RGBA, IxPixelFormat::UINT8, 2},
                      FormatCase{IxPixelFormat::RGBA, IxPixelFormat::FLOAT16, 0},
                      FormatCase{IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, 1},
                      FormatCase{IxPixelFormat::RGB, IxPixelFormat::UINT8, 1},
                      FormatCase{IxPixelFormat::RGB, IxPixelFormat::FLOAT16, 3},
                      FormatCase{IxPixelFormat::RGB, IxPixelFormat::FLOAT32, 3},
                      FormatCase{IxPixelFormat::ALPHA, IxPixelFormat::UINT8, 3},
                      FormatCase{IxPixelFormat::ALPHA, IxPixelFormat::FLOAT16, 3},
                      FormatCase{IxPixelFormat::ALPHA, IxPixelFormat::FLOAT32, 0}));

} // namespace
