// Reading EXR pictures strip by strip.

#include "media/ExrReader.h"

#include "media/ErrorText.h"
#include "media/LumaChroma.h"

#include <Iex.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfStandardAttributes.h>
#include <ImfTiledInputFile.h>
#include <algorithm>
#include <limits>
#include <set>

namespace {

GeRectangle<int> toRectangle(Imath::Box2i const& box)
{
    return {box.min.x, box.min.y, box.max.x + 1, box.max.y + 1};
}

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
        return colour.prefix + exrColourNames[component];
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
      header(readExrHeader(*stream, file, options.mostBytes)),
      colour(options.maskChannel
                 ? chooseExrMask(header.header, options.layer, *options.maskChannel, file)
                 : chooseExrColour(header.header, options.layer, file)),
      further(findFurtherChannels(header.header.channels(), colour))
{
    bringsFurther = !options.maskChannel;
    describe();
    try {
        openPixels();
    } catch (...) {
        rethrowAsReadError(path, stream->getSystemError());
    }
}

ExrReader::~ExrReader() = default;

void ExrReader::describe()
{
    info.dataWindow = toRectangle(header.header.dataWindow());
    info.displayWindow = toRectangle(header.header.displayWindow());
    if (header.header.lineOrder() == Imf::DECREASING_Y) {
        order = StripOrder::BottomToTop;
    }
    bool const isHalf = colour.type == Imf::HALF || isConvertedToHalf(colour);
    info.storage = isHalf ? SampleStorage::Half : SampleStorage::Float;
    Rational const aspect =
        toRational(Imf::Rational(header.header.pixelAspectRatio()), Rational(1, 1));
    info.format = IxPixelFormat(componentsOf(colour),
                                isHalf ? IxPixelFormat::FLOAT16 : IxPixelFormat::FLOAT32, aspect,
                                colour.hasAlpha);
    if (Imf::hasFramesPerSecond(header.header)) {
        info.frameRate = toRational(Imf::framesPerSecond(header.header), info.frameRate);
    }
}

void ExrReader::openPixels()
{
    chunks.emplace(header, *stream, path);
    stream->seekg(0);
    if (colour.kind == ExrColourKind::SubsampledLumaChroma) {
        // Its rows are read ahead of their strips.
        chunks->checkRows(info.dataWindow.y0, info.dataWindow.y1 - 1, ExrChunks::Unpacker::Library);
        lumaChroma = std::make_unique<LumaChromaReader>(path, colour);
    }
    if (header.isTiled) {
        tiles = std::make_unique<Imf::TiledInputFile>(*stream);
    } else {
        scanLines = std::make_unique<Imf::InputFile>(*stream);
        if (ExrZipBlocks::areIn(header.header)) {
            zipBlocks.emplace(header.header);
        }
    }
}

int ExrReader::getRowsPerBlock() const
{
    // A tile may be taller than the picture.
    return alignRows(rowsPerBlockOf(header), rowsMultiple, info.dataWindow.getHeight());
}

std::size_t ExrReader::getFurtherBytesPerRow() const
{
    GeRectangle<int> firstRow = info.dataWindow;
    firstRow.y1 = firstRow.y0 + 1;
    return bringsFurther ? furtherBytesOf(further, firstRow) : 0;
}

GeRectangle<int> ExrReader::getStripBounds(int index, int rows) const
{
    return stripBoundsOf(info.dataWindow, index, rows, order);
}

std::vector<std::string> ExrReader::listLosses() const
{
    if (header.isTiled && header.header.tileDescription().mode != Imf::ONE_LEVEL) {
        return {quoteName(path.string()) + " has several resolutions; only the full one is kept"};
    }
    return {};
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
    for (auto attribute = header.header.begin(); attribute != header.header.end(); ++attribute) {
        if (!storage.contains(attribute.name())) {
            names.emplace_back(attribute.name());
        }
    }
    return names;
}

void ExrReader::takePlainStrips()
{
    order = StripOrder::TopToBottom;
    bringsFurther = false;
}

void ExrReader::fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip)
{
    try {
        strip.colour = IxTile(); // its buffer is the best one for the next tile
        strip.colour = IxTile(info.format, bounds);
        strip.furtherChannels.resize(bringsFurther ? furtherBytesOf(further, bounds) : 0);
        Imf::FrameBuffer const frame = makeFrame(strip);
        bool const isUnpackedHere = zipBlocks && zipBlocks->suit(frame);
        chunks->checkRows(bounds.y0, bounds.y1 - 1,
                          isUnpackedHere ? ExrChunks::Unpacker::Own : ExrChunks::Unpacker::Library);
        if (isUnpackedHere) {
            fetchBlocks(bounds, strip.packed);
            return;
        }
        readRows(frame, bounds);
        if (colour.kind == ExrColourKind::SubsampledLumaChroma) {
            lumaChroma->readRows(strip.colour);
        }
        finishColour(strip.colour);
    } catch (...) {
        int const lumaError = lumaChroma != nullptr ? lumaChroma->getSystemError() : 0;
        rethrowAsReadError(path, lumaError != 0 ? lumaError : stream->getSystemError());
    }
}

void ExrReader::fetchBlocks(GeRectangle<int> const& bounds, std::vector<PackedBlock>& blocks)
{
    int const rows = zipBlocks->getRowsPerBlock();
    blocks.resize(static_cast<std::size_t>((bounds.getHeight() + rows - 1) / rows));
    int y = bounds.y0;
    for (PackedBlock& block : blocks) {
        char const* bytes = nullptr;
        int size = 0;
        scanLines->rawPixelData(y, bytes, size);
        auto const* const first = reinterpret_cast<std::byte const*>(bytes);
        block.firstRow = y;
        block.bytes.assign(first, first + size);
        y += rows;
    }
}

void ExrReader::unpackStrip(ImageStrip& strip) const
{
    if (strip.packed.empty()) {
        return;
    }
    try {
        Imf::FrameBuffer const frame = makeFrame(strip);
        for (PackedBlock const& block : strip.packed) {
            zipBlocks->unpack(block.bytes, block.firstRow, frame);
        }
        finishColour(strip.colour);
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
    insertColour(frame, strip.colour);
    if (bringsFurther) {
        insertFurtherChannels(frame, further, strip.colour.getBounds(),
                              strip.furtherChannels.data());
    }
    return frame;
}

void ExrReader::insertColour(Imf::FrameBuffer& frame, IxTile const& tile) const
{
    if (colour.kind == ExrColourKind::SubsampledLumaChroma) {
        return;
    }
    IxWriteGuard const guard(tile);
    std::size_t const pixelBytes = info.format.getBytesPerPixel();
    bool const isHalf = info.format.getDepth() == IxPixelFormat::FLOAT16;
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

void ExrReader::readRows(Imf::FrameBuffer const& frame, GeRectangle<int> const& bounds)
{
    if (frame.begin() == frame.end()) {
        return; // the luminance/chroma reader does it all
    }
    if (scanLines != nullptr) {
        scanLines->setFrameBuffer(frame);
        scanLines->readPixels(bounds.y0, bounds.y1 - 1);
        return;
    }
    int const tileRows = rowsPerBlockOf(header);
    int const top = info.dataWindow.y0;
    tiles->setFrameBuffer(frame);
    tiles->readTiles(0, tiles->numXTiles() - 1, (bounds.y0 - top) / tileRows,
                     (bounds.y1 - 1 - top) / tileRows);
}

void ExrReader::finishColour(IxTile const& tile) const
{
    switch (colour.kind) {
    case ExrColourKind::Luminance: spreadLuminance(tile); break;
    case ExrColourKind::FullLumaChroma:
        convertFullLumaChroma(tile, luminanceWeightsOf(header.header));
        break;
    case ExrColourKind::SubsampledLumaChroma:
    case ExrColourKind::Rgb:
    case ExrColourKind::AlphaOnly: break;
    }
}
