#include "shots/FrameName.h"

#include "support/TestFolder.h"

#include <gtest/gtest.h>

namespace {

TEST(FrameName, NumberOfAFileIsTheLastThatIsNoVersion)
{
    struct Case {
        char const* file;
        std::optional<long> number;
    };
    for (auto const& [file, number] :
         {Case{"shot.1012.exr", 1012}, Case{"12/shot0008.exr", 8}, Case{"shot.-0005.exr", -5},
          Case{"-3.exr", -3}, Case{"shot-5.exr", 5}, Case{"shot_v002.exr", 2},
          Case{"7_V3.left.exr", 7}, Case{"shot.31", 31}, Case{"1/still.exr", {}},
          Case{"4.99999999999999999999.exr", 4}, Case{".exr", {}}}) {
        auto const found = findFrameNumber(file);
        EXPECT_EQ(found.has_value() ? std::optional(found->number) : std::nullopt, number) << file;
    }
}

TEST(FrameName, FramesBesideAPictureAreFound)
{
    struct Case {
        std::vector<char const*> files;
        char const* opened;
        char const* name; ///< of the sequence; "" for none
        std::vector<Frame> frames;
    };
    for (Case const& row : std::vector<Case>{
             {{"a.0001.exr", "a.0003.exr", "a.004.exr"}, "a.0003.exr", "a.####.exr", {1, 3}},
             {{"a.9.exr", "a.10.exr", "a.011.exr"}, "a.10.exr", "a.#.exr", {9, 10}},
             {{"a.0999.exr", "a.1000.exr", "a.1001.exr"},
              "a.1000.exr",
              "a.####.exr",
              {999, 1000, 1001}},
             {{"a.-002.exr", "a.0001.exr"}, "a.-002.exr", "a.####.exr", {-2, 1}},
             {{"plate001.exr", "plate002.exr"}, "plate002.exr", "plate###.exr", {1, 2}},
             {{"a.1.beauty.exr", "a.2.beauty.exr"}, "a.1.beauty.exr", "a.#.beauty.exr", {1, 2}},
             {{"a_v1.07.exr", "a_v1.08.exr", "a_v2.08.exr"}, "a_v1.08.exr", "a_v1.##.exr", {7, 8}},
             {{"a#b%.01.exr", "a#b%.02.exr"}, "a#b%.01.exr", "a\\#b\\%.##.exr", {1, 2}},
             {{"a.0001.exr", "b.0002.exr", "a.0002.png"}, "a.0001.exr", "", {}},
             {{"a_v1.exr", "a_v2.exr"}, "a_v1.exr", "", {}},
             {{"a_10bit.exr", "a_12bit.exr"}, "a_10bit.exr", "", {}},
             {{"t01.exr", "t02.exr"}, "t01.exr", "", {}},
         }) {
        TestFolder const folder;
        for (char const* const file : row.files) {
            saveBytes(folder.path / file, "");
        }
        auto const found = findSequence(folder.path / row.opened);
        ASSERT_EQ(found.has_value(), *row.name != '\0') << row.opened;
        if (found.has_value()) {
            EXPECT_EQ(found->pattern.getText(), (folder.path / row.name).string());
            EXPECT_EQ(found->frames, row.frames) << row.opened;
            EXPECT_EQ(found->pattern.expand(found->frame), folder.path / row.opened);
        }
    }
}

} // namespace
