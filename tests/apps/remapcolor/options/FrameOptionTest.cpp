#include "remapcolor/options/FrameOption.h"

#include <gtest/gtest.h>

namespace {

TEST(FrameOption, NumberOfAFileIsTheLastThatIsNoVersion)
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
        EXPECT_EQ(findFrameNumber(file), number) << file;
    }
}

} // namespace
