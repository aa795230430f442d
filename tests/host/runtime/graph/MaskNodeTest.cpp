// The blend of source and result after a chain.

#include "runtime/graph/MaskNode.h"

#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace memoryHost;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

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
        return computeTile(*node, {0, 0, 4, 1}, 7.0);
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
