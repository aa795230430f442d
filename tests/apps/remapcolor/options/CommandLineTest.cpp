#include "remapcolor/options/CommandLine.h"

#include "remapcolor/reports/Failures.h"
#include "support/Failures.h"

#include <gtest/gtest.h>
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
                                               "Adjust=false", "Output Depth=input", "A=3"}));
    EXPECT_EQ(request.shot.input, "in.exr");
    EXPECT_EQ(request.output, "out.exr");
}

TEST(CommandLine, LastOfARepeatedOptionCountsAndFileNamesAreTakenAsTheyAre)
{
    auto const request =
        std::get<RenderRequest>(parse({"render", "-j4", "-v", "--threads=2", "-o", "[a,b].exr",
                                       "-p", "a.json", "-p", "b.json", "--", "-in=[1,2].exr"}));
    EXPECT_EQ(request.threads, 2);
    EXPECT_EQ(request.verbosity, Verbosity::Verbose);
    EXPECT_EQ(request.node.projects, (std::vector<std::filesystem::path>{"a.json", "b.json"}));
    EXPECT_EQ(request.shot.input, "-in=[1,2].exr");
    EXPECT_EQ(request.output, "[a,b].exr");
}

TEST(CommandLine, WrongOnesAreRefusedWithAHint)
{
    struct Case {
        std::vector<std::string> words;
        std::string complaint;
    };
    for (auto const& [words, complaint] :
         {Case{{}, "a command is missing"},
          Case{{"rendr", "a"}, "did you mean \"render\"?"},
          Case{{"-q", "render"}, "unexpected \"-q\" before the command"},
          Case{{"render"}, "needs a picture to read"},
          Case{{"render", "a.exr"}, "add -o OUTPUT"},
          Case{{"render", "a.exr", "b.exr", "-o", "c.exr"}, "unexpected argument"},
          Case{{"render", "--moed=Linear"}, "did you mean \"--mode\"?"},
          Case{{"render", "-x"}, "there is no option \"-x\""},
          Case{{"render", "a.exr", "-o"}, "--output needs a value after it"},
          Case{{"render", "--quiet=no"}, "--quiet takes no value"},
          Case{{"render", "-j", "0"}, "from 1 to 1024, not \"0\""},
          Case{{"render", "-j", "-1"}, "from 1 to 1024, not \"-1\""},
          Case{{"render", "--threads=all"}, "not \"all\""},
          Case{{"render", "--depth", "10"}, "takes 8, 16, 32 or input, not \"10\""},
          Case{{"render", "--progress", "dots"}, "auto, bar, json or none"},
          Case{{"render", "-o", "a.exr", "--output=b.exr"},
               "\"a.exr\" and \"b.exr\"; give -o once"},
          Case{{"project", "-o", "a.json", "-o", "a.json"}, "give -o once"},
          Case{{"render", "-q", "-v"}, "contradict each other"},
          Case{{"render", "-v", "--quiet"}, "contradict each other"},
          Case{{"project"}, "add -o OUT.json"},
          Case{{"project", "-o", "a.exr"}, "must end in .json"}}) {
        expectLineWith(complaint, messageOf<UsageError>([&] { parse(words); }));
    }
}

} // namespace
