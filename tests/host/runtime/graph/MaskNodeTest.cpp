// The blend of source and result after a chain.

#include "runtime/graph/MaskNode.h"

#include "runtime/engine/DeliveredStrip.h"
#include "runtime/engine/MaskImageNode.h"
#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace memoryHost;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

constexpr GeRectangle<int> region{0, 0, 4, 3}; // of requests

/// Four pixels in a row from (0, 0).
struct MaskNodeTest : ::testing::Test {
    MaskNodeTest()
    {
        mix->valueAt = [](double) { return 1.0; };
        chain->setPicture(
            makeRow({{0.5F, 8, 0, 9}, {0.5F, 8, 0, 9}, {0.5F, 8, 0, 9}, {1, 1, 1, 9}}));
        source->setPicture(makeRow({{0, 4, 0, 9}, {0, 4, -0.0F, 9}, {0, 4, 0, 9}, {2, 2, 2, 9}}));
    }

    ~MaskNodeTest() noexcept override = default;

    static Picture makeRow(Pixels const& pixels)
    {
        Picture picture(pixels, static_cast<int>(pixels.size()));
        picture.window = {0, 0, static_cast<int>(pixels.size()), 1};
        return picture;
    }

    PxImageResult compute(PxNodePtr<PxImageProtocol const> const& mask)
    {
        auto const node = castNode<PxImageProtocol const>(
            addMask(PxNodePtr<PxNode const>(chain), PxStrongHndl<>(mix.get()),
                    PxNodePtr<PxImageProtocol const>(source), mask));
        return computeTile(*node, region, 7.0);
    }
    Pixels computePixels(PxNodePtr<PxImageProtocol const> const& mask)
    {
        return readTile(compute(mask).getTileGuard().getTile()).getPixels();
    }

    Journal journal;
    PxStrongHndl<FakeSource> source = makeNode<FakeSource>(journal);
    PxStrongHndl<FakeSource> chain = makeNode<FakeSource>(journal);
    PxStrongHndl<FakeSource> mask = makeNode<FakeSource>(journal);
    using MixNode = FakeNode<double>;
    PxStrongHndl<MixNode> mix = makeNode<MixNode>("mix", journal);
};

TEST_F(MaskNodeTest, WithoutMaskAndAtFullMixTheResultIsHandedOnAndTheSourceNotAsked)
{
    EXPECT_EQ(computePixels({})[0].r, 0.5F);
    EXPECT_EQ(journal, (Journal{"read mix", "read source"}));
}

TEST_F(MaskNodeTest, SharesAreMaskTimesMix)
{
    struct Case {
        double mix;
        std::vector<float> alphas; ///< of a mask from x = 0; empty for no mask
        std::vector<float> wanted; ///< red of the pixels
    };
    for (auto const& [mixValue, alphas, wanted] :
         {Case{0.25, {}, {0.125F, 0.125F, 0.125F, 1.75F}}, Case{0, {}, {0, 0, 0, 2}},
          Case{1, {0.5F, 1.5F}, {0.25F, 0.5F, 0, 2}},
          Case{0.5, {1, -1, 0.5F}, {0.25F, 0, 0.125F, 2}},
          Case{1, {notANumber, 0, 1, 1}, {0, 0, 0.5F, 1}}}) {
        mix->valueAt = [value = mixValue](double time) { return time == 7.0 ? value : 1.0; };
        PxNodePtr<PxImageProtocol const> connected;
        if (!alphas.empty()) {
            Pixels pixels;
            for (float const alpha : alphas) {
                pixels.push_back({77, 77, 77, alpha});
            }
            mask->setPicture(makeRow(pixels));
            connected = PxNodePtr<PxImageProtocol const>(mask);
        }
        Pixels const pixels = computePixels(connected);
        for (std::size_t index = 0; index < wanted.size(); ++index) {
            EXPECT_EQ(pixels[index].r, wanted[index]) << mixValue << " " << index;
            EXPECT_EQ(pixels[index].a, 9.0F);
        }
    }
}

TEST_F(MaskNodeTest, SharesOfNoneAndAllAreExactWhateverTheOtherSideHolds)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    source->setPicture(makeRow({{1, 2, 3, 4}, {notANumber, infinity, notANumber, 4}, {}, {}}));
    chain->setPicture(makeRow({{notANumber, infinity, notANumber, 5}, {6, 7, 8, 5}, {}, {}}));
    mask->setPicture(makeRow({{0, 0, 0, 0}, {0, 0, 0, 1}}));
    Pixels const pixels = computePixels(PxNodePtr<PxImageProtocol const>(mask));
    EXPECT_EQ((std::vector{pixels[0].r, pixels[0].g, pixels[0].b, pixels[0].a}),
              (std::vector{1.0F, 2.0F, 3.0F, 5.0F}));
    EXPECT_EQ((std::vector{pixels[1].r, pixels[1].g, pixels[1].b, pixels[1].a}),
              (std::vector{6.0F, 7.0F, 8.0F, 5.0F}));
}

TEST_F(MaskNodeTest, MasksCoverAnyPartOfThePictureAndMayBeInverted)
{
    constexpr GeRectangle<int> window{0, 0, 3, 3};
    auto const fill = [](GeRectangle<int> const& bounds, reference::Pixel const& first) {
        Picture picture(makeFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32), bounds);
        float* sample = picture.getSamples<float>().data();
        for (int pixel = 0; pixel < bounds.getWidth() * bounds.getHeight(); ++pixel) {
            auto const step = static_cast<float>(pixel);
            for (float const value : {first.r, first.g, first.b, first.a}) {
                *sample++ = value + step;
            }
        }
        return picture;
    };
    source->setPicture(fill(window, {0, 100, 200, 300}));
    chain->setPicture(fill(window, {64, 132, 264, 900}));
    mix->valueAt = [](double) { return 0.5; };
    dynamic_cast<FakeValidity&>(*mix).validity = {2.0, 8.0};
    for (GeRectangle<int> const& bounds : {GeRectangle<int>{0, 0, 3, 3},
                                           {1, 1, 2, 2},
                                           {-2, 1, 1, 5},
                                           {2, -3, 9, 1},
                                           {0, 2, 3, 3},
                                           {4, 0, 6, 3},
                                           {0, -4, 3, 0},
                                           {0, 3, 3, 5}}) {
        for (MaskUse const use : {MaskUse::AsIs, MaskUse::Inverted}) {
            Picture picture = fill(bounds, {7, 7, 7, 0.25F});
            ImageInfo info = picture.getInfo();
            auto const node = makeNode<MaskImageNode>(info, use);
            DeliveredStrip const delivered(*node, copyToTile(picture, intersect(bounds, region)));
            auto const result = compute(PxNodePtr<PxImageProtocol const>(node));
            EXPECT_EQ(result.getValidity(), PxValidityInterval(2.0, 8.0));
            Pixels const pixels = readTile(result.getTileGuard().getTile()).getPixels();
            bool hadEffect = false;
            for (int index = 0; index < 9; ++index) {
                int const x = index % 3;
                int const y = index / 3;
                int const number = (y - bounds.y0) * bounds.getWidth() + x - bounds.x0;
                bool const isInside = bounds.contains({x, y, x + 1, y + 1});
                float const covered =
                    isInside ? std::min(static_cast<float>(number) + 0.25F, 1.0F) : 0.0F;
                float const share = 0.5F * (use == MaskUse::AsIs ? covered : 1.0F - covered);
                hadEffect = hadEffect || share > 0.0F;
                auto const& [r, g, b, a] = pixels[static_cast<std::size_t>(index)];
                auto const step = static_cast<float>(index);
                EXPECT_EQ(r, step + 64 * share) << x << " " << y << " of " << bounds.x0;
                EXPECT_EQ(g, 100 + step + 32 * share);
                EXPECT_EQ(b, 200 + step + 64 * share);
                EXPECT_EQ(a, 900 + step);
            }
            EXPECT_EQ(node->isInVain(), !hadEffect);
        }
    }
}

TEST_F(MaskNodeTest, MaskWithoutAlphaCountsByItsFirstChannelAndLiesWhereItLies)
{
    Picture picture(makeFormat(IxPixelFormat::RGB, IxPixelFormat::UINT8), {-1, 0, 2, 1});
    std::uint8_t const samples[] = {255, 0, 0, 0, 255, 255, 255, 0, 0};
    std::copy(std::begin(samples), std::end(samples), picture.getSamples<std::uint8_t>().begin());
    mask->setPicture(picture);
    mask->validity = {1.0, 9.0};
    PxImageResult const result = compute(PxNodePtr<PxImageProtocol const>(mask));
    EXPECT_EQ(result.getValidity(), PxValidityInterval(1.0, 9.0));
    Pixels const pixels = readTile(result.getTileGuard().getTile()).getPixels();
    EXPECT_EQ(pixels[0].g, 4.0F);
    EXPECT_EQ(pixels[1].g, 8.0F);
    EXPECT_EQ(pixels[2].g, 4.0F);
}

} // namespace
