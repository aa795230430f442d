// "pick" and masking as their users meet them: what "render" makes of a pixel is the reference.

#include "apps/remapcolor/Program.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using Names = std::vector<std::string>;

struct Pixel {
    float r, g, b, a;
};

constexpr int left = -3;
constexpr int top = 5;
constexpr int width = 4;
constexpr int height = 40; // several blocks
constexpr float infinity = std::numeric_limits<float>::infinity();

Pixel makePixel(int x, int y)
{
    if (x == 0 && y == 0) {
        return {infinity, -infinity, std::numeric_limits<float>::quiet_NaN(), -2.0F};
    }
    auto const value = static_cast<float>(x + width * y);
    return {0.013F * value, 0.7F - 0.02F * value, 0.1F, value / 100.0F};
}

Imf::FrameBuffer makeFrame(std::vector<Pixel>& pixels)
{
    Imf::FrameBuffer frame;
    char* const base = reinterpret_cast<char*>(pixels.data() - left - top * width);
    std::size_t offset = 0;
    for (char const* name : {"R", "G", "B", "A"}) {
        frame.insert(name,
                     Imf::Slice(Imf::FLOAT, base + offset, sizeof(Pixel), sizeof(Pixel) * width));
        offset += sizeof(float);
    }
    return frame;
}

class PickTest : public testing::Test {
protected:
    PickTest()
    {
        std::vector<Pixel> pixels;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                pixels.push_back(makePixel(x, y));
            }
        }
        write("in.exr", pixels);
        // Over the left half.
        for (std::size_t index = 0; index < pixels.size(); ++index) {
            pixels[index] = {9.0F, 9.0F, 9.0F, index % width < width / 2 ? 1.5F : 0.0F};
        }
        write("mask.exr", pixels);
        write("dot.exr", pixels, 2);
    }

    void write(char const* name, std::vector<Pixel>& pixels, int rows = height) const
    {
        Imath::Box2i const window({left, top}, {left + width - 1, top + rows - 1});
        Imf::Header header(window, window);
        for (char const* channel : {"R", "G", "B", "A"}) {
            header.channels().insert(channel, Imf::Channel(Imf::FLOAT));
        }
        Imf::OutputFile file((folder.path / name).c_str(), header);
        file.setFrameBuffer(makeFrame(pixels));
        file.writePixels(rows);
    }

    std::vector<Pixel> read(char const* name) const
    {
        std::vector<Pixel> pixels(width * height);
        Imf::InputFile file((folder.path / name).c_str());
        file.setFrameBuffer(makeFrame(pixels));
        file.readPixels(top, top + height - 1);
        return pixels;
    }

    ProgramResult run(Names words, Names const& more) const
    {
        words.insert(words.end(), more.begin(), more.end());
        return Program(folder, words).wait();
    }

    TestFolder folder;
};

/// The numbers after "out." or "in.", in order.
std::vector<float> readValues(std::string const& text, std::string const& side)
{
    std::vector<float> values;
    std::istringstream lines(text);
    for (std::string label, value; lines >> label >> value;) {
        if (label.starts_with(side)) {
            values.push_back(std::strtof(value.c_str(), nullptr));
        }
    }
    return values;
}

/// NaN is the same as NaN.
bool isSame(float a, float b)
{
    return a == b || (a != a && b != b);
}

TEST_F(PickTest, GivesWhatRenderMakesOfThePixel)
{
    std::vector<Names> const looks = {
        {},
        {"-s", "Linear.Gamma=2.2", "--curve", "rgb=0,0 0.4,0.7 1,1", "--mix", "0.3"},
        {"--mode", "EXRDisplay", "-s", "EXRDisplay.Exposure=1.25@-1,2@9", "--no-adjust", "--frame",
         "3.5"},
        {"--curve", "green=0,0 1,1 @-2 | 0,0.1 1,3 @2", "--frame", "-1"},
        {"-s", "Mute=true", "-s", "Linear.Gamma=3"},
        {"-s", "Linear.Gamma=2.2", "--mask", "mask.exr", "--mix", "0.3"},
        {"--mode", "EXRDisplay", "--mask", "mask.exr", "--mask-invert"},
        // 9.0 of R is 1; below its two rows it is 0.
        {"-s", "Linear.Gamma=3", "--mask", "dot.exr", "--mask-channel", "R"},
        {"-s", "Linear.Gamma=3", "--mask", "dot.exr", "--mask-invert", "--mix", "0.7"}};
    for (Names const& look : looks) {
        Names const render = {"render", "in.exr", "-o", "out.exr", "--depth", "32"};
        ASSERT_EQ(run(render, look).status, 0);
        std::vector<Pixel> const rendered = read("out.exr");
        for (auto const& [x, y] : {std::pair(0, 0), std::pair(3, 1), std::pair(1, height - 1)}) {
            std::string const place = std::to_string(left + x) + "," + std::to_string(top + y);
            ProgramResult const result = run({"pick", "in.exr", place}, look);
            Pixel const& wanted = rendered[static_cast<std::size_t>(x + y * width)];
            auto const values = readValues(result.output, "out.");
            ASSERT_EQ(values.size(), 4U) << result.output << testing::PrintToString(result.errors);
            EXPECT_TRUE(isSame(values[0], wanted.r) && isSame(values[1], wanted.g) &&
                        isSame(values[2], wanted.b) && isSame(values[3], wanted.a))
                << place << "\n"
                << result.output;
        }
    }
}

TEST_F(PickTest, AreasSumUpWhatRenderMakesOfThem)
{
    Names const look = {"-s", "Linear.Gamma=2.2", "--mask", "mask.exr", "--mix", "0.6"};
    ASSERT_EQ(run({"render", "in.exr", "-o", "out.exr", "--depth", "32"}, look).status, 0);
    // All but the first column and the last row; and what of an area lies within the picture.
    ProgramResult const result =
        run({"pick", "in.exr", "-2,5,3,39", "-3,5", "-9,40,7,99", "--json"}, look);
    ASSERT_EQ(result.errors.size(), 1U);
    EXPECT_NE(result.errors[0].find("has pixels in -3,40,1,5 only"), std::string::npos);
    auto const picks = nlohmann::json::parse(result.output);
    ASSERT_EQ(picks.size(), 3U);
    EXPECT_EQ(picks[1]["pixel"], (std::vector<int>{-3, 5}));
    EXPECT_EQ(picks[2]["area"], (std::vector<int>{-3, 40, 1, 5}));
    for (std::string const side : {"in", "out"}) {
        std::vector<Pixel> const pixels = read(side == "in" ? "in.exr" : "out.exr");
        double sum = 0.0;
        float least = infinity;
        float greatest = -infinity;
        for (std::size_t index = 0; index < pixels.size() - width; ++index) {
            if (index % width != 0) {
                sum += pixels[index].g;
                least = std::min(least, pixels[index].g);
                greatest = std::max(greatest, pixels[index].g);
            }
        }
        auto const& green = picks[0][side]["green"];
        EXPECT_EQ(green["mean"], sum / (3 * 39));
        EXPECT_EQ(green["least"], least);
        EXPECT_EQ(green["greatest"], greatest);
    }
    // The odd pixel is counted, and no more.
    auto const odd =
        nlohmann::json::parse(run({"pick", "in.exr", "-3,5,1,2", "--json"}, {}).output);
    EXPECT_EQ(odd["in"]["blue"]["nan"], 1);
    EXPECT_EQ(odd["in"]["red"]["inf"], 1);
    EXPECT_EQ(odd["in"]["blue"]["mean"], 0.1F);
    auto const lone =
        nlohmann::json::parse(run({"pick", "in.exr", "-3,5,1,1", "--json"}, {}).output);
    EXPECT_TRUE(lone["in"]["red"]["mean"].is_null());
}

TEST_F(PickTest, LayerAndFrameAreThoseThatAreAskedFor)
{
    writeExr(folder.path / "layers.exr", {.channels = {},
                                          .values = {{"R", 0.25F},
                                                     {"G", 0.25F},
                                                     {"B", 0.25F},
                                                     {"b.R", 0.5F},
                                                     {"b.G", 0.75F},
                                                     {"b.B", 1.0F}}});
    Names const look = {"-s", "Linear.Output Level.Max=1@1,3@5", "--no-adjust"};
    for (auto const& [more, in, out] :
         {std::tuple(Names{"--frame", "1"}, 0.25F, 0.25F),
          std::tuple(Names{"--frame", "5", "--layer", "b"}, 0.75F, 2.25F)}) {
        Names arguments = {"pick", "layers.exr", "3,4"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        std::string const text = run(arguments, look).output;
        EXPECT_EQ(readValues(text, "in.").at(1), in) << text;
        EXPECT_EQ(readValues(text, "out.").at(1), out) << text;
    }
}

TEST_F(PickTest, FailuresAreOneLineAndTheRightStatus)
{
    struct Case {
        Names arguments;
        int status;
        char const* complaint;
    };
    std::vector<Case> const cases = {
        {{"pick", "in.exr"}, 2, "needs a pixel"},
        {{"pick", "in.exr", "1,2,3"}, 2, "X,Y"},
        {{"pick", "in.exr", "1,5"}, 2, "goes from -3,5 to 0,44"},
        {{"pick", "in.exr", "0,45"}, 2, "no pixel 0,45"},
        {{"pick", "in.exr", "0,5", "--frame", "x"}, 2, "--frame"},
        {{"pick", "in.exr", "0,5", "7,7,0,1"}, 2, "X,Y,W,H"},
        {{"pick", "in.exr", "0,5", "1,5,2147483647,9"}, 2, "no pixel 1,5,2147483647,9"},
        {{"pick", "in.exr", "0,5", "--mask-invert"}, 2, "add --mask FILE"},
        {{"pick", "in.exr", "0,5", "--mask", "mask.exr", "--mask-channel", "Q"},
         2,
         "no channel \"Q\"; there are \"A\", \"B\""},
        {{"pick", "none.exr", "0,5"}, 1, "no such file"},
        {{"render", "in.exr", "-o", "o.exr", "--mask", "none.exr"}, 1, "none.exr"},
        {{"render", "in.exr", "-o", "mask.exr", "--mask", "mask.exr"}, 2, "the mask itself"},
        {{"render", "in.exr", "-o", "o.exr", "--mix", "1.5"}, 2, "\"Mix\" takes 0 to 1"}};
    for (Case const& wrong : cases) {
        ProgramResult const result = run(wrong.arguments, {});
        EXPECT_EQ(result.status, wrong.status) << wrong.complaint;
        ASSERT_EQ(result.errors.size(), 1U) << testing::PrintToString(result.errors);
        EXPECT_NE(result.errors[0].find(wrong.complaint), std::string::npos) << result.errors[0];
        EXPECT_EQ(result.output, "");
    }
    EXPECT_EQ(folder.list(), (Names{"dot.exr", "in.exr", "mask.exr"}));
}

TEST_F(PickTest, MaskLimitsTheResultToItsAlpha)
{
    Names const look = {"-s", "Linear.Output Level.Max=5", "-j", "3"};
    ASSERT_EQ(run({"render", "in.exr", "-o", "whole.exr"}, look).status, 0);
    ASSERT_EQ(run({"render", "in.exr", "-o", "part.exr", "--mask", "mask.exr"}, look).status, 0);
    std::vector<Pixel> const source = read("in.exr");
    std::vector<Pixel> const whole = read("whole.exr");
    std::vector<Pixel> const part = read("part.exr");
    for (std::size_t index = 0; index < part.size(); ++index) {
        Pixel const& wanted = index % width < width / 2 ? whole[index] : source[index];
        EXPECT_TRUE(isSame(part[index].r, wanted.r) && isSame(part[index].b, wanted.b) &&
                    isSame(part[index].a, source[index].a))
            << index;
    }
}

} // namespace
