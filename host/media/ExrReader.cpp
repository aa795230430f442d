// Reading EXR pictures strip by strip.

#include "media/ExrReader.h"

#include "files/StandardFiles.h"
#include "media/ErrorText.h"
#include "media/ExrPartInput.h"
#include "media/LumaChroma.h"

#include <Iex.h>
#include <ImfFrameBuffer.h>
#include <ImfStandardAttributes.h>
#include <algorithm>
#include <limits>
#include <set>

namespace {

/// The library's closest fraction, or `fallback` where it is not above 0 or does not fit.
Rational toRational(Imf::Rational const& value, Rational const& fallback)
{
    bool const isUsable = value.n > 0 && value.d > 0 &&
                          value.d <= static_cast<unsigned>(std::numeric_limits<int>::max());
    return isUsable ? Rational(value.n, static_cast<int>(value.d)) : fallback;
}

/// Interpolated and converted chroma is half; everything else keeps its type.
bool isConvertedToHalf(ExrColour const& colour)
{
    return colour.kind == ExrColourKind::SubsampledLumaChroma ||
           colour.kind == ExrColourKind::FullLumaChroma;
}

/// The channel that feeds component 0, 1 or 2 of a tile, "" if none does.
std::string sourceChannelOf(ExrColour const& colour, std::size_t component)
{
    switch (colour.kind) {
    case ExrColourKind::Rgb:
        // An absent channel stays in the frame: the library fills it with 0.
        return colour.names[component].empty() ? colour.prefix + exrColourNames[component]
                                               : colour.names[component];
    case ExrColourKind::Luminance: return component == 0 ? colour.prefix + "Y" : "";
    case ExrColourKind::FullLumaChroma:
        return colour.prefix + std::array{"RY", "Y", "BY"}[component];
    case ExrColourKind::SubsampledLumaChroma:
    case ExrColourKind::AlphaOnly: return "";
    }
    return "";
}

} // namespace

ExrReader::ExrReader(std::filesystem::path const& file, ReadOptions const& options)
    : path(file), stream(std::make_unique<CheckedInput>(file)),
      headers(readExrHeaders(*stream, file, options.mostBytes)),
      selection(selectExr(headers, options, file)), bringsFurther(!options.maskChannel)
{
    try {
        chunks = ExrChunks::readAll(headers, *stream, path);
        for (std::size_t index = 0; index < selection.size(); ++index) {
            std::size_t const nbLevels = chunks[selection[index].part].getGrid().getLevels().size();
            for (std::size_t level = 0; level < nbLevels; ++level) {
                sections.push_back({index, level});
            }
        }
        startSection();
    } catch (...) {
        rethrowAsReadError(path, getSystemError());
    }
}

ExrReader::~ExrReader() = default;

int ExrReader::getSystemError() const
{
    for (auto const& reader : lumaChroma) {
        if (reader != nullptr && reader->getSystemError() != 0) {
            return reader->getSystemError();
        }
    }
    return stream->getSystemError();
}

ImageInfo ExrReader::describe(std::size_t part, ExrColour const& colour) const
{
    Imf::Header const& header = headers.parts[part].header;
    ImageInfo described;
    described.dataWindow = toRectangle(header.dataWindow());
    described.displayWindow = toRectangle(header.displayWindow());
    bool const isHalf = colour.type == Imf::HALF || isConvertedToHalf(colour);
    described.storage = isHalf ? SampleStorage::Half : SampleStorage::Float;
    Rational const aspect = toRational(Imf::Rational(header.pixelAspectRatio()), Rational(1, 1));
    described.format = IxPixelFormat(componentsOf(colour),
                                     isHalf ? IxPixelFormat::FLOAT16 : IxPixelFormat::FLOAT32,
                                     aspect, colour.hasAlpha);
    if (Imf::hasFramesPerSecond(header)) {
        described.frameRate = toRational(Imf::framesPerSecond(header), described.frameRate);
    }
    return described;
}

ExrChunkGrid::Level const& ExrReader::levelAt(Place const& place) const
{
    return chunks[selection[place.selected].part].getGrid().getLevels()[place.level];
}

std::vector<ImageSource::Section> ExrReader::listSections() const
{
    std::vector<Section> list;
    for (Place const& place : sections) {
        ExrChunkGrid::Level const& level = levelAt(place);
        list.push_back({level.window, level.x, level.y});
    }
    return list;
}

void ExrReader::startNextSection()
{
    try {
        ++sectionIndex;
        startSection();
    } catch (...) {
        rethrowAsReadError(path, getSystemError());
    }
}

void ExrReader::startSection()
{
    if (!isPlain) {
        order = partHeader().header.lineOrder() == Imf::DECREASING_Y ? StripOrder::BottomToTop
                                                                     : StripOrder::TopToBottom;
    }
    furtherInfos.clear();
    for (ExrColour const& colour : colours()) {
        ImageInfo& layer = &colour == &colours().front() ? info : furtherInfos.emplace_back();
        layer = describe(selected().part, colour);
        layer.dataWindow = levelAt(getPlace()).window;
    }
    if (getPlace().level == 0) {
        openPixels();
    }
}

void ExrReader::openPixels()
{
    rowsMultiple = 1;
    blocks.emplace(partHeader());
    lumaChroma.clear();
    for (ExrColour const& colour : colours()) {
        lumaChroma.emplace_back();
        if (colour.kind != ExrColourKind::SubsampledLumaChroma) {
            continue;
        }
        // Its rows are read ahead of their strips.
        ExrChunks const& own = chunks[selected().part];
        own.checkBlocks();
        lumaChroma.back() = std::make_unique<LumaChromaReader>(
            std::make_unique<ExrPartInput>(path, headers, selected().part, own), colour);
    }
}

int ExrReader::getRowsPerBlock() const
{
    // A tile may be taller than the picture.
    int const height = info.dataWindow.getHeight();
    return alignRows(blocks->getRowsPerRun(height), rowsMultiple, height);
}

std::size_t ExrReader::getFurtherBytesPerRow() const
{
    GeRectangle<int> firstRow = info.dataWindow;
    firstRow.y1 = firstRow.y0 + 1;
    return bringsFurther ? furtherBytesOf(selected().further, firstRow) : 0;
}

GeRectangle<int> ExrReader::getStripBounds(int index, int rows) const
{
    return stripBoundsOf(info.dataWindow, index, rows, order);
}

std::size_t ExrReader::countPictures() const
{
    std::size_t pictures = 0;
    for (ExrSelectedPart const& part : selection) {
        pictures += part.layers.size();
    }
    return pictures;
}

std::vector<std::string> ExrReader::listLosses(FileKind target) const
{
    std::vector<std::string> losses;
    if (target == FileKind::Exr) {
        return losses;
    }
    if (chunks[selected().part].getGrid().getLevels().size() > 1) {
        losses.push_back(nameInput(path) + " has several resolutions; only the full one is kept");
    }
    if (headers.parts.size() > 1) {
        losses.push_back(nameInput(path) + " has " + std::to_string(headers.parts.size()) +
                         " parts; only part " + namePart(headers, selected().part) + " is kept");
    }
    return losses;
}

std::vector<std::string> ExrReader::listMetadata(FileKind) const
{
    // The channels' place and storage, which every file has in its own way; a preview is no
    // description; and these are the library's own.
    static std::set<std::string> const storage = {"channels",
                                                  "chunkCount",
                                                  "compression",
                                                  "dataWindow",
                                                  "displayWindow",
                                                  "lineOrder",
                                                  "name",
                                                  "pixelAspectRatio",
                                                  "screenWindowCenter",
                                                  "screenWindowWidth",
                                                  "tiles",
                                                  "type",
                                                  "version",
                                                  "preview",
                                                  "dwaCompressionLevel"};
    std::vector<std::string> names;
    Imf::Header const& header = partHeader().header;
    for (auto attribute = header.begin(); attribute != header.end(); ++attribute) {
        if (!storage.contains(attribute.name())) {
            names.emplace_back(attribute.name());
        }
    }
    return names;
}

void ExrReader::takePlainStrips()
{
    isPlain = true;
    order = StripOrder::TopToBottom;
    bringsFurther = false;
    sections.resize(1);
}

void ExrReader::fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip)
{
    try {
        strip.colour = IxTile(); // its buffer is the best one for the next tile
        strip.furtherColour.clear();
        strip.packed.clear();
        strip.colour = IxTile(info.format, bounds);
        for (ImageInfo const& layer : furtherInfos) {
            strip.furtherColour.emplace_back(layer.format, bounds);
        }
        strip.furtherChannels.resize(bringsFurther ? furtherBytesOf(selected().further, bounds)
                                                   : 0);
        if (Imf::FrameBuffer const frame = makeFrame(strip); frame.begin() != frame.end()) {
            chunks[selected().part].readBlocks(levelAt(getPlace()), bounds.y0, bounds.y1 - 1,
                                               strip.packed);
        }
        for (std::size_t layer = 0; layer < lumaChroma.size(); ++layer) {
            if (lumaChroma[layer] != nullptr) {
                lumaChroma[layer]->readRows(layer == 0 ? strip.colour
                                                       : strip.furtherColour[layer - 1]);
            }
        }
    } catch (...) {
        rethrowAsReadError(path, getSystemError());
    }
}

void ExrReader::unpackStrip(ImageStrip& strip) const
{
    if (strip.packed.list.empty()) {
        return;
    }
    try {
        blocks->unpack(strip.packed, strip.colour.getBounds(), makeFrame(strip));
        finishColours(strip);
    } catch (...) {
        constexpr int noSystemError = 0;
        rethrowAsReadError(path, noSystemError);
    }
    strip.packed.clear();
}

/// Where the samples of a strip go.
Imf::FrameBuffer ExrReader::makeFrame(ImageStrip& strip) const
{
    Imf::FrameBuffer frame;
    insertColour(frame, 0, strip.colour);
    for (std::size_t layer = 1; layer < colours().size(); ++layer) {
        insertColour(frame, layer, strip.furtherColour[layer - 1]);
    }
    if (bringsFurther) {
        insertFurtherChannels(frame, selected().further, strip.colour.getBounds(),
                              strip.furtherChannels.data());
    }
    return frame;
}

void ExrReader::insertColour(Imf::FrameBuffer& frame, std::size_t layer, IxTile const& tile) const
{
    ExrColour const& colour = colours()[layer];
    if (colour.kind == ExrColourKind::SubsampledLumaChroma) {
        return;
    }
    IxWriteGuard const guard(tile);
    std::size_t const pixelBytes = tile.getPixelFormat().getBytesPerPixel();
    bool const isHalf = tile.getPixelFormat().getDepth() == IxPixelFormat::FLOAT16;
    std::size_t const sampleBytes = isHalf ? 2 : 4;
    std::byte* const first = guard.getRow(tile.getBounds().y0);
    auto const insert = [&](std::string const& name, std::size_t component) {
        insertSamples(frame, name,
                      {isHalf ? Imf::HALF : Imf::FLOAT, first + component * sampleBytes, pixelBytes,
                       static_cast<std::size_t>(tile.getRowBytes())},
                      tile.getBounds());
    };
    for (std::size_t component = 0; component < exrColourNames.size(); ++component) {
        std::string const name = sourceChannelOf(colour, component);
        if (!name.empty()) {
            insert(name, component);
        }
    }
    if (colour.hasAlpha) {
        insert(colour.alphaName,
               colour.kind == ExrColourKind::AlphaOnly ? 0 : exrColourNames.size());
    }
}

void ExrReader::finishColours(ImageStrip const& strip) const
{
    for (std::size_t layer = 0; layer < colours().size(); ++layer) {
        IxTile const& tile = layer == 0 ? strip.colour : strip.furtherColour[layer - 1];
        switch (colours()[layer].kind) {
        case ExrColourKind::Luminance: spreadLuminance(tile); break;
        case ExrColourKind::FullLumaChroma:
            convertFullLumaChroma(tile, luminanceWeightsOf(partHeader().header));
            break;
        case ExrColourKind::SubsampledLumaChroma:
        case ExrColourKind::Rgb:
        case ExrColourKind::AlphaOnly: break;
        }
    }
}
