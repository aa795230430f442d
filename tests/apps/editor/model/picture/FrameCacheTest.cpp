#include "editor/model/picture/FrameCache.h"

#include <gtest/gtest.h>
#include <numeric>

namespace {

/// A picture of so many bytes: rows of 64.
FrameCache::Picture make(int rows)
{
    ImageInfo info;
    info.format = {IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, Rational(1, 1), false};
    info.dataWindow = {0, 0, 4, rows};
    return std::make_shared<HeldPicture const>(info);
}

std::vector<Frame> listFrames(Frame first, Frame last)
{
    std::vector<Frame> frames(static_cast<std::size_t>(last - first + 1));
    std::iota(frames.begin(), frames.end(), first);
    return frames;
}

/// The frames that are read one after the other until nothing is left to do.
std::vector<Frame> fill(FrameCache& cache, std::vector<Frame> const& frames,
                        FrameCache::Place const& place, std::set<Frame> const& lost = {})
{
    std::vector<Frame> read;
    std::vector<FrameCache::Picture> released;
    while (auto const next = cache.plan(frames, place, lost, released)) {
        EXPECT_GE(next->room, 64U);
        EXPECT_LE(next->room, cache.getBound() - cache.getBytes());
        cache.insert(next->frame, make(1));
        read.push_back(next->frame);
    }
    return read;
}

} // namespace

TEST(FrameCache, ReadsAheadRoundTheEndsAndKeepsOneOfFiveBehind)
{
    FrameCache cache(7 * 64);
    auto const frames = listFrames(1, 10);
    EXPECT_EQ(fill(cache, frames, {.wanted = 8}), (std::vector<Frame>{8, 9, 10, 1, 7, 2, 3}));
    // One further: what lies behind goes first, what is there is not read again.
    EXPECT_EQ(fill(cache, frames, {.wanted = 9}), (std::vector<Frame>{4}));
    EXPECT_EQ(cache.find(7), nullptr);
    EXPECT_NE(cache.find(8), nullptr);
    EXPECT_EQ(fill(cache, frames, {.wanted = 9, .direction = -1}), (std::vector<Frame>{7, 6, 5}));
    EXPECT_EQ(cache.getBytes(), 7U * 64);
}

TEST(FrameCache, LostFramesAreLeftOutAndMissingOnesHaveNeighbours)
{
    FrameCache cache(3 * 64);
    EXPECT_EQ(fill(cache, {1, 2, 6, 7}, {.wanted = 4}, {4, 6}), (std::vector<Frame>{7, 1, 2}));
    FrameCache other(2 * 64);
    EXPECT_EQ(fill(other, {1, 2, 6, 7}, {.wanted = 4, .direction = -1}, {4}),
              (std::vector<Frame>{2, 1}));
}

TEST(FrameCache, FramesOfOtherSizesStayWithinTheBound)
{
    FrameCache cache(4 * 64);
    auto const frames = listFrames(1, 5);
    EXPECT_EQ(fill(cache, frames, {.wanted = 1}), (std::vector<Frame>{1, 2, 3, 4}));
    // The next one turns out to be of three rows: it takes the place of others.
    std::vector<FrameCache::Picture> released;
    auto next = cache.plan(frames, {.wanted = 5}, {}, released);
    ASSERT_EQ(next->frame, 5);
    EXPECT_EQ(next->room, 64U);
    cache.expect(5, 3 * 64);
    next = cache.plan(frames, {.wanted = 5}, {}, released);
    EXPECT_EQ(next->frame, 5);
    EXPECT_EQ(next->room, 3U * 64);
    cache.insert(5, make(3));
    EXPECT_NE(cache.find(1), nullptr);
    EXPECT_EQ(cache.getBytes(), 4U * 64);
    EXPECT_EQ(released.size(), 3U);
    // One larger than the bound is read if it is wanted, and never ahead; what is shown stays.
    cache.expect(3, 9 * 64);
    EXPECT_FALSE(cache.plan(frames, {.wanted = 5}, {1, 2, 4}, released).has_value());
    next = cache.plan(frames, {.wanted = 3, .kept = 5}, {}, released);
    EXPECT_EQ(next->frame, 3);
    EXPECT_EQ(next->room, 9U * 64);
    EXPECT_NE(cache.find(5), nullptr);
}
