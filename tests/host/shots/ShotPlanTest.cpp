// Patterns, folders and plans: which file belongs to which frame.

#include "shots/ShotPlan.h"

#include "shots/ShotError.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

namespace {

using Frames = std::vector<Frame>;

struct Expansion {
    char const* pattern;
    Frame frame;
    char const* file; ///< nullptr for a pattern that is refused
};

Expansion const expansions[] = {
    {"a.exr", 7, "a.exr"},
    {"a.####.exr", 7, "a.0007.exr"},
    {"a.@@@.exr", 12345, "a.12345.exr"},
    {"a.%06d.exr", 7, "a.000007.exr"},
    {"a.%d.exr", 7, "a.7.exr"},
    {"a.#.exr", 12, "a.12.exr"},
    {"a.####.exr", -7, "a.-007.exr"},
    {"v%02d/a.####.exr", 7, "v07/a.0007.exr"},
    {"a\\#1\\@\\%04d\\\\.##.exr", 7, "a#1@%04d\\.07.exr"},
    {"100%%/50%.##\\n", 7, "100%/50%.07\\n"},
    {"%4d.exr", 7, nullptr},
    {"##@@.exr", 7, nullptr},
    {"%02d##.exr", 7, nullptr},
    {"#####################.exr", 7, nullptr},
    {"%099d.exr", 7, nullptr},
    {"%099999999999999999999d.exr", 7, nullptr},
};

TEST(FramePatternTest, NamesAFilePerFrame)
{
    for (auto const& [pattern, frame, file] : expansions) {
        if (file == nullptr) {
            EXPECT_THROW(FramePattern{pattern}, ShotError) << pattern;
        } else {
            EXPECT_EQ(FramePattern(pattern).expand(frame), file) << pattern;
        }
    }
}

class ShotPlanTest : public testing::Test {
protected:
    std::string name(std::string const& file) const { return (folder.path / file).string(); }
    void make(std::vector<std::string> const& files) const
    {
        for (std::string const& file : files) {
            std::filesystem::create_directories((folder.path / file).parent_path());
            saveBytes(folder.path / file, "");
        }
    }
    Frames scan(std::string const& pattern) const { return FramePattern(name(pattern)).scan(); }
    std::string errorOf(ShotRequest request, ShotFailure kind) const
    {
        request.input = name(request.input);
        request.output = name(request.output);
        try {
            planShot(request);
        } catch (ShotError const& error) {
            EXPECT_EQ(error.getKind(), kind) << error.what();
            return error.what();
        }
        ADD_FAILURE() << request.input << " " << request.output << " is accepted";
        return {};
    }

    TestFolder folder;
};

TEST_F(ShotPlanTest, ScanFindsTheFramesThatThePatternNames)
{
    make({"a.0010.exr", "a.0002.exr", "a.-003.exr", "a.10000.exr", "a.00002.exr", "a.002.exr",
          "a.0003.exr.tmp", ".a.0004.12.tmp.exr", "a.x.exr", "ab.0005.exr", "a2.1.exr", "a2.21.exr",
          "s01/x.1.exr", "s02/x.2.exr", "s03/x.2.exr", "d.1-1.exr"});
    EXPECT_EQ(scan("a.####.exr"), (Frames{-3, 2, 10, 10000}));
    EXPECT_EQ(scan("a.%04d.exr"), (Frames{-3, 2, 10, 10000}));
    EXPECT_EQ(scan("a.%03d.exr"), (Frames{2, 10000}));
    EXPECT_EQ(scan("a#.1.exr"), (Frames{2}));
    EXPECT_EQ(scan("a2.#1.exr"), (Frames{2}));
    EXPECT_EQ(scan("s##/x.#.exr"), (Frames{1, 2}));
    EXPECT_EQ(scan("d.#-#.exr"), (Frames{1}));
    EXPECT_EQ(scan("b.####.exr"), Frames());
    EXPECT_THROW(scan("none/a.####.exr"), ShotError);
}

TEST_F(ShotPlanTest, EveryFrameHasItsFilesAndChunksShareThem)
{
    make({"a.1.exr", "a.2.exr", "a.3.exr", "a.7.exr"});
    ShotRequest request{name("a.#.exr"), name("o/b.##.exr"), name("m.exr"), {}, {}};
    ShotPlan const all = planShot(request);
    ASSERT_EQ(all.frames.size(), 4U);
    EXPECT_EQ(all.gaps, "4-6");
    EXPECT_TRUE(all.isSequence);
    EXPECT_EQ(all.frames[3].time, 7.0);
    EXPECT_EQ(all.frames[3].input, name("a.7.exr"));
    EXPECT_EQ(all.frames[3].output, name("o/b.07.exr"));
    EXPECT_EQ(all.frames[3].mask, name("m.exr"));

    request.chunk = {1, 3};
    ShotPlan const chunk = planShot(request);
    ASSERT_EQ(chunk.frames.size(), 1U);
    EXPECT_EQ(chunk.frames[0].frame, 3);
    EXPECT_EQ(chunk.nbFramesOfShot, 4U);

    // Frames that were asked for keep their order and need no file; one still may become many.
    EXPECT_EQ(planShot({name("a.#.exr"), name("b.#.exr"), {}, Frames{9, 2}, {}}).frames[0].input,
              name("a.9.exr"));
    EXPECT_EQ(planShot({name("a.1.exr"), name("b.#.exr"), {}, Frames{5, 6}, {}}).frames[1].output,
              name("b.6.exr"));
    EXPECT_FALSE(planShot({name("a.1.exr"), name("b.exr"), {}, {}, {}}).isSequence);
}

TEST_F(ShotPlanTest, OutputsMeetNoOtherFile)
{
    make({"a.1.exr", "a.2.exr", "b.2.exr"});
    std::filesystem::create_directory_symlink(".", folder.path / "link");
    std::filesystem::create_hard_link(name("a.2.exr"), name("h.1.exr"));
    std::filesystem::create_symlink("b.2.exr", name("b.1.exr"));
    struct Case {
        char const* input;
        char const* output;
        std::optional<std::string> mask;
        std::optional<Frames> frames;
        char const* complaint;
    };
    Case const cases[] = {
        {"a.#.exr", "o.exr", {}, {}, "frames 1 and 2 have one output"},
        {"a.#.exr", "b.#.exr", {}, {}, "frames 1 and 2 have one output"},
        {"a.#.exr", "./x/../a.#.exr", {}, {}, "is the input itself"},
        {"a.#.exr", "link/a.@.exr", {}, {}, "is the input itself"},
        {"a.#.exr", "h.#.exr", {}, {}, "is the input of frame 2"},
        {"a.#.exr", "o.#.exr", name("o.2.exr"), {}, "is the mask of frame 1"},
        {"a.1.exr", "a.#.exr", {}, Frames{2, 1}, "is the input of frame 2"},
        {"a.1.exr", "o.#.exr", {}, {}, "--frames"},
    };
    for (auto const& [input, output, mask, frames, complaint] : cases) {
        std::string const error = errorOf({input, output, mask, frames, {}}, ShotFailure::Request);
        EXPECT_NE(error.find(complaint), std::string::npos) << error;
    }
    EXPECT_NE(errorOf({"c.#.exr", "o.#.exr", {}, {}, {}}, ShotFailure::Frames).find("c.#.exr"),
              std::string::npos);
}

} // namespace
