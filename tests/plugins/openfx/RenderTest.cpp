#include "BundleTest.h"

namespace {

using Layout = OfxTestImage::Layout;
namespace Depth = OfxText::Depth;
namespace Components = OfxText::Components;

constexpr int depthOfInput = 3;

class BundleRender : public BundleTest {};

TEST_F(BundleRender, FloatPicturesAreTheNativeToolsInEveryBit)
{
    load();
    for (Look const& look : allLooks()) {
        for (Layout const& layout :
             {Layout{}, Layout{.bounds = {-7, -3, 30, 11}, .padding = 20, .isTopDown = true},
              Layout{.components = Components::rgb, .shift = 4},
              Layout{.bounds = {5, 5, 6, 40}, .padding = 3, .shift = 1}}) {
            OfxTestImage source = makePicture(layout);
            OfxTestImage output({.components = layout.components, .bounds = layout.bounds});
            OfxImageEffect& effect = makeEffect(&source, &output);
            apply(look, effect);
            EXPECT_EQ(renderAll(effect, output), renderNative(look, source, depthOfInput))
                << look.name << ", shift " << layout.shift;
        }
    }
}

TEST_F(BundleRender, OtherDepthsAreConvertedAsTheNativeToolDoes)
{
    load();
    struct Case {
        char const* from;
        char const* to;
        int toolDepth;
    };
    for (auto const& [from, to, toolDepth] :
         {Case{Depth::byte, Depth::byte, depthOfInput}, Case{Depth::byte, Depth::single, 2},
          Case{Depth::half, Depth::half, depthOfInput}, Case{Depth::half, Depth::byte, 0},
          Case{Depth::single, Depth::half, 1}, Case{Depth::single, Depth::byte, 0}}) {
        for (Look const& look : allLooks()) {
            OfxTestImage source = makePicture({.depth = from, .shift = 2});
            OfxTestImage output({.depth = to, .padding = 6});
            OfxImageEffect& effect = makeEffect(&source, &output);
            apply(look, effect);
            EXPECT_EQ(renderAll(effect, output), renderNative(look, source, toolDepth))
                << look.name << ": " << from << " to " << to;
        }
    }
}

TEST_F(BundleRender, ShortsStandFor0To1AndAreRoundedToNearest)
{
    load();
    // Every integer passes a picture without change.
    Layout const layout{.depth = Depth::word, .bounds = {0, 0, 64, 256}};
    OfxTestImage source(layout);
    OfxTestImage output(layout);
    Bytes bytes(source.read().size());
    for (std::size_t sample = 0; sample < bytes.size() / 2; ++sample) {
        auto const integer = static_cast<std::uint16_t>(sample);
        std::memcpy(bytes.data() + 2 * sample, &integer, 2);
    }
    source.write(bytes);
    OfxImageEffect& effect = makeEffect(&source, &output);
    effect.param("adjust").value = 0;
    EXPECT_EQ(renderAll(effect, output), bytes);

    OfxTestImage floats({.bounds = {0, 0, 2, 1}});
    std::vector<float> const values = {NAN, -1.0F, 7.0F, 0.25F, 0.5F, INFINITY, 0.99999F, 1.0F};
    std::memcpy(floats.getPixel(0, 0), values.data(), values.size() * sizeof(float));
    OfxTestImage rounded({.depth = Depth::word, .bounds = {0, 0, 2, 1}});
    OfxImageEffect& other = makeEffect(&floats, &rounded);
    other.param("adjust").value = 0;
    Bytes const result = renderAll(other, rounded);
    std::vector<std::uint16_t> integers(8);
    std::memcpy(integers.data(), result.data(), result.size());
    EXPECT_EQ(integers,
              (std::vector<std::uint16_t>{0, 0, 65535, 16384, 32768, 65535, 65534, 65535}));
}

TEST_F(BundleRender, AlphaPassesWithEveryBit)
{
    load();
    for (char const* const depth : {Depth::byte, Depth::word, Depth::half, Depth::single}) {
        Layout const layout{.depth = depth, .components = Components::alpha};
        OfxTestImage source = makePicture(layout);
        OfxTestImage output(layout);
        OfxImageEffect& effect = makeEffect(&source, &output);
        apply(allLooks()[3], effect);
        EXPECT_EQ(renderAll(effect, output), source.read()) << depth;
    }
}

TEST_F(BundleRender, TilesMakeTheWholeAndNothingElse)
{
    load();
    Layout const layout{.bounds = {-20, -20, 80, 60}, .padding = 12, .isTopDown = true};
    OfxTestImage source = makePicture(layout);
    OfxTestImage whole(layout);
    OfxTestImage tiled(layout);
    Look const& look = allLooks()[2];
    OfxImageEffect& effect = makeEffect(&source, &whole);
    apply(look, effect);
    Bytes const expected = renderAll(effect, whole);
    effect.clip("Output").image = &tiled;
    for (int y = -20; y < 60; y += 31) {
        for (int x = -20; x < 80; x += 7) {
            EXPECT_EQ(host->render(effect, {x, y, x + 7, y + 31}), OfxStat::ok);
        }
    }
    EXPECT_EQ(tiled.read(), expected);
    EXPECT_TRUE(tiled.hasCleanGuards());
}

TEST_F(BundleRender, OutsideTheSourceIsTransparentBlack)
{
    load();
    OfxTestImage source = makePicture({.bounds = {2, 2, 6, 4}});
    OfxTestImage output({.bounds = {0, 0, 8, 6}});
    OfxImageEffect& effect = makeEffect(&source, &output);
    effect.param("linearOutputLevelMinRed").value = 0.5;
    renderAll(effect, output);
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 8; ++x) {
            bool const isInside = x >= 2 && x < 6 && y >= 2 && y < 4;
            Bytes const pixel(output.getPixel(x, y), output.getPixel(x, y) + 16);
            EXPECT_EQ(pixel == Bytes(16), !isInside) << x << ", " << y;
        }
    }
    effect.clip("Source").image = nullptr;
    EXPECT_EQ(renderAll(effect, output), Bytes(output.read().size()));
}

TEST_F(BundleRender, MaskAndMixBlendAsTheNativeHostDoes)
{
    load();
    Look const& look = allLooks()[1];
    OfxTestImage source = makePicture({});
    OfxTestImage output(Layout{});
    OfxImageEffect& effect = makeEffect(&source, &output, OfxText::Context::general);
    apply(look, effect);
    Bytes const unmixed = renderAll(effect, output);
    effect.param("mix").value = 0.25;
    Bytes const mixed = renderAll(effect, output);
    EXPECT_EQ(mixed, renderNative(look, source, depthOfInput, 0.25));

    // Covers a part only: 1 in one column, 0.25 in the next, nothing beyond.
    OfxTestImage mask({.components = Components::alpha, .bounds = {3, 0, 5, 8}});
    Bytes bytes = mask.read();
    for (std::size_t row = 0; row < 8; ++row) {
        float const shares[2] = {1.0F, 0.25F};
        std::memcpy(bytes.data() + row * sizeof shares, shares, sizeof shares);
    }
    mask.write(bytes);
    effect.param("mix").value = 1.0;
    effect.clip("Mask").image = &mask;
    Bytes const masked = renderAll(effect, output);
    Bytes const plain = source.read();
    for (std::size_t at = 0; at < masked.size(); at += 16) {
        std::size_t const x = at / 16 % 16;
        Bytes const& expected = x == 3 ? unmixed : x == 4 ? mixed : plain;
        EXPECT_EQ(std::memcmp(&masked[at], &expected[at], 16), 0) << "x " << x;
    }
    // A tile that the mask does not reach.
    OfxTestImage empty({.components = Components::alpha, .bounds = {3, 0, 3, 0}});
    effect.clip("Mask").image = &empty;
    EXPECT_EQ(renderAll(effect, output), plain);
    effect.clip("Mask").image = &mask;
    // A host has a mask where nothing is connected, or says that there is one and has none.
    auto& properties = effect.clip("Mask").properties.values;
    properties[OfxText::Prop::clipConnected] = {0};
    EXPECT_EQ(renderAll(effect, output), unmixed);
    properties[OfxText::Prop::clipConnected] = {1};
    effect.clip("Mask").image = nullptr;
    EXPECT_EQ(renderAll(effect, output), unmixed);
}

TEST_F(BundleRender, PremultipliedPicturesAreDividedAndMultipliedAgain)
{
    load();
    OfxTestImage source({.bounds = {0, 0, 3, 1}});
    std::vector<float> const in = {0.25F, 0.5F, 0.125F, 0.5F, 0.25F, 1.0F,
                                   2.0F,  0.0F, 0.25F,  0.5F, 0.75F, 1.0F};
    std::memcpy(source.getPixel(0, 0), in.data(), in.size() * sizeof(float));
    OfxTestImage output({.bounds = {0, 0, 3, 1}});
    OfxImageEffect& effect = makeEffect(&source, &output);
    effect.param("adjust").value = 0;
    effect.param("unpremult").value = 1;
    for (char const* const channel : {"Red", "Green", "Blue"}) {
        effect.param(std::string("linearOutputLevelMin") + channel).value = 0.5;
        effect.param(std::string("linearOutputLevelMax") + channel).value = 1.5;
    }
    Bytes const bytes = renderAll(effect, output);
    std::vector<float> out(12);
    std::memcpy(out.data(), bytes.data(), bytes.size());
    // (colour / alpha + 0.5) * alpha; without alpha, colour + 0.5.
    EXPECT_EQ(out, (std::vector<float>{0.5F, 0.75F, 0.375F, 0.5F, 0.75F, 1.5F, 2.5F, 0.0F, 0.75F,
                                       1.0F, 1.25F, 1.0F}));
}

TEST_F(BundleRender, HostsThatFailGetAStatusAndTheirImagesBack)
{
    load();
    OfxTestImage source = makePicture({});
    OfxTestImage output(Layout{});
    OfxImageEffect& effect = makeEffect(&source, &output);
    OfxRectI const window = output.layout.bounds;

    effect.clip("Source").image = nullptr;
    effect.clip("Source").statusWithoutImage = OfxStat::memory;
    EXPECT_EQ(host->render(effect, window), OfxStat::memory);
    effect.clip("Source").image = &source;
    effect.clip("Output").image = nullptr;
    EXPECT_EQ(host->render(effect, window), OfxStat::failed);
    effect.clip("Output").image = &output;
    for (char const* const missing :
         {OfxText::Prop::imageBounds, OfxText::Prop::pixelDepth, OfxText::Prop::components}) {
        OfxTestImage broken = makePicture({});
        broken.properties.values.erase(missing);
        effect.clip("Source").image = &broken;
        EXPECT_EQ(host->render(effect, window), OfxStat::imageFormat) << missing;
    }
    effect.clip("Source").image = &source;
    effect.param("adjustCurveText").value = std::string("red=0,0 1");
    host->messages.clear();
    EXPECT_EQ(host->render(effect, window), OfxStat::failed);
    ASSERT_EQ(host->messages.size(), 1);
    EXPECT_NE(host->messages[0].find("line 1: key 2: \"1\" is no point"), std::string::npos)
        << host->messages[0];
    EXPECT_EQ(host->nbLentImages, 0);

    // A window beyond the image: what there is.
    effect.param("adjustCurveText").value = std::string();
    EXPECT_EQ(host->render(effect, {-100, -100, 100, 100}), OfxStat::ok);
    EXPECT_TRUE(output.hasCleanGuards());
}

TEST_F(BundleRender, AStopIsHeardBeforeTheNextRows)
{
    load();
    for (char const* const depth : {Depth::half, Depth::single}) {
        OfxTestImage source = makePicture({.depth = depth, .bounds = {0, 0, 1024, 512}});
        OfxTestImage output(source.layout);
        OfxImageEffect& effect = makeEffect(&source, &output);
        int nbQuestions = 0;
        host->wantsAbort = [&] { return ++nbQuestions == 2; };
        EXPECT_EQ(host->render(effect, source.layout.bounds), OfxStat::ok);
        EXPECT_EQ(nbQuestions, 2);
        EXPECT_EQ(std::to_integer<int>(*output.getPixel(0, 64)), 0xa5);
    }
}

} // namespace
