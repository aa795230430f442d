// Frames rendered by the command line, as the editor asks for them.

#include "editor/model/render/RenderRun.h"

#include "apps/editor/ShotFixture.h"
#include "files/PrintableText.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

std::string const renderedExposure = "EXRDisplay.Exposure.Red";

std::string readWhole(std::filesystem::path const& file)
{
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

class RenderRunTest : public ShotFixture {
protected:
    RenderRunTest()
    {
        document.setNumbers("", {"Mode"}, 1);
        document.setNumbers("", {"Adjust"}, 0);
    }

    RenderWish wishFor(std::string const& output)
    {
        return {.input = file("shot.####.exr"), .output = file(output)};
    }
    void runToEnd()
    {
        waitUntil([this] { return !run.isRunning(); });
    }
    std::vector<std::string> listFiles(std::string const& beginning)
    {
        std::vector<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(folder.path)) {
            std::string const name = entry.path().filename();
            if (name.starts_with(beginning)) {
                names.push_back(name);
            }
        }
        return names;
    }

    Document document;
    RenderRun run;
};

} // namespace

TEST(RenderWishTest, WordsAreThoseOfTheCommandLineForAShell)
{
    struct Case {
        char const* word;
        char const* quoted;
    };
    for (auto const& [word, quoted] :
         {Case{"/a/b_1.%04d.exr", "/a/b_1.%04d.exr"}, Case{"", "''"},
          Case{"/a b/s.####.exr", "'/a b/s.####.exr'"}, Case{"it's", "'it'\\''s'"},
          Case{"~/x", "'~/x'"}, Case{"$HOME;`", "'$HOME;`'"}}) {
        EXPECT_EQ(formatShellLine({"remapcolor", word}), std::string("remapcolor ") + quoted);
    }
    RenderWish const wish{.input = "/in.####.exr",
                          .output = "/out.####.exr",
                          .frames = "-3--1",
                          .time = {},
                          .existing = "skip",
                          .missing = "stop",
                          .depth = "32",
                          .compression = "piz"};
    EXPECT_EQ(formatShellLine(makeRenderWords(wish, "/look.json")),
              "render '/in.####.exr' -o '/out.####.exr' -p /look.json --frames=-3--1 "
              "--existing=skip --on-missing=stop --depth=32 --compression=piz");
    auto const relative = makeRenderWords({.input = "a.exr", .output = "b.exr", .time = 2.5}, "l");
    EXPECT_TRUE(relative[1].starts_with('/') && relative[3].starts_with('/'));
    EXPECT_EQ(relative.back(), "--frame=2.5");
}

TEST(RenderWishTest, OutputIsSuggestedBesideTheInput)
{
    struct Case {
        char const* input;
        char const* output;
    };
    for (auto const& [input, output] :
         {Case{"/a/shot.####.exr", "/a/shot_remap.####.exr"},
          Case{"shot_%04d.png", "shot_remap_%04d.png"},
          Case{"/a.b/still.exr", "/a.b/still_remap.exr"}, Case{"/a.b/still", "/a.b/still_remap"},
          Case{"/a/####.exr", "/a/_remap####.exr"}}) {
        EXPECT_EQ(suggestOutput(input), output);
    }
}

TEST_F(RenderRunTest, WritesTheBytesOfTheCommandThatIsShown)
{
    writeShot({1, 2, 4, 5, 6});
    tear(5);
    document.getNode().setValues({{renderedExposure, Animated<double>({{1, 0.0}, {6, 2.0}})}});
    document.saveProject(file("it's saved.json"));
    RenderWish wish = wishFor("mine.####.exr");
    wish.frames = "1-5";
    wish.compression = "piz";
    run.start(document, wish);
    document.getNode().setValues({{renderedExposure, Animated<double>(-3.0)}}); // after the start
    runToEnd();
    EXPECT_TRUE(run.hasFailed());
    EXPECT_TRUE(run.getOutcome().starts_with("3 of 5 frames rendered, 2 failed"))
        << run.getOutcome();
    EXPECT_TRUE(run.getOutcome().ends_with("-f 3,5")) << run.getOutcome();
    ASSERT_EQ(run.getMessages().size(), 2U);
    for (int const failed : {3, 5}) {
        auto const beginning = "frame " + std::to_string(failed) + ": ";
        EXPECT_TRUE(run.getMessages()[0].starts_with(beginning) ||
                    run.getMessages()[1].starts_with(beginning));
    }

    wish.output = file("theirs.####.exr");
    std::vector<std::string> words = makeRenderWords(wish, file("it's saved.json"));
    words.insert(words.begin(),
                 std::filesystem::read_symlink("/proc/self/exe").parent_path() / "remapcolor");
    EXPECT_NE(std::system((formatShellLine(words) + " 2>/dev/null </dev/null").c_str()), 0);
    for (char const* const frame : {"1", "2", "4"}) {
        std::string const name = std::string(".000") + frame + ".exr";
        EXPECT_EQ(readWhole(file("mine" + name)), readWhole(file("theirs" + name)));
        EXPECT_FALSE(readWhole(file("mine" + name)).empty());
    }
    EXPECT_NE(readWhole(file("mine.0001.exr")), readWhole(file("mine.0004.exr")));
}

TEST_F(RenderRunTest, WhatCannotBeBegunIsSaidAndSkippedPicturesStay)
{
    writeShot({1, 2});
    RenderWish wish = wishFor("out.exr"); // one name for two frames
    run.start(document, wish);
    runToEnd();
    EXPECT_TRUE(run.hasFailed());
    EXPECT_NE(run.getOutcome().find("out.exr"), std::string::npos) << run.getOutcome();

    document.saveProject(file("look.json"));
    wish = wishFor("out.####.exr");
    wish.existing = "skip";
    for (char const* const outcome :
         {"2 of 2 frames rendered in", "0 of 2 frames rendered, 2 skip"}) {
        run.start(document, wish);
        runToEnd();
        EXPECT_FALSE(run.hasFailed());
        EXPECT_TRUE(run.getOutcome().starts_with(outcome)) << run.getOutcome();
    }
    document.setNumbers("", {renderedExposure}, 1.0); // another look than that of the pictures
    run.start(document, wish);
    runToEnd();
    EXPECT_TRUE(run.getOutcome().starts_with("2 of 2 frames rendered in")) << run.getOutcome();
}

TEST_F(RenderRunTest, CancelLeavesWholePicturesOnly)
{
    constexpr int nbFrames = 200;
    std::vector<int> frames(nbFrames);
    for (int frame = 0; frame < nbFrames; ++frame) {
        frames[static_cast<std::size_t>(frame)] = frame + 1;
    }
    writeShot(frames);
    run.start(document, wishFor("out.####.exr"));
    waitUntil([this] { return run.countDone() > 0 || !run.isRunning(); });
    run.cancel();
    runToEnd();
    EXPECT_FALSE(run.hasFailed());
    EXPECT_NE(run.getOutcome().find("rendered"), std::string::npos) << run.getOutcome();
    EXPECT_EQ(listFiles("."), std::vector<std::string>());
    for (std::string const& name : listFiles("out.")) {
        EXPECT_FALSE(loadExr(file(name)).empty()) << name;
    }

    auto other = std::make_unique<RenderRun>();
    other->start(document, wishFor("out.####.exr"));
    waitUntil([&] { return other->countDone() > 0 || !other->isRunning(); });
    other.reset(); // as if the program ended
    EXPECT_EQ(listFiles("."), std::vector<std::string>());
}
