// Lists of frames: what people write, and what is written for them.

#include "shots/FrameList.h"

#include "shots/ShotError.h"

#include <gtest/gtest.h>

namespace {

using Frames = std::vector<Frame>;

TEST(FrameListTest, ListsAreReadInTheirOrderAndEachFrameOnce)
{
    struct Case {
        char const* text;
        Frames frames;
    };
    Case const cases[] = {
        {"7", {7}},
        {"1-4", {1, 2, 3, 4}},
        {"1-8x3", {1, 4, 7}},
        {"4-1", {4, 3, 2, 1}},
        {"8-1x3", {8, 5, 2}},
        {"-2-1", {-2, -1, 0, 1}},
        {"-1--7x3", {-1, -4, -7}},
        {"3,1,2-4, 1\n9\t", {3, 1, 2, 4, 9}},
        {"0008", {8}},
        {"999999999999999", {largestFrame}},
    };
    for (auto const& [text, frames] : cases) {
        EXPECT_EQ(parseFrames(text), frames) << text;
    }
    EXPECT_EQ(parseFrames("1-1000000").size(), 1'000'000U);
}

TEST(FrameListTest, WhatIsNoListIsRefusedByName)
{
    for (char const* const text :
         {"", " ,", "a", "1-", "1-5x", "1-5x0", "1-5x-1", "1x2", "1.5", "1-2-3", "+1", "1;2", "--1",
          "1000000000000000", "99999999999999999999", "1-2000000",
          "-999999999999999-999999999999999"}) {
        EXPECT_THROW(parseFrames(text), ShotError) << text;
    }
}

TEST(FrameListTest, FramesAreWrittenAsAListThatReadsBack)
{
    struct Case {
        Frames frames;
        char const* text;
    };
    Case const cases[] = {
        {{}, ""},
        {{5}, "5"},
        {{2, 1}, "1-2"},
        {{1, 5}, "1,5"},
        {{9, 1, 2, 3, 1, 20, 25, 30}, "1-3,9,20-30x5"},
        {{1, 3, 4, 5}, "1,3-5"},
        {{-3, -2, -1, 4}, "-3--1,4"},
    };
    for (auto const& [frames, text] : cases) {
        EXPECT_EQ(formatFrames(frames), text);
        if (!frames.empty()) {
            EXPECT_EQ(formatFrames(parseFrames(text)), text);
        }
    }
}

TEST(FrameListTest, GapsAreThoseOfARowOfEvenSteps)
{
    EXPECT_EQ(describeGaps({1, 2, 3}), "");
    EXPECT_EQ(describeGaps({1, 100}), "");
    EXPECT_EQ(describeGaps({10, 2, 4, 8}), "6");
    EXPECT_EQ(describeGaps({1, 2, 5, 6, 1000000000}), "3-4,7-999999999");
    EXPECT_EQ(describeGaps({0, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19}), "2,4,6,8,10,12,14,16,...");
}

TEST(FrameListTest, ChunksCoverEverythingOnce)
{
    for (std::size_t const size : {0U, 1U, 5U, 12U, 100U}) {
        for (std::size_t const count : {1U, 3U, 7U, 100U}) {
            std::size_t next = 0;
            for (std::size_t index = 0; index < count; ++index) {
                auto const [begin, end] = findChunk({index, count}, size);
                EXPECT_EQ(begin, next);
                EXPECT_LE(size / count, end - begin);
                EXPECT_LE(end - begin, size / count + 1);
                next = end;
            }
            EXPECT_EQ(next, size);
        }
    }
    EXPECT_EQ(parseChunk("2/3").index, 2U);
    for (char const* const text : {"", "1", "3/3", "-1/3", "0/0", "1/2/3", "a/b", "0/"}) {
        EXPECT_THROW(parseChunk(text), ShotError) << text;
    }
}

} // namespace
