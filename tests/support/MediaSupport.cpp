#include "MediaSupport.h"

#include "OtherPictures.h"
#include "files/ProgramModule.h"
#include "media/PixelRows.h"

#include <ImfChannelList.h>
#include <ImfDeepFrameBuffer.h>
#include <ImfDeepScanLineInputPart.h>
#include <ImfDeepScanLineOutputPart.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfTiledInputPart.h>
#include <ImfTiledOutputFile.h>
#include <ImfTiledOutputPart.h>

#include <cstring>
#include <half.h>
#include <random>

namespace {

/// Memory for one channel over a window, and the slice that reaches it.
struct Plane {
    Plane(Imf::Channel const& channel, Imath::Box2i const& window)
        : columns((window.max.x - window.min.x) / channel.xSampling + 1),
          rows((window.max.y - window.min.y) / channel.ySampling + 1),
          bytes(columns * rows * (channel.type == Imf::HALF ? 2 : 4), '\0'),
          slice(Imf::Slice::Make(channel.type, bytes.data(), window, 0, 0, channel.xSampling,
                                 channel.ySampling))
    {
    }
    Plane(Plane const&) = delete;
    Plane& operator=(Plane const&) = delete;

    std::size_t columns, rows;
    std::string bytes;
    Imf::Slice slice;
};

Imf::Header makeHeader(ExrRecipe const& recipe)
{
    Imf::Header header(recipe.displayWindow, recipe.dataWindow, 2.0F, Imath::V2f(0.25F, 0), 1.5F,
                       recipe.lineOrder, recipe.compression);
    for (TestChannel const& channel : recipe.channels) {
        header.channels().insert(channel.name,
                                 Imf::Channel(channel.type, channel.xSampling, channel.ySampling));
    }
    for (auto const& [name, value] : recipe.values) {
        header.channels().insert(name, Imf::Channel(Imf::HALF));
    }
    if (recipe.tileSize != 0) {
        auto const size = static_cast<unsigned>(recipe.tileSize);
        header.setTileDescription(Imf::TileDescription(size, size,
                                                       recipe.hasLevelsOfBoth ? Imf::RIPMAP_LEVELS
                                                       : recipe.hasLevels     ? Imf::MIPMAP_LEVELS
                                                                              : Imf::ONE_LEVEL));
    }
    recipe.addAttributes(header);
    return header;
}

using Planes = std::map<std::string, Plane>;

void fillWithRuns(std::string& bytes, std::size_t sampleBytes, unsigned longestRun,
                  std::mt19937& random)
{
    std::size_t left = 0;
    auto sample = random();
    for (std::size_t byte = 0; byte < bytes.size(); ++byte) {
        std::size_t const place = byte % sampleBytes;
        if (place == 0 && left-- == 0) {
            left = random() % longestRun;
            sample = random();
        }
        bytes[byte] = static_cast<char>(sample >> place * 8);
    }
}

Imf::FrameBuffer fillFrame(ExrRecipe const& recipe, Imf::Header const& header, Planes& planes)
{
    std::mt19937 random(7);
    Imf::FrameBuffer frame;
    for (auto channel = header.channels().begin(); channel != header.channels().end(); ++channel) {
        Plane& plane =
            planes.try_emplace(channel.name(), channel.channel(), recipe.dataWindow).first->second;
        auto const value = recipe.values.find(channel.name());
        if (value == recipe.values.end()) {
            fillWithRuns(plane.bytes, channel.channel().type == Imf::HALF ? 2 : 4,
                         recipe.longestRun, random);
        } else {
            for (std::size_t byte = 0; byte < plane.bytes.size(); ++byte) {
                plane.bytes[byte] = static_cast<char>(half(value->second).bits() >> byte % 2 * 8);
            }
        }
        frame.insert(channel.name(), plane.slice);
    }
    return frame;
}

template <typename Output>
void writeTiles(Output& output)
{
    for (int y = 0; y < output.numYLevels(); ++y) {
        for (int x = 0; x < output.numXLevels(); ++x) {
            if (output.isValidLevel(x, y)) {
                output.writeTiles(0, output.numXTiles(x) - 1, 0, output.numYTiles(y) - 1, x, y);
            }
        }
    }
}

/// Every pixel has as many samples as its column's number has below 4.
void writeDeep(Imf::DeepScanLineOutputPart output, Imf::Header const& header)
{
    Imath::Box2i const& window = header.dataWindow();
    int const width = window.max.x - window.min.x + 1;
    std::vector<unsigned> counts(static_cast<std::size_t>(width));
    std::vector<float> values(static_cast<std::size_t>(width) * 4, 0.375F);
    std::vector<float*> pointers(static_cast<std::size_t>(width));
    for (std::size_t x = 0; x < counts.size(); ++x) {
        counts[x] = static_cast<unsigned>(x % 4);
        pointers[x] = &values[x * 4];
    }
    Imf::DeepFrameBuffer frame;
    frame.insertSampleCountSlice(Imf::Slice(
        Imf::UINT, reinterpret_cast<char*>(counts.data() - window.min.x), sizeof(unsigned), 0));
    for (auto channel = header.channels().begin(); channel != header.channels().end(); ++channel) {
        frame.insert(channel.name(),
                     Imf::DeepSlice(channel.channel().type,
                                    reinterpret_cast<char*>(pointers.data() - window.min.x),
                                    sizeof(float*), 0, sizeof(float)));
    }
    output.setFrameBuffer(frame);
    output.writePixels(window.max.y - window.min.y + 1);
}

} // namespace

void writeParts(std::filesystem::path const& file, std::vector<ExrRecipe> const& recipes)
{
    std::vector<Imf::Header> headers;
    for (ExrRecipe const& recipe : recipes) {
        Imf::Header header = makeHeader(recipe);
        header.setType(recipe.isDeep          ? Imf::DEEPSCANLINE
                       : recipe.tileSize == 0 ? Imf::SCANLINEIMAGE
                                              : Imf::TILEDIMAGE);
        if (!header.hasName()) {
            header.setName(std::to_string(headers.size()));
        }
        headers.push_back(header);
    }
    Imf::MultiPartOutputFile output(file.c_str(), headers.data(), static_cast<int>(headers.size()));
    for (std::size_t index = 0; index < recipes.size(); ++index) {
        auto const part = static_cast<int>(index);
        Planes planes;
        if (recipes[index].isDeep) {
            writeDeep(Imf::DeepScanLineOutputPart(output, part), headers[index]);
            continue;
        }
        Imf::FrameBuffer const frame = fillFrame(recipes[index], headers[index], planes);
        if (recipes[index].tileSize == 0) {
            Imf::OutputPart lines(output, part);
            lines.setFrameBuffer(frame);
            Imath::Box2i const& window = recipes[index].dataWindow;
            lines.writePixels(window.max.y - window.min.y + 1);
        } else {
            Imf::TiledOutputPart tiles(output, part);
            tiles.setFrameBuffer(frame);
            writeTiles(tiles);
        }
    }
}

std::map<std::string, std::string> loadParts(std::filesystem::path const& file, bool isPackedToo)
{
    std::map<std::string, std::string> bytes;
    Imf::MultiPartInputFile input(file.c_str());
    for (int part = 0; part < input.parts(); ++part) {
        Imf::Header const& header = input.header(part);
        std::string const name = (header.hasName() ? header.name() : "") + "/";
        Imath::Box2i const& window = header.dataWindow();
        if (header.hasType() && header.type() == Imf::DEEPSCANLINE) {
            Imf::DeepScanLineInputPart deep(input, part);
            for (int y = window.min.y; y <= window.max.y; ++y) {
                std::uint64_t size = 0;
                deep.rawPixelData(y, nullptr, size);
                std::string& row = bytes[name + std::to_string(y)];
                row.resize(size);
                deep.rawPixelData(y, row.data(), size);
            }
            continue;
        }
        auto const load = [&](Imath::Box2i const& box, std::string const& place, auto const& read) {
            Planes planes;
            Imf::FrameBuffer frame;
            for (auto channel = header.channels().begin(); channel != header.channels().end();
                 ++channel) {
                Plane& plane =
                    planes.try_emplace(channel.name(), channel.channel(), box).first->second;
                frame.insert(channel.name(), plane.slice);
            }
            read(frame);
            for (auto const& [channel, plane] : planes) {
                bytes[name + channel + place] = plane.bytes;
            }
        };
        if (!header.hasTileDescription()) {
            Imf::InputPart lines(input, part);
            load(window, "/0,0", [&](Imf::FrameBuffer const& frame) {
                lines.setFrameBuffer(frame);
                lines.readPixels(window.min.y, window.max.y);
            });
            for (int y = window.min.y; isPackedToo && y <= window.max.y; ++y) {
                char const* packed = nullptr;
                int size = 0;
                lines.rawPixelData(y, packed, size);
                bytes[name + std::to_string(y)] =
                    std::string(packed, static_cast<std::size_t>(size));
            }
            continue;
        }
        Imf::TiledInputPart tiles(input, part);
        for (int y = 0; y < tiles.numYLevels(); ++y) {
            for (int x = 0; x < tiles.numXLevels(); ++x) {
                if (!tiles.isValidLevel(x, y)) {
                    continue;
                }
                load(tiles.dataWindowForLevel(x, y),
                     "/" + std::to_string(x) + "," + std::to_string(y),
                     [&](Imf::FrameBuffer const& frame) {
                         tiles.setFrameBuffer(frame);
                         tiles.readTiles(0, tiles.numXTiles(x) - 1, 0, tiles.numYTiles(y) - 1, x,
                                         y);
                     });
            }
        }
    }
    return bytes;
}

std::string loadHeaders(std::filesystem::path const& file)
{
    std::string const bytes = loadBytes(file);
    std::size_t place = 8;
    bool const hasParts = (bytes.at(5) & 0x10) != 0;
    do {
        while (bytes.at(place) != '\0') {
            place += std::string(bytes.c_str() + place).size() + 1;
            place += std::string(bytes.c_str() + place).size() + 1;
            std::uint32_t size = 0;
            std::memcpy(&size, &bytes.at(place), sizeof size);
            place += 4 + size;
        }
        ++place;
    } while (hasParts && bytes.at(place) != '\0');
    return bytes.substr(0, place);
}

void writeExr(std::filesystem::path const& file, ExrRecipe const& recipe)
{
    Imf::Header const header = makeHeader(recipe);
    Planes planes;
    Imf::FrameBuffer const frame = fillFrame(recipe, header, planes);
    if (recipe.tileSize == 0) {
        Imf::OutputFile output(file.c_str(), header);
        output.setFrameBuffer(frame);
        int const rows = recipe.dataWindow.max.y - recipe.dataWindow.min.y + 1;
        output.writePixels(recipe.isComplete ? rows : rows / 2);
        return;
    }
    Imf::TiledOutputFile output(file.c_str(), header);
    output.setFrameBuffer(frame);
    writeTiles(output);
}

std::map<std::string, std::string> loadExr(std::filesystem::path const& file)
{
    Imf::InputFile input(file.c_str());
    Imath::Box2i const& window = input.header().dataWindow();
    Imf::ChannelList const& channels = input.header().channels();
    std::map<std::string, Plane> planes;
    Imf::FrameBuffer frame;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        Plane& plane = planes.try_emplace(channel.name(), channel.channel(), window).first->second;
        frame.insert(channel.name(), plane.slice);
    }
    input.setFrameBuffer(frame);
    input.readPixels(window.min.y, window.max.y);
    std::map<std::string, std::string> bytes;
    for (auto const& [name, plane] : planes) {
        bytes[name] = plane.bytes;
    }
    return bytes;
}

float valueOf(std::string const& halves, std::size_t index)
{
    std::uint16_t bits = 0;
    std::memcpy(&bits, &halves.at(index * 2), sizeof bits);
    return imath_half_to_float(bits);
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

namespace {

/// Of the module with the library for other files, which most tests do without.
template <typename Function>
Function* findInOtherPictures(char const* name)
{
    return reinterpret_cast<Function*>(loadModuleFunction("libtestOtherPictures.so", name));
}

} // namespace

void writeOther(std::filesystem::path const& file, int width, int channels, int bits,
                std::string const& samples, OtherAttributes const& attributes)
{
    auto* const write = findInOtherPictures<decltype(writeOtherPicture)>("writeOtherPicture");
    ASSERT_TRUE(write(file, width, channels, bits, samples, attributes));
}

OtherAttributes loadOtherAttributes(std::filesystem::path const& file)
{
    OtherAttributes attributes;
    findInOtherPictures<decltype(loadAttributesOfOther)>("loadAttributesOfOther")(file, attributes);
    return attributes;
}

std::vector<std::string> copyImage(std::filesystem::path const& from,
                                   std::filesystem::path const& to, CopyOptions const& options)
{
    std::vector<std::string> notes;
    MediaReport const report = {
        .note = [&](std::string const& text) { notes.push_back(text); },
        .warn = [&](std::string const& text) { notes.push_back("warning: " + text); }};
    auto const source = openImage(from, options.read);
    bool const keepsDepth = options.depth == IxPixelFormat::COMPLEX;
    auto const formatOf = [&](ImageInfo const& info) {
        IxPixelFormat const& read = info.format;
        return options.colour.empty()
                   ? IxPixelFormat(read.getComponents(),
                                   keepsDepth ? read.getDepth() : options.depth,
                                   read.getAspectRatio(), read.isPremultiplied())
                   : IxPixelFormat(IxPixelFormat::RGB, IxPixelFormat::FLOAT32, {}, false);
    };
    // Only colour and widening to float are asked for here.
    auto const convert = [&](ImageInfo const& info, IxTile const& tile) {
        IxPixelFormat const& read = info.format;
        IxPixelFormat const format = formatOf(info);
        IxTile result = tile;
        if (format != read) {
            result = IxTile(format, tile.getBounds());
            auto const samples =
                static_cast<std::size_t>(result.getBounds().getWidth() * format.getNbComponents());
            for (int y = result.getBounds().y0; y < result.getBounds().y1; ++y) {
                std::span const row(reinterpret_cast<float*>(IxWriteGuard(result).getRow(y)),
                                    samples);
                if (options.colour.empty()) {
                    samplesToFloat(IxReadGuard(tile).getRow(y), read.getDepth(), row);
                }
                for (std::size_t sample = 0; sample < samples && !options.colour.empty();
                     ++sample) {
                    row[sample] = options.colour[sample % 3];
                }
            }
        }
        return result;
    };
    auto const sink =
        createImage(to, *source, formatOf,
                    {.keepsInputDepth = keepsDepth, .compression = options.compression}, report);
    for (;;) {
        int const rows = source->getRowsPerBlock() * options.blocksPerStrip;
        int const strips = (source->getInfo().dataWindow.getHeight() - 1) / rows + 1;
        ImageStrip strip;
        for (int index = 0; index < strips; ++index) {
            source->readStrip(source->getStripBounds(index, rows), strip);
            for (std::size_t layer = 0; layer < strip.furtherColour.size(); ++layer) {
                IxTile& tile = strip.furtherColour[layer];
                tile = convert(source->getFurtherLayers()[layer], tile);
            }
            sink->writeStrip(convert(source->getInfo(), strip.colour), strip);
        }
        sink->endSection();
        if (!source->hasNextSection()) {
            break;
        }
        source->startNextSection();
        sink->startSection();
    }
    sink->finish();
    return notes;
}

std::vector<float> loadValues(std::filesystem::path const& file)
{
    auto const source = openImage(file, {});
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
    auto const error = catchFailure<ImageFileError>(action);
    std::string const text = error ? error->what() : "";
    EXPECT_TRUE(!error || error->getKind() == expected) << text;
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    return text;
}
