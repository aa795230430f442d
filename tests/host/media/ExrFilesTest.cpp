// EXR pictures in and out: nothing but the colour changes, and that only where it must.

#include "MediaSupport.h"

#include <ImfArray.h>
#include <ImfChannelList.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfPreviewImage.h>
#include <ImfRgbaFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringVectorAttribute.h>

#include <cstring>
#include <half.h>

namespace {

using Imf::FLOAT;
using Imf::HALF;
using Imf::UINT;

struct RoundTrip {
    char const* name;
    ExrRecipe recipe;
    std::string layer = "";
};

void PrintTo(RoundTrip const& row, std::ostream* out)
{
    *out << row.name;
}

std::vector<TestChannel> const aovs = {
    {"R", HALF},         {"G", FLOAT},        {"B", HALF},
    {"A", FLOAT},        {"id", UINT},        {"depth.Z", FLOAT},
    {"diffuse.R", HALF}, {"diffuse.G", HALF}, {"noise", HALF, 2, 3}};

Imath::Box2i const shifted{{-6, -9}, {29, 44}};

std::vector<RoundTrip> const roundTrips = {
    {"HalfUncompressed", {.compression = Imf::NO_COMPRESSION}},
    {"HalfRle", {.compression = Imf::RLE_COMPRESSION}},
    {"HalfZips", {.compression = Imf::ZIPS_COMPRESSION}},
    {"HalfZip", {}},
    {"HalfPiz", {.compression = Imf::PIZ_COMPRESSION}},
    {"HalfPxr24", {.compression = Imf::PXR24_COMPRESSION}},
    {"RgbaFloat", {.channels = {{"R", FLOAT}, {"G", FLOAT}, {"B", FLOAT}, {"A", FLOAT}}}},
    {"FloatPizDecreasing",
     {.channels = {{"R", FLOAT}, {"G", FLOAT}, {"B", FLOAT}},
      .compression = Imf::PIZ_COMPRESSION,
      .lineOrder = Imf::DECREASING_Y}},
    {"DecreasingZip", {.lineOrder = Imf::DECREASING_Y}},
    {"Tiled", {.tileSize = 16}},
    {"TiledDecreasing", {.lineOrder = Imf::DECREASING_Y, .tileSize = 10}},
    {"TiledRandom", {.lineOrder = Imf::RANDOM_Y, .tileSize = 16}},
    {"TileLargerThanPicture", {.tileSize = 100}},
    {"DataWindowOutsideDisplayWindow",
     {.dataWindow = {{-40, -60}, {-20, -31}}, .displayWindow = {{0, 0}, {9, 9}}}},
    {"MixedTypesAndFurtherChannels", {.channels = aovs, .dataWindow = shifted}},
    {"SubsampledFurtherChannelInSingleRows",
     {.channels = aovs,
      .compression = Imf::ZIPS_COMPRESSION,
      .lineOrder = Imf::DECREASING_Y,
      .dataWindow = shifted}},
    {"GreenAlone", {.channels = {{"G", FLOAT}}}},
    {"AlphaAlone", {.channels = {{"A"}, {"Z", FLOAT}}}},
    {"Luminance", {.channels = {{"Y"}}}},
    {"LuminanceAndAlphaTiled", {.channels = {{"Y", FLOAT}, {"A", HALF}}, .tileSize = 16}},
    {"OnlyLayer", {.channels = {{"beauty.R"}, {"beauty.G"}, {"beauty.B"}, {"Z", FLOAT}}}},
    {"ChosenLayer", {.channels = {{"R"}, {"a.b.R"}, {"a.b.A"}, {"c.Y"}}}, "a.b"},
};

class ExrRoundTripTest : public MediaTest, public ::testing::WithParamInterface<RoundTrip> {};

} // namespace

TEST_P(ExrRoundTripTest, KeepsEveryBitOfPixelsAndHeader)
{
    writeExr(file("in.exr"), GetParam().recipe);
    for (int const blocks : {1, 3}) {
        std::vector<std::string> const notes = copyImage(
            file("in.exr"), file("out.exr"), {.layer = GetParam().layer, .blocksPerStrip = blocks});
        EXPECT_TRUE(loadExr(file("out.exr")) == loadExr(file("in.exr")));
        EXPECT_TRUE(loadAttributes(file("out.exr")) == loadAttributes(file("in.exr")));
        EXPECT_TRUE(notes.empty()) << notes.front();
    }
    EXPECT_EQ(listFolder().size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExrRoundTripTest, ::testing::ValuesIn(roundTrips),
                         [](auto const& row) { return row.param.name; });

namespace {

using ExrFilesTest = MediaTest;

float valueOf(std::string const& halves, std::size_t index)
{
    std::uint16_t bits = 0;
    std::memcpy(&bits, &halves.at(index * 2), sizeof bits);
    return imath_half_to_float(bits);
}

/// A picture of one value per channel.
void writeFlat(std::filesystem::path const& file, std::map<std::string, float> const& values,
               Imf::Header header = Imf::Header(8, 4))
{
    std::vector<std::vector<half>> planes;
    Imf::FrameBuffer frame;
    for (auto const& [name, value] : values) {
        header.channels().insert(name, Imf::Channel(HALF));
        planes.emplace_back(32, half(value));
        frame.insert(name, Imf::Slice::Make(HALF, planes.back().data(), header.dataWindow()));
    }
    Imf::OutputFile output(file.c_str(), header);
    output.setFrameBuffer(frame);
    output.writePixels(4);
}

/// Writes a picture of (1, 0.5, 0.25) with `source` as its model.
std::vector<std::string> writeColour(std::filesystem::path const& from,
                                     std::filesystem::path const& to)
{
    std::vector<std::string> notes;
    MediaNote const note = [&](std::string const& text) { notes.push_back(text); };
    auto const source = openImage(from, {}, note);
    ImageStrip strip;
    source->readStrip(source->getStripBounds(0, source->getRowsPerBlock()), strip);
    GeRectangle<int> const bounds = strip.colour.getBounds();
    IxTile const result(IxPixelFormat(IxPixelFormat::RGB, IxPixelFormat::FLOAT32, {}, false),
                        bounds);
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        auto* value = reinterpret_cast<float*>(IxWriteGuard(result).getRow(y));
        for (int x = 0; x < bounds.getWidth(); ++x) {
            *value++ = 1.0F;
            *value++ = 0.5F;
            *value++ = 0.25F;
        }
    }
    auto const sink = createImage(to, *source, result.getPixelFormat(), true, note);
    sink->writeStrip(result, strip);
    sink->finish();
    return notes;
}

} // namespace

TEST_F(ExrFilesTest, EveryKindOfAttributeIsKept)
{
    Imf::Header header(8, 4);
    header.insert("owner", Imf::StringAttribute("somebody"));
    header.insert("views", Imf::StringVectorAttribute({"left", "right"}));
    header.insert("studio", Imf::StringAttribute("\x01\x02\xff of a type from elsewhere"));
    Imf::PreviewRgba const pixel(1, 2, 3, 4);
    header.setPreviewImage(Imf::PreviewImage(1, 1, &pixel));
    header.insert("dwaCompressionLevel", Imf::FloatAttribute(12.0F));
    header.compression() = Imf::DWAA_COMPRESSION;
    Imf::addFramesPerSecond(header, {25, 1});
    writeFlat(file("in.exr"), {{"R", 0.5F}, {"G", 0.25F}}, header);
    std::string bytes = loadBytes(file("in.exr"));
    bytes.replace(bytes.find("studio") + 7, 6, "strang"); // a type that nobody knows
    saveBytes(file("in.exr"), bytes);
    copyImage(file("in.exr"), file("out.exr"));
    EXPECT_TRUE(loadAttributes(file("out.exr")) == loadAttributes(file("in.exr")));
    EXPECT_EQ(openImage(file("in.exr"), {}, {})->getInfo().frameRate, Rational(25, 1));
}

TEST_F(ExrFilesTest, OfSeveralResolutionsTheFullOneIsKept)
{
    writeExr(file("in.exr"), {.tileSize = 16, .hasLevels = true});
    std::vector<std::string> const notes = copyImage(file("in.exr"), file("out.exr"));
    EXPECT_EQ(notes.size(), 1U);
    EXPECT_TRUE(loadExr(file("out.exr")) == loadExr(file("in.exr")));
}

TEST_F(ExrFilesTest, ChosenDepthChangesColourChannelsOnly)
{
    writeExr(file("in.exr"), {.channels = {{"R"}, {"G"}, {"A"}, {"Z"}, {"n", UINT}}});
    copyImage(file("in.exr"), file("out.exr"), {.depth = IxPixelFormat::FLOAT32});
    Imf::InputFile const output(file("out.exr").c_str());
    std::map<std::string, Imf::PixelType> types;
    for (auto channel = output.header().channels().begin();
         channel != output.header().channels().end(); ++channel) {
        types[channel.name()] = channel.channel().type;
    }
    std::map<std::string, Imf::PixelType> const expected = {
        {"A", FLOAT}, {"G", FLOAT}, {"R", FLOAT}, {"Z", HALF}, {"n", UINT}};
    EXPECT_EQ(types, expected);
}

TEST_F(ExrFilesTest, SubsampledChromaIsReadAsTheLibraryReconstructsIt)
{
    constexpr int size = 40;
    Imf::Array2D<Imf::Rgba> pixels(size, size);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            pixels[y][x] = {half(0.1F + 0.02F * float(x)), half(0.5F), half(0.01F * float(y)),
                            half(1)};
        }
    }
    {
        Imf::RgbaOutputFile output(file("in.exr").c_str(), size, size, Imf::WRITE_YC);
        output.setFrameBuffer(&pixels[0][0], 1, size);
        output.writePixels(size);
    }
    Imf::RgbaInputFile reference(file("in.exr").c_str());
    reference.setFrameBuffer(&pixels[0][0], 1, size);
    reference.readPixels(0, size - 1);
    EXPECT_EQ(copyImage(file("in.exr"), file("out.exr")).size(), 1U);
    auto const channels = loadExr(file("out.exr"));
    ASSERT_EQ(channels.size(), 3U);
    for (std::size_t index = 0; index < size * size; ++index) {
        Imf::Rgba const& pixel = *(&pixels[0][0] + index);
        ASSERT_EQ(valueOf(channels.at("R"), index), float(pixel.r)) << index;
        ASSERT_EQ(valueOf(channels.at("G"), index), float(pixel.g)) << index;
        ASSERT_EQ(valueOf(channels.at("B"), index), float(pixel.b)) << index;
    }
}

TEST_F(ExrFilesTest, ChromaAtEveryPixelIsConverted)
{
    // RY is (R - Y) / Y, BY is (B - Y) / Y.
    writeFlat(file("in.exr"), {{"Y", 0.5F}, {"RY", 0.5F}, {"BY", -0.5F}});
    copyImage(file("in.exr"), file("out.exr"));
    auto const channels = loadExr(file("out.exr"));
    EXPECT_EQ(valueOf(channels.at("R"), 31), 0.75F);
    EXPECT_EQ(valueOf(channels.at("B"), 31), 0.25F);
    EXPECT_NEAR(valueOf(channels.at("G"), 31), (0.5F - 0.2126F * 0.75F - 0.0722F * 0.25F) / 0.7152F,
                0.0005F); // what BT.709 leaves for green
}

TEST_F(ExrFilesTest, ColourBecomesLuminanceByTheFilesChromaticities)
{
    struct Row {
        char const* name;
        bool hasChromaticities;
        float expected;
    };
    // The second set of primaries are those of CIE XYZ: Y is all green's.
    for (Row const& row : {Row{"BT.709", false, 0.2126F + 0.7152F * 0.5F + 0.0722F * 0.25F},
                           Row{"CIE XYZ", true, 0.5F}}) {
        Imf::Header header(8, 4);
        if (row.hasChromaticities) {
            Imf::addChromaticities(header, {{1, 0}, {0, 1}, {0, 0}, {1.F / 3, 1.F / 3}});
        }
        writeFlat(file("in.exr"), {{"Y", 0.5F}}, header);
        EXPECT_EQ(writeColour(file("in.exr"), file("out.exr")).size(), 1U) << row.name;
        auto const channels = loadExr(file("out.exr"));
        ASSERT_EQ(channels.size(), 1U);
        EXPECT_NEAR(valueOf(channels.at("Y"), 0), row.expected, 0.001F) << row.name;
    }
}

TEST_F(ExrFilesTest, LayersAreChosenOrNamed)
{
    struct Row {
        std::vector<TestChannel> channels;
        std::string layer;
        std::string expected;
    };
    Row const rows[] = {
        {{{"R"}, {"left.R"}}, "right", "no layer \"right\" with colour; there are \"left\""},
        {{{"b.R"}, {"a.Y"}, {"Z"}}, "", "choose one of \"a\", \"b\""},
        {{{"Z"}, {"N.x"}}, "", "no channels of colour; its channels are \"N.x\", \"Z\""},
        {{{"R"}}, "x", "no layers with colour at all"},
    };
    for (Row const& row : rows) {
        writeExr(file("in.exr"), {.channels = row.channels});
        ImageFailure const kind = row.layer.empty() && row.channels.front().name == "Z"
                                      ? ImageFailure::File
                                      : ImageFailure::Request;
        std::string const text =
            errorOf([&] { openImage(file("in.exr"), {.layer = row.layer}, {}); }, kind);
        EXPECT_NE(text.find(row.expected), std::string::npos) << text;
    }
}
