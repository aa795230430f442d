// The built program as its users meet it: files, exit statuses, lines on standard error.

#include "Program.h"
#include "support/MediaSupport.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>
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
          // A single picture is at time 0.
          Names{"-s", "Linear.Output Level.Max=1@-1,3@1"}}) {
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

TEST_F(ProgramTest, ProjectStandsForTheOptionsThatMadeIt)
{
    Names const values = {"--mode",  "EXRDisplay",
                          "-s",      "EXRDisplay.Exposure=0.1@-3,0.7@9",
                          "--curve", "red,blue=0,0.1 0.5,0.7 2,1.3",
                          "--depth", "32"};
    auto const with = [&](Names words) {
        words.insert(words.end(), values.begin(), values.end());
        return words;
    };
    ASSERT_EQ(run(with({"render", "in.exr", "-o", "options.exr"})).status, 0);
    ASSERT_EQ(run(with({"project", "-o", "look.json"})).status, 0);
    ASSERT_EQ(run({"render", "in.exr", "-o", "project.exr", "-p", "look.json"}).status, 0);
    EXPECT_EQ(loadBytes(path("project.exr")), loadBytes(path("options.exr")));

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
    {{"render", "in.exr", "-o", "o.exr", "-p", "no.json"}, 2, "no.json"},
    {{"project", "-o", "o.json", "-p", "broken.json"}, 2, "\"format\""},
    {{"project", "-o", "no/o.json"}, 2, "no/o.json"}};

TEST_F(ProgramTest, WrongRunsGiveOneLineAndLeaveTheFolderAsItWas)
{
    std::filesystem::create_symlink("in.exr", path("soft.exr"));
    std::filesystem::create_hard_link(path("in.exr"), path("hard.exr"));
    std::filesystem::create_directory(path("folder.exr"));
    saveBytes(path("broken.exr"), "not a picture");
    saveBytes(path("broken.json"), "{\"format\": \"other\"}");
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
    ProgramResult const done = run({"render", "in.exr", "-o", "out.exr", "--progress", "json"});
    Names const events = readEvents(done);
    ASSERT_GE(events.size(), 2U);
    EXPECT_EQ(events.front(), "start");
    EXPECT_EQ(events.back(), "done");
    ProgramResult const failed = run({"render", "none.exr", "-o", "x.exr", "--progress", "json"});
    EXPECT_EQ(readEvents(failed), Names{"error"});
    EXPECT_EQ(Json::parse(failed.errors[0]).at("status"), failed.status);
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
}

TEST_F(ProgramTest, SignalsEndItWithTheirStatusAndLeaveNothing)
{
    // Noise takes the writer of a compressed format seconds; the signal comes as soon as it begins.
    Imath::Box2i const window{{0, 0}, {2999, 1999}};
    writeExr(path("in.exr"),
             {.compression = Imf::NO_COMPRESSION, .dataWindow = window, .displayWindow = window});
    for (int const signal : {SIGINT, SIGTERM}) {
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
