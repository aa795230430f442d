// Sequences through the built program: which frames, what is said, what is left after an end.

#include "apps/remapcolor/Program.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <thread>

namespace {

using Json = nlohmann::json;
using Names = std::vector<std::string>;

constexpr int nbFrames = 6;

/// A folder with frames in.0001.exr and so on, and what became of them at once and in peace.
class ShotTest : public testing::Test {
protected:
    ShotTest()
    {
        std::filesystem::create_directory(path("ref"));
        std::filesystem::create_directory(path("out"));
        for (int frame = 1; frame <= nbFrames; ++frame) {
            writeExr(input(frame), {.channels = {{"R"}, {"G"}, {"B"}, {"Z", Imf::FLOAT}}});
        }
        EXPECT_EQ(run(render("in.####.exr", "ref/o.####.exr")).status, 0);
    }
    std::filesystem::path path(std::string const& name) const { return folder.path / name; }
    std::filesystem::path input(int frame) const
    {
        return path("in.000" + std::to_string(frame) + ".exr");
    }
    std::filesystem::path output(int frame) const
    {
        return path("out/o.000" + std::to_string(frame) + ".exr");
    }
    static Names render(std::string const& from, std::string const& to, Names const& more = {})
    {
        Names words = {"render", from, "-o", to, "-s", "Linear.Gamma=1@1,3@6"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    static Names renderOut(Names const& more)
    {
        return render("in.%04d.exr", "out/o.@@@@.exr", more);
    }
    ProgramResult run(Names const& arguments) const { return Program(folder, arguments).wait(); }
    Names list(std::string const& name) const
    {
        Names names;
        for (auto const& entry : std::filesystem::directory_iterator(path(name))) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    /// Whether what there is under final names is what there is to be.
    void expectWhole(std::string const& name) const
    {
        for (std::string const& file : list(name)) {
            if (!file.starts_with('.')) {
                EXPECT_TRUE(loadBytes(path(name) / file) == loadBytes(path("ref") / file)) << file;
            }
        }
    }
    void expectComplete(std::string const& name) const
    {
        Names names = list(name);
        std::erase_if(names, [](auto const& file) { return file.starts_with('.'); });
        EXPECT_EQ(names, list("ref"));
        expectWhole(name);
    }

    TestFolder folder;
};

TEST_F(ShotTest, ChunksAndFramesByThemselvesGiveTheSameBytes)
{
    EXPECT_EQ(list("ref").size(), static_cast<std::size_t>(nbFrames));
    for (int chunk = 0; chunk < 4; ++chunk) {
        Names const more = {"--chunk",  std::to_string(chunk) + "/4",
                            "-j",       std::to_string(chunk + 1),
                            "--memory", "1K"};
        EXPECT_EQ(run(renderOut(more)).status, 0);
    }
    expectComplete("out");
    ASSERT_EQ(run(render("in.0004.exr", "out/o.0004.exr", {"--frame", "4"})).status, 0);
    saveBytes(path("list"), "3-2 6\n-1--1");
    EXPECT_EQ(run(renderOut({"--frames-from", "list", "--on-missing", "skip"})).status, 0);
    ASSERT_EQ(run(render("in.####.exr", "s\\#.##/o.####.exr")).status, 0);
    std::filesystem::rename(path("s#.05/o.0005.exr"), output(5));
    expectComplete("out");
}

TEST_F(ShotTest, FramesOfOtherMakesAreWhatTheyAreByThemselves)
{
    std::vector<ExrRecipe> const recipes = {
        {.compression = Imf::ZIP_COMPRESSION, .dataWindow = {{0, 0}, {90, 70}}},
        {.channels = {{"R"}, {"G"}}, .compression = Imf::ZIP_COMPRESSION},
        {.compression = Imf::PIZ_COMPRESSION},
        {.compression = Imf::ZIP_COMPRESSION, .tileSize = 16},
        {.channels = {{"Y"}, {"Z", Imf::FLOAT}}, .compression = Imf::ZIPS_COMPRESSION},
        {.compression = Imf::NO_COMPRESSION}};
    int frame = 0;
    for (ExrRecipe const& recipe : recipes) {
        writeExr(input(++frame), recipe);
    }
    for (char const* const compression : {"input", "zip", "none"}) {
        for (frame = 1; frame <= nbFrames; ++frame) {
            std::string const name = "o.000" + std::to_string(frame) + ".exr";
            EXPECT_EQ(run(render("in.000" + std::to_string(frame) + ".exr", "ref/" + name,
                                 {"--frame", std::to_string(frame), "--compression", compression}))
                          .status,
                      0);
        }
        for (char const* const frames : {"1-6", "6-1"}) {
            EXPECT_EQ(run(renderOut({"-f", frames, "-j1", "--compression", compression})).status,
                      0);
            expectComplete("out");
        }
    }
}

TEST_F(ShotTest, WhatFailsIsNamedAndTheOthersAreDone)
{
    std::filesystem::resize_file(input(2), 900);
    saveBytes(input(3), "");
    std::filesystem::remove(input(5));
    ProgramResult const all = run(renderOut({"-f", "1-6"}));
    EXPECT_EQ(all.status, 1);
    ASSERT_EQ(all.errors.size(), 4U) << testing::PrintToString(all.errors);
    for (char const* const part : {"frame 2: cannot read", "frame 3: ", "frame 5: "}) {
        EXPECT_TRUE(std::any_of(all.errors.begin(), all.errors.end(), [&](auto const& line) {
            return line.find(part) != std::string::npos;
        })) << part;
    }
    expectLineWith("3 of 6 frames rendered, 3 failed", all.errors[3]);
    expectLineWith("-f 2-3,5", all.errors[3]);
    EXPECT_EQ(list("out"), (Names{"o.0001.exr", "o.0004.exr", "o.0006.exr"}));
    expectWhole("out");

    expectLineWith("gaps: no frames 5", run(renderOut({"-q"})).errors.at(0));
    EXPECT_EQ(run(renderOut({"-f", "1,5", "--on-missing", "skip"})).status, 0);
    ProgramResult const stopped = run(renderOut({"-f", "5-6", "--on-missing", "stop", "-j1"}));
    EXPECT_EQ(stopped.status, 1);
    expectLineWith("1 failed, 1 not done", stopped.errors.back());
    EXPECT_EQ(run(renderOut({"--mask", "m.####.exr", "-f", "1"})).status, 1);
    EXPECT_EQ(run(render("none.#.exr", "out/o.#.exr")).status, 1);
    EXPECT_EQ(run(render("no/in.#.exr", "out/o.#.exr")).status, 1);
    // Frames may be missing, but hardly all of a shot; a chunk of it may lack all of its own.
    Names const skip = {"-f", "8-9", "--on-missing", "skip"};
    expectLineWith("nothing matches \"in.%04d.exr\"", run(renderOut(skip)).errors.at(0));
    EXPECT_EQ(run(renderOut(skip)).status, 1);
    EXPECT_EQ(run(renderOut({"-f", "1,8-9", "--on-missing", "skip", "--chunk", "1/2"})).status, 0);
}

TEST_F(ShotTest, SkipKeepsWhatFitsAndMakesTheRestAgain)
{
    auto const rerun = [&](Names more) {
        more.insert(more.end(), {"--existing", "skip", "--progress", "json"});
        Json const end = Json::parse(run(renderOut(more)).errors.back());
        expectComplete("out");
        return std::pair(end.at("rendered").get<int>(), end.at("skipped").get<int>());
    };
    EXPECT_EQ(rerun({}), std::pair(6, 0));
    EXPECT_EQ(rerun({}), std::pair(0, 6));
    std::filesystem::resize_file(output(1), std::filesystem::file_size(output(1)) - 1);
    saveBytes(output(2), "");
    writeExr(output(3), {.channels = {{"R"}, {"G"}, {"B"}}});
    writeExr(output(4), {.channels = {{"R"}, {"G"}, {"B"}, {"Z", Imf::FLOAT}},
                         .dataWindow = {{0, 0}, {36, 51}}});
    std::filesystem::last_write_time(output(5), std::filesystem::last_write_time(input(5)) -
                                                    std::chrono::seconds(1));
    EXPECT_EQ(rerun({"--any-age"}), std::pair(4, 2));
    EXPECT_EQ(rerun({}), std::pair(1, 5));
    // What a look comes from is newer, and then a mask.
    ASSERT_EQ(run({"project", "-o", "p.json"}).status, 0);
    EXPECT_EQ(rerun({"-p", "p.json"}), std::pair(6, 0));
    EXPECT_EQ(rerun({"-p", "p.json"}), std::pair(0, 6));
    writeExr(path("m.exr"), {.channels = {}, .values = {{"A", 1.0F}}});
    EXPECT_EQ(rerun({"--mask", "m.exr", "--any-age"}), std::pair(0, 6));
    EXPECT_EQ(rerun({"--mask", "m.exr"}), std::pair(6, 0));
    ProgramResult const refused = run(renderOut({"--existing", "error", "-f", "2-3"}));
    EXPECT_EQ(refused.status, 2);
    expectLineWith("frames 2-3", refused.errors.at(0));
}

TEST_F(ShotTest, WhatIsOddAboutAFrameIsSaidAndItIsRendered)
{
    writeExr(input(2), {.channels = {{"R"}, {"G"}, {"B"}}});
    writeExr(input(4), {.channels = {{"R"}, {"G"}, {"B"}, {"A"}, {"Z", Imf::FLOAT}}});
    for (int const frame : {1, 2, 4}) {
        writeExr(path("m.000" + std::to_string(frame) + ".exr"),
                 {.channels = {}, .values = {{"A", frame == 1 ? 0.0F : 1.0F}}});
    }
    ProgramResult const result =
        run(renderOut({"-f", "1-4", "--mask", "m.####.exr", "--on-missing", "skip"}));
    EXPECT_EQ(result.status, 0);
    for (std::string const line :
         {"frame 1: no effect: the mask \"m.0001.exr\"",
          "frame 2: its channels are not those of "
          "frame 1",
          "3 of 4 frames rendered, 1 skipped", "frame 4: its channels are not"}) {
        EXPECT_EQ(std::count_if(result.errors.begin(), result.errors.end(),
                                [&](auto const& said) { return said.find(line) != said.npos; }),
                  1)
            << line << testing::PrintToString(result.errors);
    }
    EXPECT_EQ(list("out"), (Names{"o.0001.exr", "o.0002.exr", "o.0004.exr"}));
}

TEST_F(ShotTest, EventsHaveTheFieldsThatAreWrittenDown)
{
    std::filesystem::remove(input(2));
    saveBytes(input(3), "");
    writeExr(input(4), {.dataWindow = {{0, 0}, {9, 9}}, .displayWindow = {{0, 0}, {9, 9}}});
    ProgramResult const result = run(
        renderOut({"-f", "1-4", "--on-missing", "skip", "--progress", "json", "--log", "job.log"}));
    std::map<std::string, Names> const fields = {
        {"start", {"event", "frames", "input", "memory", "output", "threads", "total"}},
        {"frame", {"done", "event", "frame", "input", "ms", "output", "total"}},
        {"skip", {"done", "event", "frame", "input", "message", "output", "total"}},
        {"warning", {"done", "event", "frame", "input", "message", "output", "total"}},
        {"error", {"done", "event", "frame", "input", "message", "output", "status", "total"}},
        {"end",
         {"done", "event", "failed", "ms", "rendered", "skipped", "status", "total",
          "unfinished"}}};
    std::map<std::string, int> counts;
    for (std::string const& line : result.errors) {
        Json const event = Json::parse(line);
        Names keys;
        for (auto const& [key, value] : event.items()) {
            keys.push_back(key);
        }
        std::string const kind = event.at("event");
        ++counts[kind];
        ASSERT_TRUE(fields.contains(kind)) << line;
        EXPECT_EQ(keys, fields.at(kind)) << line;
        EXPECT_EQ(event.at("total"), 4);
    }
    EXPECT_EQ(
        counts,
        (std::map<std::string, int>{
            {"end", 1}, {"error", 1}, {"frame", 2}, {"skip", 1}, {"start", 1}, {"warning", 1}}));
    Json const end = Json::parse(result.errors.back());
    EXPECT_EQ(end.at("status"), result.status);
    EXPECT_EQ(end.at("failed"), "3");
    std::string const log = loadBytes(path("job.log"));
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'),
              static_cast<std::ptrdiff_t>(result.errors.size()));
}

TEST_F(ShotTest, DryRunListsFilesAndTouchesNone)
{
    std::filesystem::remove(input(2));
    ProgramResult const result = run(renderOut({"-f", "2-1", "-n"}));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "frame 2: in.0002.exr (missing) -> out/o.0002.exr\n"
                             "frame 1: in.0001.exr -> out/o.0001.exr\n");
    EXPECT_TRUE(list("out").empty());
}

TEST_F(ShotTest, ChecksTellFaultsThatAreAlikeInOneLine)
{
    saveBytes(input(2), "");
    saveBytes(input(5), loadBytes(input(5)).substr(0, 300));
    ProgramResult const result = run({"check", "in.####.exr", "-f", "1-2,20-24,5,7"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 4) << result.output;
    for (char const* said :
         {"frame 2: unreadable: ", "frame 5: unreadable: ", "frames 7,20-24: missing: ",
          "9 frames, 1 read; something is wrong with 2,5,7,20-24\n"}) {
        EXPECT_NE(result.output.find(said), std::string::npos) << said << result.output;
    }
}

TEST_F(ShotTest, EndedRunsLeaveWholeFramesAndARerunTheRest)
{
    for (int const signal : {SIGKILL, SIGTERM, SIGKILL}) {
        Program const program(folder, renderOut({"-j", "2"}));
        while (list("out").empty()) {
            std::this_thread::yield(); // until it has begun; it may be done by then
        }
        program.sendSignal(signal);
        int const status = program.wait().status;
        EXPECT_TRUE(status == 128 + signal || status == 0) << status;
        expectWhole("out");
        if (signal == SIGTERM) {
            Names const names = list("out");
            EXPECT_TRUE(std::none_of(names.begin(), names.end(),
                                     [](auto const& name) { return name.starts_with('.'); }));
        }
        // Two at once: one of them may meet what the other one has on its way.
        Program const other(folder, renderOut({"--existing", "skip"}));
        EXPECT_EQ(run(renderOut({"--existing", "skip"})).status, 0);
        EXPECT_EQ(other.wait().status, 0);
        expectComplete("out");
        std::filesystem::remove_all(path("out"));
        std::filesystem::create_directory(path("out"));
    }
}

TEST_F(ShotTest, PartsAreFoundByNameInEachFrameWhateverTheThreads)
{
    auto const called = [](char const* name) {
        return [name](Imf::Header& header) { header.setName(name); };
    };
    ExrRecipe const main = {.channels = {{"R"}, {"G"}, {"B"}, {"spec.R"}, {"spec.G"}, {"spec.B"}},
                            .addAttributes = called("main")};
    ExrRecipe const other = {.tileSize = 16, .hasLevels = true, .addAttributes = called("other")};
    ExrRecipe const deep = {.channels = {{"R"}},
                            .compression = Imf::NO_COMPRESSION,
                            .isDeep = true,
                            .addAttributes = called("deep")};
    writeParts(input(1), {deep, main, other});
    writeParts(input(2), {other, deep, main});
    auto const renderParts = [&](Names more) {
        more.insert(more.end(), {"-f", "1-2", "--mask", "in.0003.exr", "--mask-channel", "R"});
        return run(render("in.####.exr", "out/o.####.exr", more));
    };
    ASSERT_EQ(renderParts({"--part", "other", "-j", "1"}).status, 0);
    auto const before = loadParts(input(2));
    auto const after = loadParts(output(2));
    EXPECT_TRUE(after.at("main/R/0,0") == before.at("main/R/0,0"));
    EXPECT_TRUE(after.at("deep/7") == before.at("deep/7"));
    EXPECT_FALSE(after.at("other/R/2,2") == before.at("other/R/2,2"));
    ASSERT_EQ(renderParts({"--part", "all", "--layer", "all", "-j", "1"}).status, 0);
    std::string const bytes = loadBytes(output(2));
    ASSERT_EQ(renderParts({"--layer", "all", "-j", "5"}).status, 0);
    EXPECT_TRUE(loadBytes(output(2)) == bytes);
    auto const skipped = [&](Names const& more) {
        Names all = {"--existing", "skip", "--progress", "json"};
        all.insert(all.end(), more.begin(), more.end());
        return Json::parse(renderParts(all).errors.back()).at("skipped").get<int>();
    };
    EXPECT_EQ(skipped({}), 2);
    std::filesystem::copy_file(output(2), output(1),
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(skipped({}), 1); // its parts are in another order
    ProgramResult const pick =
        run({"pick", "in.0001.exr", "3,4", "--part", "other", "-s", "Linear.Gamma=2"});
    EXPECT_EQ(pick.status, 0);
    EXPECT_NE(pick.output.find("out.red"), std::string::npos);
    EXPECT_EQ(run({"pick", "in.0001.exr", "3,4", "--part", "deep"}).status, 1);
    EXPECT_EQ(run({"pick", "in.0001.exr", "3,4", "--part", "all"}).status, 2);
}

} // namespace
