// The built program as its users meet it: files, exit statuses, lines on standard error.

#include "ProgramRun.h"

#include <ImfArray.h>
#include <ImfRgbaFile.h>
#include <chrono>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using Json = nlohmann::json;
using Names = std::vector<std::string>;

Imf::Rgba const inputPixel(0.25F, 0.5F, 3.0F, 0.5F);

void writePicture(std::filesystem::path const& file, int width, int height,
                  std::vector<Imf::Rgba> const& pixels)
{
    Imf::RgbaOutputFile picture(file.c_str(), width, height, Imf::WRITE_RGBA, 1.0F,
                                Imath::V2f(0.0F, 0.0F), 1.0F, Imf::INCREASING_Y,
                                Imf::NO_COMPRESSION);
    picture.setFrameBuffer(pixels.data(), 1, static_cast<std::size_t>(width));
    picture.writePixels(height);
}

Imf::Rgba readFirstPixel(std::filesystem::path const& file)
{
    Imf::RgbaInputFile picture(file.c_str());
    auto const window = picture.dataWindow();
    Imf::Array2D<Imf::Rgba> pixels(window.max.y + 1, window.max.x + 1);
    picture.setFrameBuffer(&pixels[0][0], 1, static_cast<std::size_t>(window.max.x + 1));
    picture.readPixels(window.min.y, window.max.y);
    return pixels[0][0];
}

std::string readFile(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// A folder with a small picture "in.exr".
class ProgramTest : public testing::Test {
protected:
    ProgramTest()
    {
        constexpr int size = 4;
        writePicture(path("in.exr"), size, size, std::vector<Imf::Rgba>(size * size, inputPixel));
    }

    std::filesystem::path path(std::string const& name) const { return folder.getPath() / name; }

    ProgramResult run(Names const& arguments) const
    {
        return runProgram(folder.getPath(), arguments);
    }

    TestFolder folder;
};

// Each row doubles the colours in its own way.
class Doubling : public ProgramTest, public testing::WithParamInterface<Names> {};

TEST_P(Doubling, ReachesThePixels)
{
    Names arguments = {"render", "in.exr", "-o", "out.exr", "--no-adjust"};
    arguments.insert(arguments.end(), GetParam().begin(), GetParam().end());
    ProgramResult const result = run(arguments);
    ASSERT_EQ(result.status, 0) << testing::PrintToString(result.errors);
    EXPECT_EQ(result.errors, Names());
    Imf::Rgba const pixel = readFirstPixel(path("out.exr"));
    EXPECT_EQ(pixel.r, 2 * inputPixel.r);
    EXPECT_EQ(pixel.g, 2 * inputPixel.g);
    EXPECT_EQ(pixel.b, 2 * inputPixel.b);
    EXPECT_EQ(pixel.a, inputPixel.a);
}

INSTANTIATE_TEST_SUITE_P(
    , Doubling,
    testing::Values(Names{"-s", "Linear.Output Level.Max=2"},
                    Names{"-s", "linear.input level.max=0.5", "--mode", "linear", "-j", "3"},
                    Names{"-s", "Linear.Output Level.Max=7", "-s", "Linear.Output Level.Max=2"},
                    // A single picture is at time 0.
                    Names{"-s", "Linear.Output Level.Max=1@-1,3@1"}));

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
    EXPECT_EQ(readFile(path("project.exr")), readFile(path("options.exr")));

    // Options come on top of the project.
    ASSERT_EQ(run({"project", "-p", "look.json", "-o", "second.json", "--mode", "Linear"}).status,
              0);
    Json first = Json::parse(readFile(path("look.json")));
    Json const second = Json::parse(readFile(path("second.json")));
    EXPECT_EQ(second["values"]["Mode"], "Linear");
    first["values"]["Mode"] = "Linear";
    EXPECT_EQ(second, first);
}

struct Wrong {
    std::string title;
    Names arguments;
    int status;
    std::string complaint;
};

class WrongRun : public ProgramTest, public testing::WithParamInterface<Wrong> {};

TEST_P(WrongRun, GivesOneLineAndLeavesTheFolderAsItWas)
{
    std::filesystem::create_symlink("in.exr", path("soft.exr"));
    std::filesystem::create_hard_link(path("in.exr"), path("hard.exr"));
    std::filesystem::create_directory(path("folder.exr"));
    std::ofstream(path("broken.exr")) << "not a picture";
    std::ofstream(path("broken.json")) << "{\"format\": \"other\"}";
    Names const before = folder.list();
    std::string const picture = readFile(path("in.exr"));

    ProgramResult const result = run(GetParam().arguments);
    EXPECT_EQ(result.status, GetParam().status);
    ASSERT_EQ(result.errors.size(), 1U) << testing::PrintToString(result.errors);
    EXPECT_EQ(result.errors[0].find("remapcolor: "), 0U) << result.errors[0];
    EXPECT_NE(result.errors[0].find(GetParam().complaint), std::string::npos) << result.errors[0];
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(folder.list(), before);
    EXPECT_EQ(readFile(path("in.exr")), picture);
}

INSTANTIATE_TEST_SUITE_P(
    , WrongRun,
    testing::Values(
        Wrong{"Value", {"render", "in.exr", "-o", "o.exr", "-s", "Exposure=1"}, 2, "did you mean"},
        Wrong{"LineFeedInValue", {"render", "in.exr", "-o", "o.exr", "--mode", "a\nb"}, 2, "a?b"},
        Wrong{"ValueBeforeInput", {"render", "none.exr", "-o", "o.exr", "--mode", "x"}, 2, "Mode"},
        Wrong{"Itself", {"render", "in.exr", "-o", "./in.exr"}, 2, "is the input itself"},
        Wrong{"ItselfBySoftLink", {"render", "in.exr", "-o", "soft.exr"}, 2, "input itself"},
        Wrong{"ItselfByHardLink", {"render", "in.exr", "-o", "hard.exr"}, 2, "input itself"},
        Wrong{"ItselfNotThere", {"render", "no.exr", "-o", "./no.exr"}, 2, "input itself"},
        Wrong{"Extension", {"render", "in.exr", "-o", "o.xyz"}, 2, "\".xyz\" is not known"},
        Wrong{"Folder", {"render", "in.exr", "-o", "no/o.exr"}, 2, "\"no\" does not exist"},
        Wrong{"OverAFolder", {"render", "in.exr", "-o", "folder.exr"}, 2, "folder.exr"},
        Wrong{"DepthOfFormat", {"render", "in.exr", "-o", "o.exr", "--depth", "8"}, 2, "8-bit"},
        Wrong{"Layer", {"render", "in.exr", "-o", "o.exr", "--layer", "x"}, 2, "layer \"x\""},
        Wrong{"MissingInput", {"render", "none.exr", "-o", "o.exr"}, 1, "no such file"},
        Wrong{"DamagedInput", {"render", "broken.exr", "-o", "o.exr"}, 1, "broken.exr"},
        Wrong{"MissingProject", {"render", "in.exr", "-o", "o.exr", "-p", "no.json"}, 2, "no.json"},
        Wrong{"WrongProject", {"project", "-o", "o.json", "-p", "broken.json"}, 2, "\"format\""},
        Wrong{"ProjectFolder", {"project", "-o", "no/o.json"}, 2, "no/o.json"}),
    [](auto const& info) { return info.param.title; });

TEST_F(ProgramTest, JsonProgressIsOneObjectALine)
{
    auto const readEvents = [](ProgramResult const& result) {
        std::vector<std::string> events;
        for (std::string const& line : result.errors) {
            events.push_back(Json::parse(line).at("event"));
        }
        return events;
    };
    ProgramResult const done = run({"render", "in.exr", "-o", "out.exr", "--progress", "json"});
    std::vector<std::string> const events = readEvents(done);
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
    ProgramResult const result = Program(folder.getPath(), {"describe"}, "/dev/full").wait();
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.errors.size(), 1U);
}

class Stopping : public ProgramTest, public testing::WithParamInterface<int> {};

TEST_P(Stopping, EndsWithTheSignalsStatusAndLeavesNothing)
{
    // Noise takes the writer of a compressed format seconds; the signal comes as soon as it begins.
    constexpr int width = 3000;
    constexpr int height = 2000;
    std::minstd_rand random;
    std::vector<Imf::Rgba> pixels(static_cast<std::size_t>(width) * height);
    for (Imf::Rgba& pixel : pixels) {
        auto const value = [&random] { return static_cast<float>(random() % 65536) / 65536.0F; };
        pixel = Imf::Rgba(value(), value(), value(), 1.0F);
    }
    writePicture(path("in.exr"), width, height, pixels);

    Program program(folder.getPath(), {"render", "in.exr", "-o", "out.png", "-q", "-j", "1"});
    for (int wait = 0; wait < 10'000 && folder.list().size() < 2; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    program.sendSignal(GetParam());
    // Some supervisors signal the process and its group.
    program.sendSignal(GetParam());
    ProgramResult const result = program.wait();
    EXPECT_EQ(result.status, 128 + GetParam());
    EXPECT_EQ(result.errors.size(), 1U);
    EXPECT_EQ(folder.list(), Names{"in.exr"});
}

INSTANTIATE_TEST_SUITE_P(, Stopping, testing::Values(SIGINT, SIGTERM));

} // namespace
