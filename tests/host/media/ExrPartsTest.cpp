// Parts, layers and resolutions: what is chosen changes, all else stays to the bit.

#include "support/MediaSupport.h"

#include <ImfChannelList.h>
#include <ImfStandardAttributes.h>

#include <cstring>
#include <set>
#include <tuple>

namespace {

using Imf::FLOAT;
using Imf::HALF;
using Imf::UINT;
using Names = std::set<std::string>;

auto called(char const* name, char const* view = nullptr)
{
    return [name, view](Imf::Header& header) {
        header.setName(name);
        if (view != nullptr) {
            header.setView(view);
        }
    };
}

/// Two eyes, one of them tiled with resolutions, between a deep part and one with other channels.
std::vector<ExrRecipe> const stereo = {
    {.channels = {{"R", FLOAT}, {"Z", FLOAT}},
     .compression = Imf::ZIPS_COMPRESSION,
     .isDeep = true,
     .addAttributes = called("depth")},
    {.channels = {{"N.x", FLOAT}, {"id", UINT}, {"noise", HALF, 2, 3}},
     .compression = Imf::PIZ_COMPRESSION,
     .dataWindow = {{-6, -9}, {29, 44}},
     .addAttributes = called("aov")},
    {.channels =
         {{"R"}, {"G"}, {"B", FLOAT}, {"A"}, {"spec.R"}, {"spec.G"}, {"spec.B"}, {"Z", FLOAT}},
     .addAttributes = called("main", "left")},
    {.channels = {{"R", FLOAT}, {"G", FLOAT}, {"B", FLOAT}, {"id", UINT}},
     .compression = Imf::RLE_COMPRESSION,
     .lineOrder = Imf::DECREASING_Y,
     .tileSize = 16,
     .hasLevels = true,
     .addAttributes = called("other", "right")},
};

class ExrPartsTest : public MediaTest {
protected:
    ExrPartsTest() { writeParts(file("in.exr"), stereo); }
    Names findChanged(ReadOptions const& read, std::vector<float> const& colour) const
    {
        copyImage(file("in.exr"), file("out.exr"), {.read = read, .colour = colour});
        auto const before = loadParts(file("in.exr"));
        Names changed;
        for (auto const& [name, bytes] : loadParts(file("out.exr"))) {
            if (before.at(name) != bytes) {
                changed.insert(name);
            }
        }
        return changed;
    }
};

} // namespace

TEST_F(ExrPartsTest, HeadersPixelsAndPackedBytesOfOtherPartsStay)
{
    for (ReadOptions const& read : std::vector<ReadOptions>{
             {}, {.part = "other"}, {.everyPart = true}, {.everyLayer = true}}) {
        for (int const blocks : {1, 3}) {
            EXPECT_TRUE(
                copyImage(file("in.exr"), file("out.exr"), {.read = read, .blocksPerStrip = blocks})
                    .empty());
            EXPECT_TRUE(loadHeaders(file("out.exr")) == loadHeaders(file("in.exr")));
            EXPECT_TRUE(loadParts(file("out.exr")) == loadParts(file("in.exr")));
        }
    }
    copyImage(file("in.exr"), file("out.exr"), {.read = {.part = "3"}});
    EXPECT_TRUE(loadParts(file("out.exr"), true) == loadParts(file("in.exr"), true));
}

TEST_F(ExrPartsTest, WhatIsChosenIsChangedAndNothingElse)
{
    Names right;
    for (int level = 0; level < 6; ++level) {
        for (char const* const channel : {"R", "G", "B"}) {
            right.insert("other/" + std::string(channel) + "/" + std::to_string(level) + "," +
                         std::to_string(level));
        }
    }
    Names const spec = {"main/spec.R/0,0", "main/spec.G/0,0", "main/spec.B/0,0"};
    auto const join = [](Names a, Names const& b) {
        a.insert(b.begin(), b.end());
        return a;
    };
    for (ReadOptions const& read :
         std::vector<ReadOptions>{{.part = "other"}, {.part = "3"}, {.layers = {"right"}}}) {
        EXPECT_EQ(findChanged(read, {1.0F, 0.5F, 0.25F}), right);
    }
    // Halves that become float show what is processed.
    auto const expect = [&](ReadOptions const& read, Names const& changed) {
        copyImage(file("in.exr"), file("out.exr"), {.read = read, .depth = IxPixelFormat::FLOAT32});
        auto const before = loadParts(file("in.exr"));
        Names found;
        for (auto const& [name, bytes] : loadParts(file("out.exr"))) {
            if (before.at(name).size() != bytes.size()) {
                found.insert(name);
            }
        }
        EXPECT_EQ(found, changed);
    };
    Names const leftHalves = {"main/R/0,0", "main/G/0,0", "main/A/0,0"};
    expect({}, leftHalves);
    expect({.layers = {"left"}}, leftHalves);
    expect({.layers = {"spec"}}, spec);
    expect({.layers = {"", "spec"}}, join(leftHalves, spec));
    expect({.layers = {"right", "spec"}}, spec);
    expect({.everyLayer = true, .part = "main"}, join(leftHalves, spec));
    expect({.everyLayer = true}, join(leftHalves, spec));
    expect({.everyPart = true}, leftHalves);
}

TEST_F(ExrPartsTest, EveryResolutionIsProcessed)
{
    for (bool const isRip : {false, true}) {
        writeExr(file("in.exr"), {.channels = {{"R", FLOAT}, {"G", FLOAT}, {"B", FLOAT}},
                                  .tileSize = 10,
                                  .hasLevels = true,
                                  .hasLevelsOfBoth = isRip});
        EXPECT_TRUE(copyImage(file("in.exr"), file("out.exr")).empty());
        EXPECT_TRUE(loadParts(file("out.exr")) == loadParts(file("in.exr")));
        EXPECT_TRUE(loadHeaders(file("out.exr")) == loadHeaders(file("in.exr")));
        copyImage(file("in.exr"), file("out.exr"), {.colour = {1.0F, 0.5F, 0.25F}});
        auto const parts = loadParts(file("out.exr"));
        EXPECT_EQ(parts.size(), isRip ? 3U * 6 * 6 : 3U * 6);
        for (auto const& [name, bytes] : parts) {
            float first = 0.0F;
            float last = 0.0F;
            std::memcpy(&first, bytes.data(), sizeof first);
            std::memcpy(&last, &bytes[bytes.size() - sizeof last], sizeof last);
            float const wanted = name[1] == 'R' ? 1.0F : name[1] == 'G' ? 0.5F : 0.25F;
            EXPECT_EQ(std::pair(first, last), std::pair(wanted, wanted)) << name;
        }
    }
}

TEST_F(ExrPartsTest, OtherKindsOfFileGetOnePictureAndWarn)
{
    auto const notes = copyImage(file("in.exr"), file("out.tif"), {.read = {.part = "other"}});
    ASSERT_GE(notes.size(), 2U);
    expectLineWith("several resolutions", notes[0]);
    expectLineWith("4 parts; only part \"other\"", notes[1]);
    auto const copy = [&] {
        copyImage(file("in.exr"), file("out.png"), {.read = {.everyPart = true}});
    };
    expectLineWith("room for one picture", errorOf(copy, ImageFailure::Request));
}

TEST_F(ExrPartsTest, WhatCannotBeChosenIsNamed)
{
    for (auto const& [read, kind, expected] :
         std::vector<std::tuple<ReadOptions, ImageFailure, std::string>>{
             {{.part = "4"}, ImageFailure::Request, "no part \"4\"; there are \"depth\", \"aov\""},
             {{.part = "depth"}, ImageFailure::File, "deep data"},
             {{.part = "aov"}, ImageFailure::Request, "no channels of colour"},
             {{.everyLayer = true, .part = "aov"}, ImageFailure::Request, "no layer of it has red"},
             {{.layers = {"top"}}, ImageFailure::Request, "none of its parts has a layer \"top\""},
             {{.layers = {"top"}, .everyPart = true}, ImageFailure::Request, "a layer \"top\""}}) {
        expectLineWith(expected, errorOf([&] { openImage(file("in.exr"), read); }, kind));
    }
}

TEST_F(ExrPartsTest, OtherNamesOfColourCountWhereThereIsNoR)
{
    struct Case {
        std::vector<TestChannel> channels;
        Names colour;
    };
    for (auto const& [channels, colour] : std::vector<Case>{
             {{{"red"}, {"green"}, {"blue"}, {"alpha"}, {"Z"}}, {"red", "green", "blue", "alpha"}},
             {{{"r"}, {"g"}, {"b"}, {"a"}}, {"r", "g", "b", "a"}},
             {{{"c.Red"}, {"c.G"}, {"c.blue"}}, {"c.Red", "c.G", "c.blue"}},
             {{{"R"}, {"red"}, {"b"}, {"Lab.a"}, {"Lab.b"}}, {"R"}}}) {
        writeExr(file("in.exr"), {.channels = channels});
        copyImage(file("in.exr"), file("out.exr"), {.depth = IxPixelFormat::FLOAT32});
        auto const before = loadExr(file("in.exr"));
        Names found;
        for (auto const& [name, bytes] : loadExr(file("out.exr"))) {
            if (bytes.size() != before.at(name).size()) {
                found.insert(name);
            }
        }
        EXPECT_EQ(found, colour);
    }
}

TEST_F(ExrPartsTest, PartsThatAreNotProcessedAreHeldAgainstTheFileToo)
{
    std::string const honest = loadBytes(file("in.exr"));
    std::size_t const tables = loadHeaders(file("in.exr")).size() + 1;
    auto const expect = [&](std::size_t place, char value, std::string const& reason) {
        std::string bytes = honest;
        bytes.at(place) = value;
        saveBytes(file("lie.exr"), bytes);
        auto const copy = [&] { copyImage(file("lie.exr"), file("out.exr")); };
        expectLineWith(reason, errorOf(copy, ImageFailure::File));
        EXPECT_EQ(folder.list().size(), 2U);
    };
    expect(tables + 2, 0x7f, "incomplete");           // a chunk beyond the file
    expect(tables + 8, honest[tables], "incomplete"); // two rows at one place
    std::uint64_t first = 0;
    std::memcpy(&first, &honest[tables], sizeof first);
    expect(first, 1, "another one should be"); // the number of the part
    expect(first + 8 + 5, 1, "incomplete");    // the size of the counts of samples
    std::size_t const count = honest.find("chunkCount", honest.find("aov")) + 11 + 4 + 4;
    expect(count, 9, "another number of blocks");
    for (std::size_t size = 0; size < honest.size(); size += 1 + honest.size() / 61) {
        saveBytes(file("lie.exr"), honest.substr(0, size));
        errorOf([&] { copyImage(file("lie.exr"), file("out.exr")); }, ImageFailure::File);
    }
}
