// The built program as its users meet it: files, exit statuses, lines on standard error.

#include "apps/remapcolor/Program.h"
#include "session/Failures.h"
#include "support/Failures.h"
#include "support/MediaSupport.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Json = nlohmann::json;
using Names = std::vector<std::string>;

std::map<std::string, float> const inputPixel = {
    {"R", 0.25F}, {"G", 0.5F}, {"B", 3.0F}, {"A", 0.5F}};

/// A folder with a small picture "in.exr".
class ProgramTest : public testing::Test {
protected:
    ProgramTest() { writeExr(path("in.exr"), {.channels = {}, .values = inputPixel}); }
    std::filesystem::path path(std::string const& name) const { return folder.path / name; }
    ProgramResult run(Names const& arguments) const { return Program(folder, arguments).wait(); }

    TestFolder folder;
};

TEST_F(ProgramTest, ValuesReachThePixels)
{
    // Each row doubles the colours in its own way.
    for (Names const& values :
         {Names{"-s", "Linear.Output Level.Max=2"},
          Names{"-s", "linear.input level.max=0.5", "--mode", "linear", "-j", "3"},
          Names{"-s", "Linear.Output Level.Max=7", "-s", "Linear.Output Level.Max=2"},
          Names{"-s", "Linear.Output Level.Max=2@-5", "-s", "Linear.Gamma=1@1,1@9"},
          Names{"-s", "Linear.Output Level.Max=1@-4.5,3@-3.5", "--frame", "-4"}}) {
        Names arguments = {"render", "in.exr", "-o", "out.exr", "--no-adjust"};
        arguments.insert(arguments.end(), values.begin(), values.end());
        ProgramResult const result = run(arguments);
        ASSERT_EQ(result.status, 0) << testing::PrintToString(result.errors);
        EXPECT_EQ(result.errors, Names());
        for (auto const& [name, halves] : loadExr(path("out.exr"))) {
            EXPECT_EQ(valueOf(halves, 0), inputPixel.at(name) * (name == "A" ? 1.0F : 2.0F))
                << name;
        }
    }
}

TEST_F(ProgramTest, StampsSayHowPicturesWereMadeWhereTheyAreAskedFor)
{
    for (std::string const name : {"out.exr", "out.png", "out.tif"}) {
        Names words = {"render", "in.exr", "-o", name, "-s", "Linear.Gamma.Red=2", "-q"};
        ASSERT_EQ(run(words).status, 0);
        EXPECT_EQ(run({"info", name}).output.find("Gamma"), std::string::npos) << name;
        words.emplace_back("--stamp");
        ASSERT_EQ(run(words).status, 0);
        std::string const said = run({"info", name}).output;
        EXPECT_NE(said.find("render in.exr -o " + name + " -s Linear.Gamma.Red=2 -q --stamp"),
                  std::string::npos)
            << said;
    }
}

TEST_F(ProgramTest, AMaskThatLetsNothingThroughIsNamed)
{
    writeExr(path("black.exr"), {.channels = {}, .values = {{"A", 0.0F}}});
    struct Case {
        Names options;
        std::size_t nbNotes;
    };
    for (auto const& [options, nbNotes] :
         {Case{{}, 1}, {{"--mask-invert"}, 0}, {{"-s", "Mute=on"}, 0}, {{"--mix", "0"}, 0}}) {
        Names words = {"render", "in.exr", "-o", "out.exr", "--mask", "black.exr"};
        words.insert(words.end(), options.begin(), options.end());
        Names const errors = run(words).errors;
        EXPECT_EQ(std::count_if(errors.begin(), errors.end(),
                                [](std::string const& line) {
                                    return line.find("lets nothing through") != std::string::npos;
                                }),
                  nbNotes)
            << testing::PrintToString(errors);
    }
}

TEST_F(ProgramTest, QuietShowsWhatIsMissingOnly)
{
    // Without alpha, in 8 bit. GCC 12's leak checker fails at the end of a program that still has
    // a thread of an image library.
    Names const render = {"render", "in.exr", "-o", "out.jpg", "-j", "1"};
    auto const with = [&](Names const& more) {
        Names words = render;
        words.insert(words.end(), more.begin(), more.end());
        return run(words).errors;
    };
    Names const all = with({});
    ASSERT_EQ(all.size(), 2U) << testing::PrintToString(all);
    EXPECT_TRUE(all[0].starts_with("remapcolor: warning: ")) << all[0];
    EXPECT_TRUE(all[1].starts_with("remapcolor: note: ")) << all[1];
    EXPECT_EQ(with({"-q"}), (Names{all[0]}));
    std::vector<std::string> events;
    for (std::string const& line : with({"--progress", "json"})) {
        events.push_back(Json::parse(line).at("event"));
    }
    for (char const* const event : {"warning", "note"}) {
        EXPECT_EQ(std::count(events.begin(), events.end(), event), 1) << event;
    }
}

TEST_F(ProgramTest, ProjectStandsForTheOptionsThatMadeIt)
{
    Names const values = {"--mode",  "EXRDisplay",
                          "-s",      "EXRDisplay.Exposure=0.1@-3,0.7@9",
                          "--curve", "red,blue=0,0.1 0.5,0.7 2,1.3 @1 | 0,0.2 1,0.7 2,1@2",
                          "--depth", "32"};
    auto const with = [&](Names words) {
        words.insert(words.end(), values.begin(), values.end());
        return words;
    };
    ASSERT_EQ(run(with({"render", "in.exr", "-o", "options.exr", "--frame", "1.5"})).status, 0);
    ASSERT_EQ(run(with({"project", "-o", "look.json"})).status, 0);
    ASSERT_EQ(
        run({"render", "in.exr", "-o", "project.exr", "-p", "look.json", "--frame=1.5"}).status, 0);
    EXPECT_EQ(loadBytes(path("project.exr")), loadBytes(path("options.exr")));

    // The same values as an OpenFX host's script sets them.
    ASSERT_EQ(run(with({"project", "--openfx", "ofx.json"})).status, 0);
    std::string const look = loadBytes(path("ofx.json"));
    for (char const* const part : {"\"mode\": 1", "\"exrDisplayExposureRed\":",
                                   "\"linearGammaLink\": 1", "\"adjustCurveText\": \"red="}) {
        EXPECT_NE(look.find(part), std::string::npos) << part << " in " << look;
    }
    // Linked channels that differ would take each other's values.
    ASSERT_EQ(run({"project", "--openfx", "apart.json", "-s", "Linear.Gamma.Red=2"}).status, 0);
    EXPECT_NE(loadBytes(path("apart.json")).find("\"linearGammaLink\": 0"), std::string::npos);

    // Options come on top of the project.
    ASSERT_EQ(run({"project", "-p", "look.json", "-o", "second.json", "--mode", "Linear"}).status,
              0);
    Json first = Json::parse(loadBytes(path("look.json")));
    Json const second = Json::parse(loadBytes(path("second.json")));
    EXPECT_EQ(second["values"]["Mode"], "Linear");
    first["values"]["Mode"] = "Linear";
    EXPECT_EQ(second, first);
}

struct WrongRun {
    Names arguments;
    int status;
    std::string complaint;
};

WrongRun const wrongRuns[] = {
    {{"render", "in.exr", "-o", "o.exr", "-s", "Exposure=1"}, 2, "did you mean"},
    {{"render", "in.exr", "-o", "o.exr", "--mode", "a\nb"}, 2, "a?b"},
    {{"render", "none.exr", "-o", "o.exr", "--mode", "x"}, 2, "Mode"},
    {{"render", "in.exr", "-o", "./in.exr"}, 2, "is the input itself"},
    {{"render", "in.exr", "-o", "soft.exr"}, 2, "input itself"},
    {{"render", "in.exr", "-o", "hard.exr"}, 2, "input itself"},
    {{"render", "no.exr", "-o", "./no.exr"}, 2, "input itself"},
    {{"render", "in.exr", "-o", "o.xyz"}, 2, "\".xyz\" is not known"},
    {{"render", "in.exr", "-o", "no/o.exr"}, 2, "\"no\" does not exist"},
    {{"render", "in.exr", "-o", "folder.exr"}, 2, "folder.exr"},
    {{"render", "in.exr", "-o", "o.exr", "--depth", "8"}, 2, "8-bit"},
    {{"render", "in.exr", "-o", "o.exr", "--layer", "x"}, 2, "layer \"x\""},
    {{"render", "none.exr", "-o", "o.exr"}, 1, "no such file"},
    {{"render", "broken.exr", "-o", "o.exr"}, 1, "broken.exr"},
    // The libraries' own ways to fail are a line on standard error and the end of the process.
    {{"render", "broken.png", "-o", "o.png"}, 1, "PNG read error"},
    {{"render", "wide.exr", "-o", "o.jpg", "-q"}, 2, "65500"},
    {{"render", "in.exr", "-o", "o.exr", "-p", "no.json"}, 2, "no.json"},
    // Nobody writes into the pipe.
    {{"render", "pipe.exr", "-o", "o.exr"}, 1, "not an ordinary file"},
    {{"render", "pipe.png", "-o", "o.exr"}, 1, "not an ordinary file"},
    {{"render", "in.exr", "-o", "o.exr", "--mask", "pipe.exr"}, 1, "not an ordinary file"},
    {{"render", "in.exr", "-o", "o.exr", "-p", "pipe.exr"}, 2, "not an ordinary file"},
    {{"render", "in.exr", "-o", "pipe.exr"}, 2, "something other than a file"},
    {{"render", "in.exr", "-o", "loop.exr"}, 2, "back to itself"},
    {{"render", "in.exr", "-o", "nowhere.exr"}, 2, "a file that is not there"},
    {{"project", "-o", "nowhere.json"}, 2, "a file that is not there"},
    {{"render", "in.exr", "-o", "o.exr", "-p", "moving.json"}, 2, "has keyframes; add --frame N"},
    {{"render", "a_v2.-12.exr", "-o", "o.exr", "-p", "moving.json"}, 2, "add --frame -12, the"},
    {{"pick", "a0012.exr", "0,0", "-p", "moving.json"}, 2, "add --frame 12, the number in"},
    {{"render", "in.exr", "-o", "o.exr", "--frame", "1x"}, 2, "--frame takes a number"},
    {{"render", "in.exr", "-o", "o.exr", "-f", "1-4x0"}, 2, "a step of at least 1"},
    {{"render", "in.exr", "-o", "o.exr", "-f", "1-2"}, 2, "have one output"},
    {{"render", "in.exr", "-o", "o.#.exr"}, 2, "--frames"},
    {{"render", "i%3d.exr", "-o", "o.#.exr"}, 2, "%03d"},
    {{"render", "in.exr", "-o", "o.exr", "-f", "1", "--frame", "1"}, 2, "either"},
    {{"render", "in.exr", "-o", "o.#.exr", "-f", "1", "--frame", ".5"}, 2, "either"},
    {{"render", "in.exr", "-o", "o.exr", "--chunk", "1/1"}, 2, "0 to N - 1"},
    {{"render", "in.exr", "-o", "o.exr", "--memory", "-1"}, 2, "500M"},
    {{"render", "in.exr", "-o", "o.exr", "--existing", "keep"}, 2, "overwrite, skip or error"},
    {{"render", "in.exr", "-o", "o.exr", "--on-missing", "x"}, 2, "fail, skip or stop"},
    {{"render", "in.exr", "-o", "o.exr", "--any-age"}, 2, "--existing skip"},
    {{"render", "in.exr", "-o", "o.exr", "--frames-from", "no"}, 2, "frames from \"no\""},
    {{"render", "in.exr", "-o", "o.exr", "--log", "in.exr"}, 2, "name of a picture"},
    {{"render", "in.exr", "-o", "o.exr", "--log", "no/l"}, 2, "no/l"},
    {{"project", "-o", "o.json", "-p", "broken.json"}, 2, "\"format\""},
    {{"project", "-o", "no/o.json"}, 2, "no/o.json"}};

TEST_F(ProgramTest, WrongRunsGiveOneLineAndLeaveTheFolderAsItWas)
{
    std::filesystem::create_symlink("in.exr", path("soft.exr"));
    std::filesystem::create_symlink("loop.exr", path("loop.exr"));
    std::filesystem::create_symlink("no.exr", path("nowhere.exr"));
    std::filesystem::create_symlink("no.json", path("nowhere.json"));
    for (char const* const name : {"pipe.exr", "pipe.png"}) {
        ASSERT_EQ(::mkfifo(path(name).c_str(), 0600), 0);
    }
    std::filesystem::create_hard_link(path("in.exr"), path("hard.exr"));
    std::filesystem::create_directory(path("folder.exr"));
    saveBytes(path("broken.exr"), "not a picture");
    writeOther(path("broken.png"), 40, 1, 8, std::string(1600, 'x'));
    std::string png = loadBytes(path("broken.png"));
    png[png.find("IDAT") + 9] ^= 1;
    saveBytes(path("broken.png"), png);
    writeExr(path("wide.exr"),
             {.dataWindow = {{0, 0}, {65500, 0}}, .displayWindow = {{0, 0}, {65500, 0}}});
    saveBytes(path("broken.json"), "{\"format\": \"other\"}");
    ASSERT_EQ(run({"project", "-o", "moving.json", "-s", "Linear.Gamma.Red=1@1,2@2"}).status, 0);
    Names const before = folder.list();
    std::string const picture = loadBytes(path("in.exr"));
    for (auto const& [arguments, status, complaint] : wrongRuns) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        ProgramResult const result = run(arguments);
        EXPECT_EQ(result.status, status);
        ASSERT_EQ(result.errors.size(), 1U) << testing::PrintToString(result.errors);
        EXPECT_TRUE(result.errors[0].starts_with("remapcolor: ")) << result.errors[0];
        expectLineWith(complaint, result.errors[0]);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(folder.list(), before);
        EXPECT_EQ(loadBytes(path("in.exr")), picture);
    }
}

TEST_F(ProgramTest, JsonProgressIsOneObjectALine)
{
    auto const readEvents = [](ProgramResult const& result) {
        Names events;
        for (std::string const& line : result.errors) {
            events.push_back(Json::parse(line).at("event"));
        }
        return events;
    };
    ProgramResult const done =
        run({"render", "in.exr", "-o", "out.exr", "--progress", "json", "--frame", "-7"});
    EXPECT_EQ(readEvents(done), (Names{"start", "frame", "end"}));
    EXPECT_EQ(Json::parse(done.errors.at(1)).at("frame").dump(), "-7");
    ProgramResult const failed = run({"render", "none.exr", "-o", "x.exr", "--progress", "json"});
    EXPECT_EQ(readEvents(failed), (Names{"start", "error", "end"}));
    EXPECT_EQ(Json::parse(failed.errors[1]).at("status"), failed.status);
}

TEST_F(ProgramTest, DescriptionNamesEveryInputInBothForms)
{
    ProgramResult const table = run({"describe"});
    ProgramResult const json = run({"describe", "--json"});
    for (std::string const name : {"Mode", "Adjust Curve.Blue", "Linear.Input Level.Min.Red",
                                   "EXRDisplay.Knee High.Green", "Plot Color Enabled"}) {
        EXPECT_NE(table.output.find(name + "  "), std::string::npos) << name;
        EXPECT_NE(json.output.find("\"" + name + "\""), std::string::npos) << name;
    }
    EXPECT_NE(table.output.find("3.5 to 7.5"), std::string::npos);
    EXPECT_EQ(Json::parse(json.output).at("schema"), 5);
}

TEST_F(ProgramTest, OutputThatCannotBeWrittenIsAFailure)
{
    ProgramResult const result = Program(folder, {"describe"}, "/dev/full").wait();
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.errors.size(), 1U);
    // A disk that is full after some bytes, for a project.
    auto const fill = [] {
        ::rlimit const room{700, 700};
        ::setrlimit(RLIMIT_FSIZE, &room);
        std::signal(SIGXFSZ, SIG_IGN);
    };
    saveBytes(path("p.json"), "former");
    ProgramResult const saved = Program(folder, {"project", "-o", "p.json"}, {}, fill).wait();
    EXPECT_EQ(saved.status, 3);
    EXPECT_EQ(saved.errors.size(), 1U);
    EXPECT_EQ(loadBytes(path("p.json")), "former");
    EXPECT_EQ(folder.list(), (Names{"in.exr", "p.json"}));
}

TEST_F(ProgramTest, ReaderThatHasSeenEnoughIsNoFailure)
{
    auto const closePipe = [] {
        std::array<int, 2> ends{};
        bool const isMade = ::pipe(ends.data()) == 0 && ::dup2(ends[1], STDOUT_FILENO) >= 0;
        ::close(isMade ? ends[0] : STDERR_FILENO);
    };
    for (Names const& words : {Names{"describe"}, Names{"pick", "in.exr", "0,0"}}) {
        ProgramResult const result = Program(folder, words, {}, closePipe).wait();
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, Names());
    }
}

TEST_F(ProgramTest, UnknownInstructionSetIsRefused)
{
    auto const runWith = [this](char const* set) {
        return Program(folder, {"describe"}, {},
                       [set] { ::setenv("REMAPCOLOR_INSTRUCTIONS", set, 1); })
            .wait();
    };
    ProgramResult const result = runWith("Bogus");
    EXPECT_EQ(result.status, 2);
    ASSERT_EQ(result.errors.size(), 1U);
    expectLineWith("\"Bogus\"", result.errors[0]);
    EXPECT_EQ(runWith("Baseline").status, 0);
    EXPECT_EQ(runWith("").status, 0);
}

TEST_F(ProgramTest, LaterProjectComesOnTopAndVerboseNamesWhatIsNotAtItsDefault)
{
    ASSERT_EQ(
        run({"project", "-o", "a.json", "-s", "Linear.Gamma=3", "--mode", "EXRDisplay"}).status, 0);
    saveBytes(path("b.json"),
              R"({"format": "remap-color-project", "version": 1, "tool": "Remap Color",
                  "schema": 5, "values": {"Linear.Gamma.Red": 2,
                  "EXRDisplay.Exposure.Blue": {"keys": [[1, 0], [2, 1.5]]}}})");
    Names const arguments = {"render", "in.exr",  "-o", "o.exr",   "-p",          "a.json", "-p",
                             "b.json", "--frame", "2",  "--curve", "rgb=0,0 1,2", "-v"};
    Names lines = run(arguments).errors;
    ASSERT_GT(lines.size(), 8U);
    EXPECT_TRUE(lines.front().starts_with("remapcolor: note: no effect of \"Linear.Gamma"));
    lines.erase(lines.begin());
    lines.resize(7);
    EXPECT_EQ(lines, (Names{"remapcolor: mode: EXRDisplay", "remapcolor: mask: none",
                            "remapcolor: Adjust Curve: 0,0 1,2", "remapcolor: Linear.Gamma.Red: 2",
                            "remapcolor: Linear.Gamma.Green: 3", "remapcolor: Linear.Gamma.Blue: 3",
                            "remapcolor: EXRDisplay.Exposure.Blue: 0@1,1.5@2"}));
}

TEST(FailureTest, WhatTheSystemLacksIsNamed)
{
    for (auto const& [code, lack] : {std::pair(std::errc::not_enough_memory, "out of memory"),
                                     std::pair(std::errc::resource_unavailable_try_again, "memory"),
                                     std::pair(std::errc::too_many_files_open, "ulimit -n")}) {
        try {
            throw std::system_error(std::make_error_code(code));
        } catch (...) {
            EXPECT_EQ(describeCurrentFailure().status, 3);
            expectLineWith(lack, describeCurrentFailure().text);
        }
    }
}

TEST_F(ProgramTest, SignalsEndItWithTheirStatusAndLeaveNothing)
{
    // Noise takes the writer of a compressed format seconds; the signal comes as soon as it begins.
    Imath::Box2i const window{{0, 0}, {2999, 1999}};
    writeExr(path("in.exr"),
             {.compression = Imf::NO_COMPRESSION, .dataWindow = window, .displayWindow = window});
    for (int const signal : {SIGINT, SIGTERM, SIGQUIT}) {
        Program const program(folder, {"render", "in.exr", "-o", "out.png", "-q", "-j", "1"});
        for (int wait = 0; wait < 10'000 && folder.list().size() < 2; ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        program.sendSignal(signal);
        program.sendSignal(signal); // some supervisors signal the process and its group
        ProgramResult const result = program.wait();
        EXPECT_EQ(result.status, 128 + signal);
        EXPECT_EQ(result.errors.size(), 1U);
        EXPECT_EQ(folder.list(), Names{"in.exr"});
    }
}

} // namespace
