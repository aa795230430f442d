// A mask's pixels under strips that are cut otherwise than its own.

#include "runtime/engine/MaskFeed.h"

#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

namespace {

using namespace memoryHost;

constexpr int width = 1 << 15; // two rows a strip
constexpr GeRectangle<int> window{-7, 10, width - 7, 19};

std::uint8_t valueAt(int x, int y)
{
    return static_cast<std::uint8_t>(x * 3 + y * 31);
}

struct MaskFeedTest : ::testing::TestWithParam<bool> {
    MaskFeedTest()
    {
        for (int y = window.y0; y < window.y1; ++y) {
            for (int x = window.x0; x < window.x1; ++x) {
                picture.getRow(y)[x - window.x0] = std::byte{valueAt(x, y)};
            }
        }
    }
    Picture picture{makeFormat(IxPixelFormat::ALPHA, IxPixelFormat::UINT8), window};
};

TEST_P(MaskFeedTest, GivesThePartUnderEachStrip)
{
    MemorySource source(picture);
    source.isBottomToTop = GetParam();
    int nbReads = 0;
    source.onRead = [&nbReads] { ++nbReads; };
    auto const node = makeNode<SourceImageNode>(source.getInfo());
    MaskFeed feed(*node, source);
    constexpr int rows = 3;
    for (int strip = 0; strip < 5; ++strip) {
        int const y0 = GetParam() ? 20 - strip * rows : 8 + strip * rows;
        IxTile const tile = feed.read({5, y0, 400, y0 + rows});
        GeRectangle<int> const wanted = intersect({5, y0, 400, y0 + rows}, window);
        ASSERT_EQ(tile.isNull(), wanted.isEmpty()) << y0;
        if (!tile.isNull()) {
            ASSERT_EQ(tile.getBounds(), wanted);
            IxReadGuard const guard(tile);
            for (int y = wanted.y0; y < wanted.y1; ++y) {
                for (int x = wanted.x0; x < wanted.x1; ++x) {
                    ASSERT_EQ(guard.getRow(y)[x - 5], std::byte{valueAt(x, y)}) << x << " " << y;
                }
            }
        }
    }
    EXPECT_EQ(nbReads, 5); // each of its strips once
    EXPECT_TRUE(feed.read({0, 19, 9, 30}).isNull());
}

INSTANTIATE_TEST_SUITE_P(Orders, MaskFeedTest, ::testing::Bool());

} // namespace
