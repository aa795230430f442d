// Large half pictures by tables: only where a component of colour decides alone.

#include "runtime/engine/HalfTables.h"

#include "runtime/engine/MaskFeed.h"
#include "runtime/engine/RenderEngine.h"
#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace memoryHost;

using Halves = std::array<std::uint16_t, 4>; // RGBA

constexpr double someTime = 12.5;

/// Changes every pixel on its own.
struct PixelNode : PxImageNode {
    using Change = Halves (*)(Halves pixel, int x, int y);

    PixelNode(Init const& init, PxNodePtr<PxImageProtocol const> const& imageSource,
              Change pixelChange)
        : PxNode(init), PxImageNode(init, imageSource), source(imageSource), change(pixelChange)
    {
    }
    PxImageResult computeImage(PxImageContext const& context) const override
    {
        ++nbCalls;
        EXPECT_EQ(context.getTime(), someTime);
        Picture picture = readTile(source->computeImage(context).getTileGuard().getTile());
        auto const components = static_cast<std::size_t>(picture.format.getNbComponents());
        auto const halves = picture.getSamples<std::uint16_t>();
        for (std::size_t first = 0; first < halves.size(); first += components) {
            auto const pixel = static_cast<int>(first / components);
            Halves values{};
            std::copy_n(&halves[first], components, values.begin());
            int const width = picture.window.getWidth();
            values = change(values, picture.window.x0 + pixel % width,
                            picture.window.y0 + pixel / width);
            std::copy_n(values.begin(), components, &halves[first]);
        }
        return {copyToTile(picture, picture.window), PxValidityInterval::getFull()};
    }

    PxNodePtr<PxImageProtocol const> source;
    Change change;
    mutable std::atomic<int> nbCalls = 0;
};

struct ChangeCase {
    char const* name;
    PixelNode::Change change;
    bool isByTables;
};
ChangeCase const changeCases[] = {
    {"each for itself",
     [](Halves p, int, int) {
         return Halves{static_cast<std::uint16_t>(p[0] * 3), static_cast<std::uint16_t>(~p[1]),
                       static_cast<std::uint16_t>(p[2] ^ 0x55), p[3]};
     },
     true},
    {"nothing", [](Halves p, int, int) { return p; }, true},
    {"red by blue",
     [](Halves p, int, int) {
         return Halves{p[2], p[1], p[2], p[3]};
     },
     false},
    {"green where red is one value",
     [](Halves p, int, int) {
         return Halves{p[0], p[0] == 77 ? p[1] : std::uint16_t{0}, p[2], p[3]};
     },
     false},
    {"by column",
     [](Halves p, int x, int) {
         return Halves{p[0], p[1], static_cast<std::uint16_t>(p[2] + x), p[3]};
     },
     false},
    {"by row",
     [](Halves p, int, int y) {
         return Halves{p[0], p[1], static_cast<std::uint16_t>(p[2] + (y < 256 ? 1 : 0)), p[3]};
     },
     false},
};

struct Way {
    IxPixelFormat::Components components;
    int threads;
};

TEST(HalfTablesTest, ResultsAreTheChainsWhateverItDoes)
{
    for (ChangeCase const& row : changeCases) {
        for (Way const way : {Way{IxPixelFormat::RGBA, 1}, Way{IxPixelFormat::RGB, 4}}) {
            SCOPED_TRACE(row.name);
            Picture picture(makeFormat(way.components, IxPixelFormat::FLOAT16),
                            {-9, 40, 1024 - 9, 40 + 513});
            std::uint32_t state = 1;
            for (std::uint16_t& half : picture.getSamples<std::uint16_t>()) {
                half = static_cast<std::uint16_t>((state = state * 747796405U + 1U) >> 16U);
            }
            MemorySource source(picture);
            auto const start = makeNode<SourceImageNode>(source.getInfo());
            auto const chain =
                makeNode<PixelNode>(PxNodePtr<PxImageProtocol const>(start.get()), row.change);
            MemorySink sink(picture.format, picture.window);
            renderImage(*chain, *start, source, sink,
                        {someTime, way.threads, nullptr, {}, nullptr});

            auto const components = static_cast<std::size_t>(way.components);
            auto const before = picture.getSamples<std::uint16_t>();
            auto const after = sink.picture.getSamples<std::uint16_t>();
            for (std::size_t first = 0; first < before.size(); first += components) {
                Halves values{};
                std::copy_n(&before[first], components, values.begin());
                auto const pixel = static_cast<int>(first / components);
                values = row.change(values, picture.window.x0 + pixel % 1024,
                                    picture.window.y0 + pixel / 1024);
                ASSERT_TRUE(std::equal(values.begin(), values.begin() + components, &after[first]));
            }
            EXPECT_EQ(chain->nbCalls == 2, row.isByTables);
        }
    }
}

TEST(HalfTablesTest, SmallAndMaskedPicturesAreComputed)
{
    for (int const rows : {511, 513}) {
        Picture picture(makeFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT16),
                        {0, 0, 1024, rows});
        MemorySource source(picture);
        auto const start = makeNode<SourceImageNode>(source.getInfo());
        auto const chain = makeNode<PixelNode>(PxNodePtr<PxImageProtocol const>(start.get()),
                                               changeCases[0].change);
        Picture const maskPicture(makeFormat(IxPixelFormat::ALPHA, IxPixelFormat::UINT8),
                                  picture.window);
        MemorySource maskSource(maskPicture);
        auto const maskNode = makeNode<SourceImageNode>(maskSource.getInfo());
        MaskFeed mask(*maskNode, maskSource);
        MemorySink sink(picture.format, picture.window);
        RenderOptions options;
        options.time = someTime;
        options.mask = rows == 511 ? nullptr : &mask;
        renderImage(*chain, *start, source, sink, options);
        EXPECT_EQ(chain->nbCalls, (rows + 63) / 64); // once for each strip
    }
}

TEST(HalfTablesTest, AlphaThatChangesAndOtherDepthsHaveNone)
{
    auto const makeTables = [](IxPixelFormat const& format, PixelNode::Change change) {
        ImageInfo info;
        info.format = format;
        info.dataWindow = info.displayWindow = {0, 0, 2000, 2000};
        auto const start = makeNode<SourceImageNode>(info);
        auto const chain =
            makeNode<PixelNode>(PxNodePtr<PxImageProtocol const>(start.get()), change);
        return HalfTables::make(*chain, *start, someTime) != nullptr;
    };
    auto const pass = [](Halves p, int, int) { return p; };
    auto const half = makeFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT16);
    EXPECT_TRUE(makeTables(half, pass));
    EXPECT_FALSE(makeTables(half, [](Halves p, int, int) {
        return Halves{p[0], p[1], p[2], static_cast<std::uint16_t>(p[3] ^ 1)};
    }));
    EXPECT_FALSE(makeTables(makeFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32), pass));
    EXPECT_FALSE(makeTables(makeFormat(IxPixelFormat::ALPHA, IxPixelFormat::FLOAT16), pass));
}

} // namespace
