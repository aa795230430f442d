#include "MediaSupport.h"

#include "media/PixelRows.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfTiledOutputFile.h>
#include <OpenImageIO/imageio.h>

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

} // namespace

void writeExr(std::filesystem::path const& file, ExrRecipe const& recipe)
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
    recipe.addAttributes(header);
    std::mt19937 random(7);
    std::map<std::string, Plane> planes;
    Imf::FrameBuffer frame;
    for (auto channel = header.channels().begin(); channel != header.channels().end(); ++channel) {
        Plane& plane =
            planes.try_emplace(channel.name(), channel.channel(), recipe.dataWindow).first->second;
        auto const value = recipe.values.find(channel.name());
        for (std::size_t byte = 0; byte < plane.bytes.size(); ++byte) {
            plane.bytes[byte] = static_cast<char>(value == recipe.values.end()
                                                      ? random()
                                                      : half(value->second).bits() >> byte % 2 * 8);
        }
        frame.insert(channel.name(), plane.slice);
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

void writeOther(std::filesystem::path const& file, int width, int channels, int bits,
                std::string const& samples, OtherAttributes const& attributes)
{
    OIIO::TypeDesc const type = bits == 8 ? OIIO::TypeDesc::UINT8 : OIIO::TypeDesc::UINT16;
    int const rows = static_cast<int>(samples.size()) / (width * channels * bits / 8);
    OIIO::ImageSpec spec(width, rows, channels, type);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    for (auto const& [name, text] : attributes) {
        spec.attribute(name, text);
    }
    auto const output = OIIO::ImageOutput::create(file.string());
    ASSERT_TRUE(output && output->open(file.string(), spec) &&
                output->write_image(type, samples.data()) && output->close());
}

OtherAttributes loadOtherAttributes(std::filesystem::path const& file)
{
    auto const input = OIIO::ImageInput::open(file.string());
    OtherAttributes attributes;
    if (input != nullptr) {
        attributes["type"] = input->spec().format.c_str();
        for (OIIO::ParamValue const& attribute : input->spec().extra_attribs) {
            attributes[attribute.name().string()] = attribute.get_string();
        }
    }
    return attributes;
}

std::vector<std::string> copyImage(std::filesystem::path const& from,
                                   std::filesystem::path const& to, CopyOptions const& options)
{
    std::vector<std::string> notes;
    MediaReport const report = {
        .note = [&](std::string const& text) { notes.push_back(text); },
        .warn = [&](std::string const& text) { notes.push_back("warning: " + text); }};
    auto const source = openImage(from, {.layer = options.layer});
    bool const keepsDepth = options.depth == IxPixelFormat::COMPLEX;
    IxPixelFormat const& read = source->getInfo().format;
    IxPixelFormat const format =
        options.colour.empty()
            ? IxPixelFormat(read.getComponents(), keepsDepth ? read.getDepth() : options.depth,
                            read.getAspectRatio(), read.isPremultiplied())
            : IxPixelFormat(IxPixelFormat::RGB, IxPixelFormat::FLOAT32, {}, false);
    auto const sink =
        createImage(to, *source, format,
                    {.keepsInputDepth = keepsDepth, .compression = options.compression}, report);
    int const rows = source->getRowsPerBlock() * options.blocksPerStrip;
    int const strips = (source->getInfo().dataWindow.getHeight() - 1) / rows + 1;
    ImageStrip strip;
    for (int index = 0; index < strips; ++index) {
        source->readStrip(source->getStripBounds(index, rows), strip);
        IxTile result = strip.colour;
        if (format != read) { // only colour and widening to float are asked for here
            result = IxTile(format, strip.colour.getBounds());
            auto const samples =
                static_cast<std::size_t>(result.getBounds().getWidth() * format.getNbComponents());
            for (int y = result.getBounds().y0; y < result.getBounds().y1; ++y) {
                std::span const row(reinterpret_cast<float*>(IxWriteGuard(result).getRow(y)),
                                    samples);
                if (options.colour.empty()) {
                    samplesToFloat(IxReadGuard(strip.colour).getRow(y), read.getDepth(), row);
                }
                for (std::size_t sample = 0; sample < samples && !options.colour.empty();
                     ++sample) {
                    row[sample] = options.colour[sample % 3];
                }
            }
        }
        sink->writeStrip(result, strip);
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
