#include "remapcolor/options/Completion.h"

#include "remapcolor/options/CommandLine.h"

#include <algorithm>
#include <exception>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

std::vector<Completion::Candidate> offerSettings(std::string const&)
{
    return {{"Linear.Gamma=", ""}, {"EXRDisplay.Gamma=", ""}};
}

Words complete(Words const& words)
{
    Completion const completion = completeWords(getProgramManual(), words, &offerSettings);
    Words texts;
    for (Completion::Candidate const& candidate : completion.candidates) {
        texts.push_back(candidate.text);
    }
    if (completion.takesFile) {
        texts.emplace_back("FILE");
    }
    return texts;
}

/// What the command line says of `words`; empty where nothing is wrong with the options.
std::string complainAbout(Words const& words)
{
    std::vector<char const*> arguments = {"remapcolor"};
    for (std::string const& word : words) {
        arguments.push_back(word.c_str());
    }
    try {
        parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
    } catch (std::exception const& error) {
        return error.what();
    }
    return {};
}

TEST(Completion, EveryOptionAndWordThatIsOfferedIsTaken)
{
    Words const commands = complete({""});
    EXPECT_GT(commands.size(), 4U);
    for (CommandManual const& command : getProgramManual().commands) {
        EXPECT_EQ(std::count(commands.begin(), commands.end(), command.name), 1) << command.name;
        Words const offered = complete({command.name, "-"});
        std::size_t nbOptions = 1; // for --help
        for (OptionText const& option : command.options) {
            nbOptions += option.isArgument ? 0 : 1;
            for (std::string const& name : option.names) {
                std::string const complaint = complainAbout({command.name, name, "x"});
                EXPECT_EQ(complaint.find("no option"), std::string::npos) << complaint;
            }
            for (std::string const& word : option.hint.words) {
                std::string const complaint =
                    complainAbout({command.name, option.names.back(), word});
                EXPECT_EQ(complaint.find(option.names.back() + " takes"), std::string::npos)
                    << complaint;
            }
        }
        EXPECT_EQ(offered.size(), nbOptions) << command.name;
    }
}

TEST(Completion, WhatStandsBeforeDecides)
{
    struct Case {
        Words words;
        Words offered;
    };
    for (auto const& [words, offered] :
         {Case{{"re"}, {"render"}}, Case{{"render", "--ex"}, {"--existing"}},
          Case{{"render", "--existing", ""}, {"overwrite", "skip", "error"}},
          Case{{"render", "--existing=S"}, {"--existing=skip"}},
          Case{{"render", "-q", "--progress", "j"}, {"json"}},
          Case{{"render", "--existing", "skip", ""}, {"FILE"}},
          Case{{"render", "-s", "exrd"}, {"EXRDisplay.Gamma="}},
          Case{{"render", "--set=lin"}, {"--set=Linear.Gamma="}},
          Case{{"render", "-p", ""}, {"FILE"}}, Case{{"render", "--", "--ex"}, {"FILE"}},
          Case{{"render", "-j", "--ex"}, {}}, Case{{"render", "--quiet=x"}, {}},
          Case{{"pick", "in.exr", "1"}, {}}, Case{{"nonsense", "-"}, {}}}) {
        EXPECT_EQ(complete(words), offered) << testing::PrintToString(words);
    }
}

TEST(Manual, SaysEverythingThatIsParsed)
{
    std::string page = formatManualPage(getProgramManual());
    for (std::size_t at = 0; (at = page.find("\\-", at)) != std::string::npos;) {
        page.erase(at, 1);
    }
    for (CommandManual const& command : getProgramManual().commands) {
        EXPECT_NE(page.find("remapcolor " + command.name + " "), std::string::npos);
        for (OptionText const& option : command.options) {
            EXPECT_NE(page.find(option.names.back()), std::string::npos) << option.names.back();
        }
    }
    // No line may begin with what the markup takes for a request that is none of ours.
    EXPECT_EQ(page.find("\n'"), std::string::npos);
}

} // namespace
