// Writing EXR pictures strip by strip.

#include "media/ExrWriter.h"

#include "media/ErrorText.h"
#include "media/ExrCompression.h"
#include "media/ImageTarget.h"
#include "media/LumaChroma.h"
#include "media/PixelRows.h"

#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfPartType.h>
#include <ImfTiledOutputFile.h>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <half.h>
#include <limits>

namespace {

Imf::PixelType typeOfDepth(IxPixelFormat::Depth depth)
{
    return depth == IxPixelFormat::FLOAT16 ? Imf::HALF : Imf::FLOAT;
}

std::size_t bytesOf(Imf::PixelType type)
{
    return type == Imf::HALF ? 2 : 4;
}

Imath::Box2i toBox(GeRectangle<int> const& rectangle)
{
    return {Imath::V2i(rectangle.x0, rectangle.y0), Imath::V2i(rectangle.x1 - 1, rectangle.y1 - 1)};
}

GeRectangle<int> windowOf(Imf::Header const& header)
{
    Imath::Box2i const& box = header.dataWindow();
    return {box.min.x, box.min.y, box.max.x + 1, box.max.y + 1};
}

/// Stores every `stride`-th value as half or float, one after the other.
void storeSamples(float const* values, std::size_t stride, std::size_t count, Imf::PixelType type,
                  std::byte* samples)
{
    for (std::size_t index = 0; index < count; ++index, values += stride) {
        if (type == Imf::HALF) {
            std::uint16_t const bits = imath_float_to_half(*values);
            std::memcpy(samples + index * sizeof bits, &bits, sizeof bits);
        } else {
            std::memcpy(samples + index * sizeof(float), values, sizeof(float));
        }
    }
}

/// The low byte first.
template <typename Number>
void writeNumber(Imf::OStream& stream, Number number)
{
    char bytes[sizeof(Number)];
    for (char& byte : bytes) {
        byte = static_cast<char>(number & 0xff);
        number >>= 8;
    }
    stream.write(bytes, sizeof(bytes));
}

bool isConverted(ExrColourKind kind)
{
    return kind == ExrColourKind::SubsampledLumaChroma || kind == ExrColourKind::FullLumaChroma;
}

} // namespace

ExrWriter::ExrWriter(std::filesystem::path const& file, ImageSource& source,
                     IxPixelFormat const& resultFormat, WriteOptions const& options,
                     MediaReport const& mediaReport)
    : report(mediaReport), temporary(makeTemporaryImage(file)), format(resultFormat)
{
    if (auto const* const reader = dynamic_cast<ExrReader const*>(&source)) {
        planFromExr(*reader, options.keepsInputDepth);
        applyCompression(options.compression, header);
        reportRecompressed(*reader);
    } else {
        planFromOther(source);
        applyCompression(options.compression, header);
    }
    if (options.compression && packsNothing(header)) {
        report.note(quoteName(file.string()) + " stays as large as without compression: " +
                    nameCompression(header.compression()) + " packs half only");
    }
    rowsLeft = source.getInfo().dataWindow.getHeight();
    try {
        open(source);
    } catch (...) {
        rethrowAsWriteError(file, stream != nullptr ? stream->getSystemError() : 0);
    }
}

ExrWriter::~ExrWriter() = default;

void ExrWriter::addColour(Imf::ChannelList& channels, ColourChannel const& colour,
                          Imf::Channel const& likeness)
{
    Imf::Channel channel = likeness;
    channel.type = colour.type;
    channels.insert(colour.name, channel);
    colours.push_back(colour);
}

void ExrWriter::planFromExr(ExrReader const& reader, bool keepsInputDepth)
{
    header = reader.getHeader().header;
    isTiled = reader.getHeader().isTiled;
    further = reader.getFurtherChannels();
    ExrColour const& colour = reader.getColour();
    Imf::ChannelList const old = header.channels();
    Imf::ChannelList kept;
    for (ExrFurtherChannel const& channel : further) {
        kept.insert(channel.name, old[channel.name]);
    }
    auto const add = [&](std::string const& name, std::size_t component, std::string const& like) {
        Imf::Channel const& likeness = old[like];
        addColour(
            kept,
            {name, keepsInputDepth ? likeness.type : typeOfDepth(format.getDepth()), component},
            likeness);
    };
    std::string const luminance = colour.prefix + "Y";
    for (std::size_t component = 0; component < exrColourNames.size(); ++component) {
        std::string const name = colour.prefix + exrColourNames[component];
        if (colour.kind == ExrColourKind::Rgb && colour.isPresent[component]) {
            add(name, component, name);
        } else if (isConverted(colour.kind)) {
            add(name, component, luminance);
        }
    }
    if (colour.kind == ExrColourKind::Luminance) {
        luminanceWeights = luminanceWeightsOf(header);
        add(luminance, 0, luminance);
    }
    if (colour.hasAlpha) {
        std::string const alpha = colour.prefix + exrAlphaName;
        add(alpha, colour.kind == ExrColourKind::AlphaOnly ? 0 : exrColourNames.size(), alpha);
    }
    if (isConverted(colour.kind)) {
        report.note("\"" + temporary.getTarget().string() +
                    "\" holds R, G and B in place of luminance and chroma");
    }
    header.channels() = kept;
    if (isTiled && header.tileDescription().mode != Imf::ONE_LEVEL) {
        header.tileDescription().mode = Imf::ONE_LEVEL;
        header.erase("chunkCount"); // it counted the tiles of all levels
    }
}

void ExrWriter::planFromOther(ImageSource const& source)
{
    ImageInfo const& info = source.getInfo();
    header = Imf::Header(toBox(info.displayWindow), toBox(info.dataWindow),
                         info.format.getAspectRatio().getFloat());
    Imf::PixelType const type = typeOfDepth(format.getDepth());
    bool const isAlphaOnly = format.getComponents() == IxPixelFormat::ALPHA;
    if (!isAlphaOnly) {
        for (std::size_t component = 0; component < exrColourNames.size(); ++component) {
            addColour(header.channels(), {exrColourNames[component], type, component}, {});
        }
    }
    if (format.getComponents() != IxPixelFormat::RGB) {
        addColour(header.channels(), {exrAlphaName, type, isAlphaOnly ? 0 : exrColourNames.size()},
                  {});
    }
    // Colour in an EXR file is multiplied by alpha.
    isPremultiplying =
        format.getComponents() == IxPixelFormat::RGBA && !info.format.isPremultiplied();
}

/// Names the channels that should be copied to the bit and cannot be.
void ExrWriter::reportRecompressed(ExrReader const& reader) const
{
    Imf::Header const& old = reader.getHeader().header;
    Imf::ChannelList copied;
    for (auto channel = header.channels().begin(); channel != header.channels().end(); ++channel) {
        bool const isColour =
            std::any_of(colours.begin(), colours.end(), [&](ColourChannel const& colour) {
                return colour.name == channel.name() && colour.component < exrColourNames.size() &&
                       reader.getColour().kind != ExrColourKind::AlphaOnly;
            });
        // A channel that was widened holds the same values; one that was narrowed is not copied.
        auto const* const before = old.channels().findChannel(channel.name());
        if (!isColour && before != nullptr && before->type == channel.channel().type) {
            copied.insert(channel.name(), channel.channel());
        }
    }
    auto const names = listLossyChannels(copied, old.compression(), header.compression());
    if (!names.empty()) {
        report.note(quoteName(temporary.getTarget().string()) + " is packed with " +
                    nameCompression(header.compression()) +
                    ", which can change channels that are otherwise copied: " +
                    quoteList(names, names.size()) +
                    "; the compressions none, rle, zips, zip and "
                    "piz keep them");
    }
}

void ExrWriter::open(ImageSource& source)
{
    stream = std::make_unique<CheckedOutput>(temporary);
    if (isTiled) {
        tiles = std::make_unique<Imf::TiledOutputFile>(*stream, header);
    } else {
        scanLines = std::make_unique<Imf::OutputFile>(*stream, header);
    }
    planes.resize(colours.size());
    bool const isCopied = std::all_of(colours.begin(), colours.end(),
                                      [this](auto const& colour) { return isDirect(colour); });
    if (!isTiled && isCopied && ExrZipBlocks::areIn(header)) {
        // The library has written the header and an empty table; the rest is written here.
        zipBlocks.emplace(header);
        if (auto* const media = dynamic_cast<MediaSource*>(&source)) {
            media->alignStrips(zipBlocks->getRowsPerBlock());
        }
        blockOffsets.resize(static_cast<std::size_t>(zipBlocks->countBlocks()));
        std::uint64_t const tableEnd = stream->tellp();
        scanLines.reset();
        blockTable = tableEnd - blockOffsets.size() * sizeof(std::uint64_t);
        stream->seekp(tableEnd);
    }
}

bool ExrWriter::isDirect(ColourChannel const& channel) const
{
    bool const isChanged = channel.component < exrColourNames.size() &&
                           (isPremultiplying || luminanceWeights.has_value());
    return !isChanged && channel.type == typeOfDepth(format.getDepth());
}

void ExrWriter::packStrip(IxTile const& result, ImageStrip& strip) const
{
    if (zipBlocks) {
        packBlocks(result, strip, strip.packed);
    }
}

void ExrWriter::packBlocks(IxTile const& result, ImageStrip const& strip,
                           std::vector<PackedBlock>& blocks) const
{
    GeRectangle<int> const& bounds = result.getBounds();
    Imf::FrameBuffer const frame = makeFrame(result, strip);
    blocks.clear();
    for (int y = bounds.y0; y < bounds.y1; y += zipBlocks->getRowsPerBlock()) {
        blocks.push_back({y, zipBlocks->pack(frame, y)});
    }
    if (header.lineOrder() == Imf::DECREASING_Y) {
        std::reverse(blocks.begin(), blocks.end());
    }
}

void ExrWriter::writeStrip(IxTile const& result, ImageStrip const& strip)
{
    GeRectangle<int> const& bounds = result.getBounds();
    try {
        if (zipBlocks) {
            std::vector<PackedBlock> packedHere;
            if (strip.packed.empty()) {
                packBlocks(result, strip, packedHere);
            }
            for (PackedBlock const& block : strip.packed.empty() ? packedHere : strip.packed) {
                writeBlock(block);
            }
        } else {
            convert(result);
            writeRows(makeFrame(result, strip), bounds);
        }
    } catch (...) {
        rethrowAsWriteError(temporary.getTarget(), stream->getSystemError());
    }
    rowsLeft -= bounds.getHeight();
}

Imf::FrameBuffer ExrWriter::makeFrame(IxTile const& result, ImageStrip const& strip) const
{
    Imf::FrameBuffer frame;
    insertColour(frame, result);
    // Writing only reads from the frame, but the library has one kind of frame for both.
    insertFurtherChannels(frame, further, result.getBounds(),
                          const_cast<std::byte*>(strip.furtherChannels.data()));
    return frame;
}

void ExrWriter::writeBlock(PackedBlock const& block)
{
    blockOffsets[static_cast<std::size_t>(zipBlocks->indexOf(block.firstRow))] = stream->tellp();
    writeNumber(*stream, static_cast<std::uint32_t>(block.firstRow));
    writeNumber(*stream, static_cast<std::uint32_t>(block.bytes.size()));
    stream->write(reinterpret_cast<char const*>(block.bytes.data()),
                  static_cast<int>(block.bytes.size()));
}

/// The exact value where the three agree to the bit.
float ExrWriter::luminanceOf(float const* pixel)
{
    if (std::memcmp(pixel, pixel + 1, sizeof(float)) == 0 &&
        std::memcmp(pixel, pixel + 2, sizeof(float)) == 0) {
        return *pixel;
    }
    hasLostColour = true;
    return pixel[0] * luminanceWeights->x + pixel[1] * luminanceWeights->y +
           pixel[2] * luminanceWeights->z;
}

void ExrWriter::convert(IxTile const& result)
{
    GeRectangle<int> const& bounds = result.getBounds();
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    auto const components = static_cast<std::size_t>(format.getNbComponents());
    bool isNeeded = false;
    for (std::size_t index = 0; index < colours.size(); ++index) {
        if (!isDirect(colours[index])) {
            planes[index].resize(width * static_cast<std::size_t>(bounds.getHeight()) *
                                 bytesOf(colours[index].type));
            isNeeded = true;
        }
    }
    if (!isNeeded) {
        return;
    }
    IxReadGuard const guard(result);
    std::vector<float> values(width * components);
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        samplesToFloat(guard.getRow(y), format.getDepth(), values);
        if (isPremultiplying) {
            premultiply(values);
        }
        for (std::size_t x = 0; luminanceWeights.has_value() && x < width; ++x) {
            values[x * components] = luminanceOf(&values[x * components]);
        }
        for (std::size_t index = 0; index < colours.size(); ++index) {
            if (!isDirect(colours[index])) {
                std::size_t const rowBytes = width * bytesOf(colours[index].type);
                storeSamples(&values[colours[index].component], components, width,
                             colours[index].type,
                             &planes[index][static_cast<std::size_t>(y - bounds.y0) * rowBytes]);
            }
        }
    }
}

void ExrWriter::insertColour(Imf::FrameBuffer& frame, IxTile const& result) const
{
    GeRectangle<int> const& bounds = result.getBounds();
    IxWriteGuard const guard(result); // for the address only, see writeStrip
    std::size_t const tileSampleBytes = static_cast<std::size_t>(format.getDepth()) / 8;
    for (std::size_t index = 0; index < colours.size(); ++index) {
        ColourChannel const& colour = colours[index];
        std::size_t const sampleBytes = bytesOf(colour.type);
        if (isDirect(colour)) {
            insertSamples(
                frame, colour.name,
                {colour.type, guard.getRow(bounds.y0) + colour.component * tileSampleBytes,
                 format.getBytesPerPixel(), static_cast<std::size_t>(result.getRowBytes())},
                bounds);
        } else {
            insertSamples(frame, colour.name,
                          {colour.type, const_cast<std::byte*>(planes[index].data()), sampleBytes,
                           sampleBytes * static_cast<std::size_t>(bounds.getWidth())},
                          bounds);
        }
    }
}

void ExrWriter::writeRows(Imf::FrameBuffer const& frame, GeRectangle<int> const& bounds)
{
    if (scanLines != nullptr) {
        scanLines->setFrameBuffer(frame);
        scanLines->writePixels(bounds.getHeight());
        return;
    }
    int const tileRows = static_cast<int>(header.tileDescription().ySize);
    int const top = windowOf(header).y0;
    tiles->setFrameBuffer(frame);
    tiles->writeTiles(0, tiles->numXTiles() - 1, (bounds.y0 - top) / tileRows,
                      (bounds.y1 - 1 - top) / tileRows);
}

void ExrWriter::writeBlockTable()
{
    try {
        if (zipBlocks) {
            stream->seekp(blockTable);
        }
        for (std::uint64_t const offset : blockOffsets) {
            writeNumber(*stream, offset);
        }
    } catch (...) {
        rethrowAsWriteError(temporary.getTarget(), stream->getSystemError());
    }
}

void ExrWriter::finish()
{
    if (rowsLeft != 0) {
        throwWriteError(ImageFailure::File, temporary.getTarget(), "not all rows have come");
    }
    // These end by writing the table of where everything is.
    scanLines.reset();
    tiles.reset();
    writeBlockTable();
    stream->close();
    check();
    publishImage(temporary);
    if (hasLostColour) {
        report.warn(
            "\"" + temporary.getTarget().string() +
            "\" holds luminance only, as its source did: the colour of the result is not in it");
    }
}

void ExrWriter::check() const
{
    try {
        CheckedInput written(temporary.getPath());
        Imf::InputFile const file(written, 0);
        if (file.isComplete() && file.header().dataWindow() == header.dataWindow()) {
            return;
        }
    } catch (std::exception const&) {
        // One message for everything that is wrong with it.
    }
    throwWriteError(ImageFailure::Surroundings, temporary.getTarget(),
                    "what was written does not read back; the disk may be full or faulty");
}
