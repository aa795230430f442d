#include "remapcolor/CommandLine.h"

#include "remapcolor/Failures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

Request parse(std::vector<std::string> const& words)
{
    std::vector<char const*> arguments = {"remapcolor"};
    for (std::string const& word : words) {
        arguments.push_back(word.c_str());
    }
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

TEST(CommandLine, ValueOptionsKeepTheirOrderAcrossOptions)
{
    auto const request = std::get<RenderRequest>(
        parse({"render", "-s", "A=1", "in.exr", "--mode", "Linear", "--curve=rgb=0,0 1,1", "-sB=2",
               "--no-adjust", "--depth", "INPUT", "-o", "out.exr", "--set", "A=3"}));
    std::vector<std::string> texts;
    for (ValueSetting const& setting : request.node.settings) {
        texts.push_back(setting.text);
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"A=1", "Mode=Linear", "rgb=0,0 1,1", "B=2",
                                               "Adjust=false", "Output Depth=3", "A=3"}));
    EXPECT_EQ(request.input, "in.exr");
    EXPECT_EQ(request.output, "out.exr");
}

TEST(CommandLine, LastOfARepeatedOptionCounts)
{
    auto const request = std::get<RenderRequest>(parse(
        {"render", "-j4", "-q", "in.exr", "-o", "a.exr", "-v", "--threads=2", "-o", "b.exr"}));
    EXPECT_EQ(request.threads, 2);
    EXPECT_EQ(request.verbosity, Verbosity::Verbose);
    EXPECT_EQ(request.output, "b.exr");
}

TEST(CommandLine, TakesStrangeFileNamesAsTheyAre)
{
    auto const request =
        std::get<RenderRequest>(parse({"render", "-o", "[a,b].exr", "--", "-in=[1,2].exr"}));
    EXPECT_EQ(request.input, "-in=[1,2].exr");
    EXPECT_EQ(request.output, "[a,b].exr");
    EXPECT_EQ(std::get<RenderRequest>(parse({"render", "describe", "-o", "x.exr"})).input,
              "describe");
}

class Help : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(Help, FitsOnAScreenAndEndsInExamples)
{
    std::string const text = std::get<PrintRequest>(parse(GetParam())).text;
    std::istringstream lines(text);
    int nbLines = 0;
    for (std::string line; std::getline(lines, line); ++nbLines) {
        EXPECT_LE(line.size(), 90U) << line;
    }
    EXPECT_LE(nbLines, 45);
    EXPECT_NE(text.find("\nExamples:\n  remapcolor "), std::string::npos);
    EXPECT_EQ(text.back(), '\n');
}

INSTANTIATE_TEST_SUITE_P(, Help,
                         testing::Values(std::vector<std::string>{"--help"},
                                         std::vector<std::string>{"render", "-h"},
                                         std::vector<std::string>{"describe", "--help"},
                                         std::vector<std::string>{"project", "--help"}));

struct Wrong {
    std::string title;
    std::vector<std::string> words;
    std::string complaint;
};

class WrongCommandLine : public testing::TestWithParam<Wrong> {};

TEST_P(WrongCommandLine, IsRefusedWithAHint)
{
    try {
        parse(GetParam().words);
        FAIL() << "accepted";
    } catch (UsageError const& error) {
        EXPECT_NE(std::string(error.what()).find(GetParam().complaint), std::string::npos)
            << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    , WrongCommandLine,
    testing::Values(
        Wrong{"Nothing", {}, "a command is missing"},
        Wrong{"NearCommand", {"rendr", "a"}, "did you mean \"render\"?"},
        Wrong{"OptionBeforeCommand", {"-q", "render"}, "unexpected \"-q\" before the command"},
        Wrong{"NoInput", {"render"}, "needs a picture to read"},
        Wrong{"NoOutput", {"render", "a.exr"}, "add -o OUTPUT"},
        Wrong{"TwoInputs", {"render", "a.exr", "b.exr", "-o", "c.exr"}, "unexpected argument"},
        Wrong{"NearOption", {"render", "--moed=Linear"}, "did you mean \"--mode\"?"},
        Wrong{"UnknownLetter", {"render", "-x"}, "there is no option \"-x\""},
        Wrong{"ValueMissing", {"render", "a.exr", "-o"}, "--output needs a value after it"},
        Wrong{"ValueTooMany", {"render", "--quiet=no"}, "--quiet takes no value"},
        Wrong{"NoThreads", {"render", "-j", "0"}, "from 1 to 1024, not \"0\""},
        Wrong{"NegativeThreads", {"render", "-j", "-1"}, "from 1 to 1024, not \"-1\""},
        Wrong{"WordForThreads", {"render", "--threads=all"}, "not \"all\""},
        Wrong{"Depth", {"render", "--depth", "10"}, "takes 8, 16, 32 or input, not \"10\""},
        Wrong{"Progress", {"render", "--progress", "dots"}, "auto, bar, json or none"},
        Wrong{"ProjectWithoutOutput", {"project"}, "add -o OUT.json"},
        Wrong{"ProjectOverAPicture", {"project", "-o", "a.exr"}, "must end in .json"}),
    [](auto const& info) { return info.param.title; });

} // namespace
