// What pictures say of themselves, through the built program.

#include "apps/remapcolor/Program.h"

#include <nlohmann/json.hpp>

using Json = nlohmann::json;
using InfoTest = MediaTest;

TEST_F(InfoTest, PartsChannelsWindowsAndAttributesAreTold)
{
    writeParts(file("a.exr"),
               {{.channels = {{"R"}}, .compression = Imf::RLE_COMPRESSION, .isDeep = true},
                {.channels = {{"B", Imf::FLOAT}, {"c", Imf::UINT, 2, 3}},
                 .dataWindow = {{-6, -9}, {29, 44}},
                 .addAttributes = [](Imf::Header& header) { header.setView("left"); }},
                {.tileSize = 16, .hasLevels = true}});
    writeOther(file("b.png"), 2, 3, 8, "123456");
    saveBytes(file("c.exr"), "none");
    ProgramResult const result =
        Program(folder, {"info", "a.exr", "c.exr", "b.png", "--json"}).wait();
    EXPECT_EQ(result.status, 1);
    ASSERT_EQ(result.errors.size(), 1U);
    expectLineWith("c.exr", result.errors[0]);
    Json const pictures = Json::parse(result.output);
    ASSERT_EQ(pictures.size(), 2U);
    EXPECT_EQ(pictures[1].at("format"), "png");
    EXPECT_EQ(pictures[1].at("parts")[0].at("channels")[2].at("type"), "uint8");
    Json const& parts = pictures[0].at("parts");
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_EQ(parts[0].at("pixels"), "deep scan lines");
    EXPECT_EQ(parts[0].at("compression"), "RLE");
    EXPECT_EQ(parts[1].at("name"), "1");
    EXPECT_EQ(parts[1].at("dataWindow"),
              Json({{"x", -6}, {"y", -9}, {"width", 36}, {"height", 54}}));
    EXPECT_EQ(parts[1].at("channels")[1],
              Json({{"name", "c"}, {"type", "uint"}, {"xSampling", 2}, {"ySampling", 3}}));
    bool isViewTold = false;
    for (Json const& attribute : parts[1].at("attributes")) {
        isViewTold =
            isViewTold || (attribute.at("name") == "view" && attribute.at("value") == "left");
    }
    EXPECT_TRUE(isViewTold);
    EXPECT_EQ(parts[2].at("resolutions"), 6);

    std::string const text = Program(folder, {"info", "a.exr"}).wait().output;
    for (char const* const line :
         {"part 1 \"1\"", "36 x 54 at -6,-9", "c uint every 2 x 3", "tiles 16 x 16"}) {
        EXPECT_NE(text.find(line), std::string::npos) << text;
    }
}
