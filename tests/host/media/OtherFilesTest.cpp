// Pictures that are not EXR, and the ways between them and EXR.

#include "MediaSupport.h"

#include <bit>
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

float wordAt(std::string const& samples, std::size_t index)
{
    auto const byte = [&](std::size_t at) { return static_cast<unsigned char>(samples.at(at)); };
    return static_cast<float>(byte(2 * index) * 256 + byte(2 * index + 1)) / 65535.F;
}

float byteAt(std::string const& samples, std::size_t index)
{
    return static_cast<float>(static_cast<unsigned char>(samples.at(index))) / 255.F;
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

struct PngRow {
    char const* name;
    PngColour colour;
    int bits;
    std::vector<std::size_t> components; ///< of the file, for each of a tile
};

class PngTest : public MediaTest, public ::testing::WithParamInterface<PngRow> {};

} // namespace

TEST_P(PngTest, KeepsEverySample)
{
    constexpr std::size_t width = 23;
    constexpr std::size_t height = 35;
    PngRow const& row = GetParam();
    std::size_t const channels = row.components.back() + 1;
    std::string const samples =
        randomBytes(width * height * channels * static_cast<std::size_t>(row.bits) / 8);
    writePng(file("in.png"), width, height, row.colour, row.bits, samples);
    std::vector<float> expected;
    for (std::size_t pixel = 0; pixel < width * height; ++pixel) {
        for (std::size_t const component : row.components) {
            std::size_t const index = pixel * channels + component;
            expected.push_back(row.bits == 8 ? byteAt(samples, index) : wordAt(samples, index));
        }
    }
    expectExact(file("in.png"), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, PngTest,
    ::testing::Values(PngRow{"Rgba8", PngColour::Rgba, 8, {0, 1, 2, 3}},
                      PngRow{"Rgba16", PngColour::Rgba, 16, {0, 1, 2, 3}},
                      PngRow{"Rgb8", PngColour::Rgb, 8, {0, 1, 2}},
                      PngRow{"Grey16", PngColour::Grey, 16, {0, 0, 0}},
                      PngRow{"GreyAlpha8", PngColour::GreyAlpha, 8, {0, 0, 0, 1}}),
    [](auto const& row) { return row.param.name; });

TEST_F(OtherFilesTest, ColourUnderLowAlphaSurvivesInTiff)
{
    std::string const samples = randomBytes(19 * 21 * 4);
    writeRgbaTiff(file("in.tif"), 19, 21, samples);
    std::vector<float> expected;
    for (std::size_t index = 0; index < samples.size(); ++index) {
        expected.push_back(byteAt(samples, index));
    }
    expectExact(file("in.tif"), expected);
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
    writePng(file("in.png"), 20, 20, PngColour::Rgb, 16, randomBytes(20 * 20 * 6));
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
    writePng(file("in.png"), 1, 1, PngColour::Rgba, 8, "\xff\x66\x33\x33");
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
    // 3 x 3 pixels of data around the lower right corner of a display window of 4 x 4.
    writeExr(file("in.exr"), {.channels = {{"R"}, {"G"}, {"B"}, {"Z"}},
                              .lineOrder = Imf::DECREASING_Y,
                              .dataWindow = {{2, 2}, {4, 4}},
                              .displayWindow = {{0, 0}, {3, 3}}});
    std::vector<std::string> const notes = copyImage(file("in.exr"), file("out.tif"));
    EXPECT_EQ(notes.size(), 2U); // the window and Z
    std::vector<float> const data = loadValues(file("in.exr"));
    std::vector<float> const values = loadValues(file("out.tif"));
    ASSERT_EQ(values.size(), 4U * 4U * 3U);
    for (std::size_t index = 0; index < values.size(); ++index) {
        std::size_t const x = index / 3 % 4;
        std::size_t const y = index / 12;
        bool const hasData = x >= 2 && y >= 2;
        float const expected = hasData ? data[((y - 2) * 3 + x - 2) * 3 + index % 3] : 0.0F;
        EXPECT_EQ(std::bit_cast<std::uint32_t>(values[index]),
                  std::bit_cast<std::uint32_t>(expected))
            << x << ", " << y;
    }
}

TEST_F(OtherFilesTest, LossesAreNoted)
{
    struct Row {
        char const* output;
        std::size_t notes;
    };
    writeExr(file("in.exr"), {.channels = {{"R"}, {"G"}, {"B"}, {"A"}}});
    for (Row const& row : {Row{"a.png", 1}, Row{"a.tif", 0}, Row{"a.jpg", 2}, Row{"a.dpx", 1}}) {
        EXPECT_EQ(copyImage(file("in.exr"), file(row.output)).size(), row.notes) << row.output;
    }
}
