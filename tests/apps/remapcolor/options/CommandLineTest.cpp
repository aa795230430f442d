#include "remapcolor/options/CommandLine.h"

#include "session/Failures.h"
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

TEST(CommandLine, WordsAndSizesMeanWhatTheySay)
{
    auto const render = [](std::string const& option, std::string const& word) {
        return std::get<RenderRequest>(parse({"render", "a", "-o", "b", option, word}));
    };
    for (auto const& [word, kind] :
         {std::pair("none", Compression::None), std::pair("rle", Compression::Rle),
          std::pair("zips", Compression::Zips), std::pair("zip", Compression::Zip),
          std::pair("piz", Compression::Piz), std::pair("pxr24", Compression::Pxr24),
          std::pair("b44", Compression::B44), std::pair("b44a", Compression::B44a),
          std::pair("dwaa", Compression::Dwaa), std::pair("dwab", Compression::Dwab)}) {
        auto const choice = render("--compression", word).compression;
        EXPECT_EQ(choice->kind, kind) << word;
        EXPECT_FALSE(choice->dwaLevel.has_value());
    }
    EXPECT_FALSE(render("--compression", "input").compression.has_value());
    EXPECT_EQ(render("--compression", "dwab:0").compression->dwaLevel, 0.0F);
    EXPECT_EQ(render("--compression", "dwaa:10000").compression->dwaLevel, 10000.0F);
    for (auto const& [text, bytes] :
         {std::pair("1", 1.0), std::pair("3K", 3072.0), std::pair("2kib", 2048.0),
          std::pair("1.5M", 1.5 * 0x1p20), std::pair("4GB", 0x1p32), std::pair("1t", 0x1p40)}) {
        EXPECT_EQ(render("--memory", text).memory, static_cast<std::size_t>(bytes)) << text;
    }
    EXPECT_EQ(render("--existing", "error").existing, ExistingOutput::Error);
    EXPECT_EQ(render("--on-missing", "stop").missing, MissingInput::Stop);
    EXPECT_EQ(render("--on-missing", "skip").missing, MissingInput::Skip);
    auto const pick = std::get<PickRequest>(parse({"pick", "a", "1,-2", "-3,4,5,6"}));
    ASSERT_EQ(pick.places.size(), 2U);
    EXPECT_EQ(pick.places[0].y, -2);
    auto const& [x, y, width, height, isArea] = pick.places[1];
    EXPECT_EQ((std::vector{x, y, width, height}), (std::vector{-3, 4, 5, 6}));
    EXPECT_TRUE(isArea && !pick.places[0].isArea);
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
          Case{{"render", "a", "-o", "b", "--frame", "1", "-f", "1-2"}, "--frame or --frames"},
          Case{{"render", "a", "-o", "b", "--any-age"}, "--any-age needs --existing skip"},
          Case{{"render", "--compression", "zip:3"}, "after dwaa: or dwab: only"},
          Case{{"render", "--compression", "dwaa:-1"}, "a level from 0 to 10000"},
          Case{{"render", "--compression", "dwab:nan"}, "a level from 0 to 10000"},
          Case{{"render", "--memory", "0"}, "--memory takes a size"},
          Case{{"render", "--memory", "3x"}, "--memory takes a size"},
          Case{{"render", "--existing", "keep"}, "overwrite, skip or error"},
          Case{{"render", "--on-missing", "no"}, "fail, skip or stop"},
          Case{{"pick", "a", "1,2,3"}, "not \"1,2,3\""},
          Case{{"pick", "a", "1,x,2"}, "not \"1,x,2\""},
          Case{{"pick", "a", "1,2,0,1"}, "not \"1,2,0,1\""},
          Case{{"pick", "a", "1,2,1,0"}, "not \"1,2,1,0\""},
          Case{{"project"}, "add -o OUT.json"},
          Case{{"project", "-o", "a.exr"}, "must end in .json"}}) {
        expectLineWith(complaint, messageOf<UsageError>([&] { parse(words); }));
    }
}

} // namespace
