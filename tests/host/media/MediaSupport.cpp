#include "MediaSupport.h"

#include "media/PixelRows.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfTiledOutputFile.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

namespace {

/// Memory for one channel over a window, and the slice that reaches it.
class Plane {
public:
    Plane(Imf::Channel const& channel, Imath::Box2i const& window) : source(channel)
    {
        bytesPerSample = channel.type == Imf::HALF ? 2 : 4;
        columns = (window.max.x - window.min.x) / channel.xSampling + 1;
        auto const rows = (window.max.y - window.min.y) / channel.ySampling + 1;
        bytes.resize(static_cast<std::size_t>(columns * rows * bytesPerSample));
        left = window.min.x / channel.xSampling;
        top = window.min.y / channel.ySampling;
    }

    Imf::Slice slice()
    {
        auto const rowBytes = columns * bytesPerSample;
        auto const origin = reinterpret_cast<std::uintptr_t>(bytes.data()) -
                            static_cast<std::uintptr_t>(left * bytesPerSample) -
                            static_cast<std::uintptr_t>(top * rowBytes);
        return {source.type,
                reinterpret_cast<char*>(origin),
                static_cast<std::size_t>(bytesPerSample),
                static_cast<std::size_t>(rowBytes),
                source.xSampling,
                source.ySampling};
    }

    std::string bytes;

private:
    Imf::Channel source;
    std::int64_t bytesPerSample = 0;
    std::int64_t columns = 0;
    std::int64_t left = 0;
    std::int64_t top = 0;
};

std::string bigEndian(std::uint32_t value)
{
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> static_cast<unsigned>(shift) & 255U);
    }
    return bytes;
}

std::string littleEndian(std::uint32_t value, std::size_t count)
{
    std::string const bytes = bigEndian(value);
    return std::string(bytes.rbegin(), bytes.rend()).substr(0, count);
}

std::string pngChunk(std::string const& typeAndData)
{
    std::uint32_t checksum = ~0U;
    for (unsigned char const byte : typeAndData) {
        checksum ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            checksum = checksum >> 1U ^ ((checksum & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return bigEndian(static_cast<std::uint32_t>(typeAndData.size() - 4)) + typeAndData +
           bigEndian(~checksum);
}

/// A zlib stream of one stored block.
std::string store(std::string const& data)
{
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (unsigned char const byte : data) {
        a = (a + byte) % 65521U;
        b = (b + a) % 65521U;
    }
    auto const size = static_cast<std::uint32_t>(data.size());
    return std::string("\x78\x01\x01", 3) + littleEndian(size, 2) + littleEndian(~size, 2) + data +
           bigEndian(b << 16U | a);
}

} // namespace

MediaTest::MediaTest()
{
    std::string name = (std::filesystem::temp_directory_path() / "mediaTestXXXXXX").string();
    EXPECT_NE(::mkdtemp(name.data()), nullptr);
    folder = name;
}

MediaTest::~MediaTest()
{
    std::filesystem::remove_all(folder);
}

std::vector<std::string> MediaTest::listFolder() const
{
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

void writeExr(std::filesystem::path const& file, ExrRecipe const& recipe)
{
    Imf::Header header(recipe.displayWindow, recipe.dataWindow, 2.0F, Imath::V2f(0.25F, 0), 1.5F,
                       recipe.lineOrder, recipe.compression);
    for (TestChannel const& channel : recipe.channels) {
        header.channels().insert(channel.name,
                                 Imf::Channel(channel.type, channel.xSampling, channel.ySampling));
    }
    std::mt19937 random(7);
    std::map<std::string, Plane> planes;
    Imf::FrameBuffer frame;
    for (auto channel = header.channels().begin(); channel != header.channels().end(); ++channel) {
        Plane& plane = planes.emplace(channel.name(), Plane(channel.channel(), recipe.dataWindow))
                           .first->second;
        for (char& byte : plane.bytes) {
            byte = static_cast<char>(random());
        }
        frame.insert(channel.name(), plane.slice());
    }
    if (recipe.tileSize == 0) {
        Imf::OutputFile output(file.c_str(), header);
        output.setFrameBuffer(frame);
        int const rows = recipe.dataWindow.max.y - recipe.dataWindow.min.y + 1;
        output.writePixels(recipe.isComplete ? rows : rows / 2);
        return;
    }
    auto const size = static_cast<unsigned>(recipe.tileSize);
    header.setTileDescription(
        Imf::TileDescription(size, size, recipe.hasLevels ? Imf::MIPMAP_LEVELS : Imf::ONE_LEVEL));
    Imf::TiledOutputFile output(file.c_str(), header);
    output.setFrameBuffer(frame);
    for (int level = 0; level < output.numLevels(); ++level) {
        output.writeTiles(0, output.numXTiles(level) - 1, 0, output.numYTiles(level) - 1, level);
    }
}

std::map<std::string, std::string> loadExr(std::filesystem::path const& file)
{
    Imf::InputFile input(file.c_str());
    Imath::Box2i const& window = input.header().dataWindow();
    Imf::ChannelList const& channels = input.header().channels();
    std::map<std::string, Plane> planes;
    Imf::FrameBuffer frame;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        Plane& plane =
            planes.emplace(channel.name(), Plane(channel.channel(), window)).first->second;
        frame.insert(channel.name(), plane.slice());
    }
    input.setFrameBuffer(frame);
    input.readPixels(window.min.y, window.max.y);
    std::map<std::string, std::string> bytes;
    for (auto const& [name, plane] : planes) {
        bytes[name] = plane.bytes;
    }
    return bytes;
}

std::map<std::string, std::string> loadAttributes(std::filesystem::path const& file)
{
    std::string const bytes = loadBytes(file);
    std::map<std::string, std::string> attributes;
    std::size_t place = 8;
    while (bytes.at(place) != '\0') {
        std::string const name = bytes.c_str() + place;
        place += name.size() + 1;
        std::string const type = bytes.c_str() + place;
        place += type.size() + 1;
        std::uint32_t size = 0;
        std::memcpy(&size, &bytes.at(place), sizeof size);
        attributes[name] = type + ":" + bytes.substr(place + 4, size);
        place += 4 + size;
    }
    return attributes;
}

std::string loadBytes(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void saveBytes(std::filesystem::path const& file, std::string const& bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

void writePng(std::filesystem::path const& file, int width, int height, PngColour colour, int bits,
              std::string const& samples)
{
    std::size_t const rowBytes = samples.size() / static_cast<std::size_t>(height);
    std::string rows;
    for (std::size_t row = 0; row < static_cast<std::size_t>(height); ++row) {
        rows += '\0' + samples.substr(row * rowBytes, rowBytes);
    }
    std::string const header = "IHDR" + bigEndian(static_cast<std::uint32_t>(width)) +
                               bigEndian(static_cast<std::uint32_t>(height)) +
                               static_cast<char>(bits) + static_cast<char>(colour) +
                               std::string(3, '\0');
    saveBytes(file, "\x89PNG\r\n\x1a\n" + pngChunk(header) + pngChunk("IDAT" + store(rows)) +
                        pngChunk("IEND"));
}

void writeRgbaTiff(std::filesystem::path const& file, int width, int height,
                   std::string const& samples)
{
    struct Entry {
        std::uint32_t tag;
        std::uint32_t type; // 3 is 16 bit, 4 is 32 bit
        std::uint32_t count;
        std::uint32_t value;
    };
    constexpr std::uint32_t firstEntry = 10;
    constexpr std::uint32_t entryBytes = 12;
    std::uint32_t const depths = firstEntry + 10 * entryBytes + 4;
    auto const rows = static_cast<std::uint32_t>(height);
    Entry const entries[] = {{256, 4, 1, static_cast<std::uint32_t>(width)},
                             {257, 4, 1, rows},
                             {258, 3, 4, depths}, // bits of the four samples
                             {259, 3, 1, 1},      // no compression
                             {262, 3, 1, 2},      // RGB
                             {273, 4, 1, depths + 8},
                             {277, 3, 1, 4},
                             {278, 4, 1, rows},
                             {279, 4, 1, static_cast<std::uint32_t>(samples.size())},
                             {338, 3, 1, 2}}; // unassociated alpha
    std::string bytes = "II" + littleEndian(42, 2) + littleEndian(8, 4) + littleEndian(10, 2);
    for (Entry const& entry : entries) {
        bytes += littleEndian(entry.tag, 2) + littleEndian(entry.type, 2) +
                 littleEndian(entry.count, 4) + littleEndian(entry.value, 4);
    }
    bytes += littleEndian(0, 4);
    for (int sample = 0; sample < 4; ++sample) {
        bytes += littleEndian(8, 2);
    }
    saveBytes(file, bytes + samples);
}

std::vector<std::string> copyImage(std::filesystem::path const& from,
                                   std::filesystem::path const& to, CopyOptions const& options)
{
    std::vector<std::string> notes;
    MediaNote const note = [&](std::string const& text) { notes.push_back(text); };
    auto const source = openImage(from, {.layer = options.layer}, note);
    bool const keepsDepth = options.depth == IxPixelFormat::COMPLEX;
    IxPixelFormat const& read = source->getInfo().format;
    IxPixelFormat const format(read.getComponents(), keepsDepth ? read.getDepth() : options.depth,
                               read.getAspectRatio(), read.isPremultiplied());
    auto const sink = createImage(to, *source, format, keepsDepth, note);
    int const rows = source->getRowsPerBlock() * options.blocksPerStrip;
    int const strips = (source->getInfo().dataWindow.getHeight() - 1) / rows + 1;
    ImageStrip strip;
    for (int index = 0; index < strips; ++index) {
        source->readStrip(source->getStripBounds(index, rows), strip);
        IxTile result = strip.colour;
        if (format.getDepth() != read.getDepth()) { // only widening to float is asked for here
            result = IxTile(format, strip.colour.getBounds());
            auto const samples =
                static_cast<std::size_t>(result.getBounds().getWidth() * format.getNbComponents());
            for (int y = result.getBounds().y0; y < result.getBounds().y1; ++y) {
                samplesToFloat(IxReadGuard(strip.colour).getRow(y), read.getDepth(),
                               {reinterpret_cast<float*>(IxWriteGuard(result).getRow(y)), samples});
            }
        }
        sink->writeStrip(result, strip);
    }
    sink->finish();
    return notes;
}

std::vector<float> loadValues(std::filesystem::path const& file)
{
    auto const source = openImage(file, {}, [](std::string const&) {});
    ImageInfo const& info = source->getInfo();
    auto const rowSamples =
        static_cast<std::size_t>(info.dataWindow.getWidth() * info.format.getNbComponents());
    std::vector<float> values;
    ImageStrip strip;
    source->readStrip(info.dataWindow, strip);
    for (int y = info.dataWindow.y0; y < info.dataWindow.y1; ++y) {
        values.resize(values.size() + rowSamples);
        samplesToFloat(IxReadGuard(strip.colour).getRow(y), info.format.getDepth(),
                       std::span(values).last(rowSamples));
    }
    return values;
}

std::string errorOf(std::function<void()> const& action, ImageFailure expected)
{
    try {
        action();
    } catch (ImageFileError const& error) {
        std::string const text = error.what();
        EXPECT_EQ(error.getKind(), expected) << text;
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
        return text;
    }
    ADD_FAILURE() << "no ImageFileError";
    return "";
}
