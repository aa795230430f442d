// Pictures that are not EXR, and the ways between them and EXR.

#include "media/ErrorText.h"
#include "support/MediaSupport.h"

#include <ImfStringAttribute.h>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

using OtherFilesTest = MediaTest;

std::string randomBytes(std::size_t count)
{
    std::mt19937 random(11);
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

/// Expects `file` and a copy of it to hold `expected`, twice with the same bytes.
void expectExact(std::filesystem::path const& file, std::vector<float> const& expected)
{
    std::filesystem::path copy = file;
    copy.replace_filename("copy" + file.extension().string());
    ASSERT_TRUE(loadValues(file) == expected);
    EXPECT_TRUE(copyImage(file, copy).empty());
    EXPECT_TRUE(loadValues(copy) == expected);
    std::string const first = loadBytes(copy);
    copyImage(file, copy, {.blocksPerStrip = 1});
    EXPECT_TRUE(loadBytes(copy) == first);
}

} // namespace

TEST_F(OtherFilesTest, WholeNumbersAreKeptWithColourUnderLowAlpha)
{
    struct Case {
        char const* name;
        int bits;
        std::vector<std::size_t> components; ///< of the file, for each of a tile
    };
    for (auto const& [name, bits, components] :
         {Case{"rgba8.png", 8, {0, 1, 2, 3}}, Case{"rgba16.png", 16, {0, 1, 2, 3}},
          Case{"rgb8.png", 8, {0, 1, 2}}, Case{"grey16.png", 16, {0, 0, 0}},
          Case{"greyAlpha8.png", 8, {0, 0, 0, 1}}, Case{"rgba8.tif", 8, {0, 1, 2, 3}}}) {
        SCOPED_TRACE(name);
        constexpr std::size_t width = 23;
        constexpr std::size_t height = 35;
        std::size_t const channels = components.back() + 1;
        std::size_t const bytes = static_cast<std::size_t>(bits) / 8;
        std::string const samples = randomBytes(width * height * channels * bytes);
        writeOther(file(name), width, static_cast<int>(channels), bits, samples);
        std::vector<float> expected;
        for (std::size_t pixel = 0; pixel < width * height; ++pixel) {
            for (std::size_t const component : components) {
                std::uint16_t sample = 0; // of a little-endian word
                std::memcpy(&sample, &samples[(pixel * channels + component) * bytes], bytes);
                expected.push_back(static_cast<float>(sample) / (bits == 8 ? 255.F : 65535.F));
            }
        }
        expectExact(file(name), expected);
    }
}

TEST_F(OtherFilesTest, StripsOfTiffStayWhateverRowsComeAtATime)
{
    for (auto const& [rows, compression, planes] :
         {std::array{"1", "zip", "contig"}, std::array{"7", "zip", "contig"},
          std::array{"32", "zip", "contig"}, std::array{"75", "zip", "contig"},
          std::array{"7", "lzw", "contig"}, std::array{"7", "zip", "separate"}}) {
        SCOPED_TRACE(std::string(rows) + " " + compression + " " + planes);
        writeOther(
            file("in.tif"), 23, 3, 16, randomBytes(std::size_t{23} * 75 * 3 * 2),
            {{"tiff:RowsPerStrip", rows}, {"compression", compression}, {"planarconfig", planes}});
        for (int const blocks : {1, 3}) {
            copyImage(file("in.tif"), file("out.tif"), {.blocksPerStrip = blocks});
            EXPECT_EQ(loadValues(file("out.tif")), loadValues(file("in.tif")));
            EXPECT_EQ(loadOtherAttributes(file("out.tif")), loadOtherAttributes(file("in.tif")));
        }
    }
}

TEST_F(OtherFilesTest, FloatTiffHoldsEveryFloat)
{
    writeExr(file("in.exr"),
             {.channels = {{"R", Imf::FLOAT}, {"G", Imf::FLOAT}, {"B", Imf::FLOAT}}});
    EXPECT_TRUE(copyImage(file("in.exr"), file("out.tif")).empty());
    copyImage(file("out.tif"), file("back.exr"));
    EXPECT_TRUE(loadExr(file("back.exr")) == loadExr(file("in.exr")));
}

TEST_F(OtherFilesTest, TenBitDpxStaysTenBit)
{
    writeOther(file("in.png"), 20, 3, 16, randomBytes(20 * 20 * 6));
    copyImage(file("in.png"), file("wide.dpx"));
    std::string bytes = loadBytes(file("wide.dpx"));
    constexpr std::size_t bitsOffset = 803; // of the first image element
    ASSERT_EQ(bytes.at(bitsOffset), 16);
    // Method A packs three samples of 10 bit in a word: two thirds of the bytes suffice.
    bytes.at(bitsOffset) = 10;
    saveBytes(file("ten.dpx"), bytes);
    std::vector<float> const values = loadValues(file("ten.dpx"));
    copyImage(file("ten.dpx"), file("copy.dpx"));
    EXPECT_EQ(loadBytes(file("copy.dpx")).at(bitsOffset), 10);
    EXPECT_TRUE(loadValues(file("copy.dpx")) == values);
}

TEST_F(OtherFilesTest, AlphaIsAssociatedInExrAndNotInPng)
{
    // 51 of 255 is 0.2, exactly a fifth of the way.
    writeOther(file("in.png"), 1, 4, 8, "\xff\x66\x33\x33");
    copyImage(file("in.png"), file("out.exr"), {.depth = IxPixelFormat::FLOAT32});
    std::vector<float> const expected = {0.2F, 0.2F * 0.4F, 0.2F * 0.2F, 0.2F};
    std::vector<float> const values = loadValues(file("out.exr"));
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t index = 0; index < expected.size(); ++index) {
        EXPECT_FLOAT_EQ(values[index], expected[index]);
    }
    copyImage(file("out.exr"), file("back.png"));
    std::vector<float> const back = loadValues(file("back.png"));
    EXPECT_FLOAT_EQ(back[0], 1.0F);
    EXPECT_NEAR(back[1], 0.4F, 1.0F / 65535);
}

TEST_F(OtherFilesTest, WindowsBecomeTheDisplayWindow)
{
    // Around each corner, inside, outside, and beside a display window of 5 x 4 at (1, -2).
    constexpr GeRectangle<int> display{1, -2, 6, 2};
    for (Imath::Box2i const& window : std::vector<Imath::Box2i>{{{4, 0}, {7, 4}},
                                                                {{-2, -4}, {2, -1}},
                                                                {{3, -3}, {8, 0}},
                                                                {{0, 1}, {2, 3}},
                                                                {{2, -1}, {4, 0}},
                                                                {{-1, -4}, {7, 3}},
                                                                {{6, -2}, {8, 1}},
                                                                {{1, 2}, {5, 4}}}) {
        SCOPED_TRACE(std::to_string(window.min.x) + " " + std::to_string(window.min.y));
        writeExr(file("in.exr"), {.channels = {{"R"}, {"G"}, {"B"}, {"Z"}},
                                  .lineOrder = Imf::DECREASING_Y,
                                  .dataWindow = window,
                                  .displayWindow = {{1, -2}, {5, 1}}});
        // The window and Z.
        EXPECT_EQ(copyImage(file("in.exr"), file("out.tif"), {.blocksPerStrip = 1}).size(), 2U);
        std::vector<float> const data = loadValues(file("in.exr"));
        std::vector<float> const values = loadValues(file("out.tif"));
        ASSERT_EQ(values.size(), 5U * 4U * 3U);
        std::size_t sample = 0;
        for (int y = display.y0; y < display.y1; ++y) {
            for (int x = display.x0; x < display.x1; ++x) {
                bool const hasData = window.intersects(Imath::V2i(x, y));
                int const pixel =
                    (y - window.min.y) * (window.max.x - window.min.x + 1) + x - window.min.x;
                for (int part = 0; part < 3; ++part) {
                    float const expected =
                        hasData ? data[static_cast<std::size_t>(3 * pixel + part)] : 0.0F;
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(values[sample++]),
                              std::bit_cast<std::uint32_t>(expected))
                        << x << ", " << y;
                }
            }
        }
    }
}

TEST_F(OtherFilesTest, IntegersAreRoundedAndLimitedAndPngColourIsDividedByAlpha)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    struct Case {
        char const* name;
        std::vector<float> pixel; ///< red, green, blue and alpha of the EXR file
        float steps;              ///< that make 1
        std::vector<float> stored;
    };
    for (auto const& [name, pixel, steps, stored] :
         {Case{"a.png", {0.25F, 0.125F, 0.5F, 0.5F}, 65535, {32768, 16384, 65535, 32768}},
          Case{"a.png", {0.5F, 0.25F, 2, 0}, 65535, {32768, 16384, 65535, 0}},
          Case{"a.png", {-1, std::nanf(""), infinity, 1}, 65535, {0, 0, 65535, 65535}},
          Case{"a.png", {0.5F, 0.25F, 0.125F, infinity}, 65535, {32768, 16384, 8192, 65535}},
          Case{"a.dpx", {0.5F, -0.5F, 1.5F, 0.5F}, 65535, {32768, 0, 65535, 32768}},
          Case{"a.jpg", {0.5F, 0.5F, 0.5F}, 255, {128, 128, 128}}}) {
        std::map<std::string, float> values = {{"R", pixel[0]}, {"G", pixel[1]}, {"B", pixel[2]}};
        if (pixel.size() > 3) {
            values["A"] = pixel[3];
        }
        writeExr(file("in.exr"), {.channels = {}, .values = values});
        copyImage(file("in.exr"), file(name));
        std::vector<float> found = loadValues(file(name));
        ASSERT_GE(found.size(), stored.size()) << name;
        for (std::size_t part = 0; part < stored.size(); ++part) {
            EXPECT_FLOAT_EQ(found[part], stored[part] / steps) << name << " " << part;
        }
    }
}

TEST_F(OtherFilesTest, WhatIsMissingIsAWarningAndWhatDiffersANote)
{
    Imath::Box2i const larger{{-1, 0}, {36, 52}}; // than what is shown
    Imath::Box2i const smaller{{1, 0}, {36, 52}};
    struct Case {
        char const* name;
        std::vector<TestChannel> channels;
        Imath::Box2i dataWindow;
        std::vector<std::string> reports; ///< how each begins after the file's name
    };
    std::vector<TestChannel> const rgba = {{"R"}, {"G"}, {"B"}, {"A"}};
    for (auto const& [name, channels, window, reports] : std::vector<Case>{
             {"a.tif", rgba, {{0, 0}, {36, 52}}, {}},
             {"a.png", rgba, smaller, {"gets the display window", "holds 16-bit integers"}},
             {"a.dpx", rgba, larger, {"warning: gets the display", "holds 16-bit integers"}},
             {"a.jpg",
              {{"R"}, {"A"}, {"Z"}},
              {{0, 0}, {36, 52}},
              {"warning: holds colour", "warning: holds no alpha", "holds 8-bit integers"}}}) {
        writeExr(file("in.exr"), {.channels = channels, .dataWindow = window});
        std::vector<std::string> said = copyImage(file("in.exr"), file(name));
        ASSERT_EQ(said.size(), reports.size()) << name;
        for (std::size_t index = 0; index < said.size(); ++index) {
            std::string const file = quoteName(this->file(name).string()) + " ";
            said[index].erase(said[index].find(file), file.size());
            EXPECT_TRUE(said[index].starts_with(reports[index])) << said[index];
        }
    }
}

TEST_F(OtherFilesTest, MetadataStayTheSameHoweverOftenAFileIsCopied)
{
    std::string const samples = randomBytes(16 * 32 * 3);
    OtherAttributes const attributes = {
        {"Artist", "Me"},          {"Copyright", "us"},
        {"ImageDescription", "x"}, {"Software", "soft"},
        {"IPTC:City", "Town"},     {"IPTC:Creator", "Me; You"},
        {"Keywords", "a; b"},      {"DateTime", "2020:01:02 03:04:05"}};
    for (char const* const kind : {"jpg", "tif", "png", "dpx"}) {
        std::string const name = std::string(".") + kind;
        writeOther(file("0" + name), 16, 3, 8, samples, attributes);
        OtherAttributes const first = loadOtherAttributes(file("0" + name));
        for (int pass = 0; pass < 10; ++pass) {
            auto const said =
                copyImage(file(std::to_string(pass) + name), file(std::to_string(pass + 1) + name));
            EXPECT_TRUE(said.empty()) << said.front();
        }
        EXPECT_EQ(loadOtherAttributes(file("10" + name)), first) << kind;
    }
}

TEST_F(OtherFilesTest, PixelsKeepTheirAspectRatio)
{
    for (float const aspect : {2.0F, 0.5F, 1.0667F, 0.9091F}) {
        writeExr(file("0.exr"), {.addAttributes = [aspect](Imf::Header& header) {
                     header.pixelAspectRatio() = aspect;
                 }});
        std::string const wanted = loadAttributes(file("0.exr"))["pixelAspectRatio"];
        for (std::string const kind : {"exr", "tif", "png", "dpx", "jpg"}) {
            copyImage(file("0.exr"), file("1." + kind), {.depth = IxPixelFormat::FLOAT32});
            copyImage(file("1." + kind), file("2." + kind));
            for (std::string const& name : {"1." + kind, "2." + kind}) {
                copyImage(file(name), file("3.exr"), {.depth = IxPixelFormat::FLOAT32});
                EXPECT_EQ(loadAttributes(file("3.exr"))["pixelAspectRatio"], wanted)
                    << name << " " << aspect;
            }
        }
    }
}

TEST_F(OtherFilesTest, MetadataThatAreLostAreNamed)
{
    writeOther(file("in.jpg"), 1, 3, 8, "abc", {{"Artist", "Me"}, {"IPTC:City", "Town"}});
    writeExr(file("in.exr"), {.addAttributes = [](Imf::Header& header) {
                 header.insert("comments", Imf::StringAttribute("x"));
             }});
    for (auto const& [from, to, lost] :
         {std::array{"in.jpg", "out.exr", "\"IPTC:Creator\", \"IPTC:City\""},
          std::array{"in.exr", "out.tif", "\"comments\""}}) {
        auto const said = copyImage(file(from), file(to), {.depth = IxPixelFormat::FLOAT32});
        ASSERT_EQ(said.size(), 1U) << to;
        EXPECT_TRUE(said[0].starts_with("warning: ") && said[0].find(lost) != said[0].npos)
            << said[0];
    }
}

TEST_F(OtherFilesTest, TiffIsHalfWhereHalfIsAskedForOrTheSourceIs)
{
    writeExr(file("in.exr"), {});
    copyImage(file("in.exr"), file("kept.tif"));
    EXPECT_EQ(loadOtherAttributes(file("kept.tif"))["type"], "float");
    EXPECT_TRUE(
        copyImage(file("in.exr"), file("half.tif"), {.depth = IxPixelFormat::FLOAT16}).empty());
    copyImage(file("half.tif"), file("again.tif"));
    std::vector<float> const values = loadValues(file("in.exr"));
    for (char const* const name : {"half.tif", "again.tif"}) {
        EXPECT_EQ(loadOtherAttributes(file(name))["type"], "half") << name;
        std::vector<float> const halves = loadValues(file(name));
        ASSERT_EQ(halves.size(), values.size());
        for (std::size_t index = 0; index < values.size(); ++index) {
            bool const isNan = std::isnan(values[index]) && std::isnan(halves[index]);
            EXPECT_TRUE(isNan || halves[index] == values[index]) << name << " " << index;
        }
    }
}
