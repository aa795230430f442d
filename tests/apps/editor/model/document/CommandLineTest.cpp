#include "editor/model/document/CommandLine.h"

#include "session/Failures.h"

#include <gtest/gtest.h>

TEST(CommandLineTest, FilesAndOptionsAreTakenAndWhatIsWrongIsNamed)
{
    CommandLine const line =
        parseCommandLine({"a.exr", "--size=640x480", "--screenshot", "s.png", "--", "--help", "-"});
    EXPECT_EQ(line.files, (std::vector<std::filesystem::path>{"a.exr", "--help", "-"}));
    EXPECT_EQ(line.screenshot, "s.png");
    EXPECT_EQ(line.size->width, 640);
    EXPECT_EQ(line.size->height, 480);
    EXPECT_TRUE(parseCommandLine({"x", "-h"}).isHelpWanted);
    for (std::vector<std::string> const& wrong :
         std::vector<std::vector<std::string>>{{"--none"},
                                               {"-platform"},
                                               {"--screenshot"},
                                               {"--size"},
                                               {"--size", "640"},
                                               {"--size", "640x"},
                                               {"--size", "0x480"},
                                               {"--size", "640x480x"},
                                               {"--size=99999x1"},
                                               {""}}) {
        EXPECT_THROW(parseCommandLine(wrong), UsageError) << wrong.front();
    }
}
