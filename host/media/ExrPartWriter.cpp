// Packing the strips of one part.

#include "media/ExrPartWriter.h"

#include "media/PixelRows.h"

#include <ImfFrameBuffer.h>
#include <ImfOutputFile.h>
#include <ImfTiledOutputFile.h>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <half.h>

/// Takes what one of the library's writers would write to a file of its own.
class ChunkCatcher : public Imf::OStream {
public:
    ChunkCatcher() : Imf::OStream("part") {}

    void write(char const* bytes, int count) override
    {
        auto const* const first = reinterpret_cast<std::byte const*>(bytes);
        caught.insert(caught.end(), first, first + count);
        position += static_cast<std::uint64_t>(count);
    }
    std::uint64_t tellp() override { return position; }
    void seekp(std::uint64_t wanted) override { position = wanted; } // to write what is dropped

    std::span<std::byte const> getCaught() const { return caught; }
    void drop() { caught.clear(); }

private:
    std::vector<std::byte> caught;
    std::uint64_t position = 0;
};

namespace {

std::size_t bytesOf(Imf::PixelType type)
{
    return type == Imf::HALF ? 2 : 4;
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

IxTile const& tileOf(std::size_t layer, IxTile const& result, ImageStrip const& strip)
{
    return layer == 0 ? result : strip.furtherColour[layer - 1];
}

} // namespace

ExrPartWriter::ExrPartWriter(ExrPlannedPart const& plannedPart, std::size_t partNumber)
    : part(plannedPart), number(partNumber), planes(plannedPart.colours.size())
{
    Imf::Header const& header = part.header.header;
    bool const isCopied = std::all_of(part.colours.begin(), part.colours.end(),
                                      [this](auto const& colour) { return isDirect(colour); });
    if (!part.header.isTiled && isCopied && ExrZipBlocks::areIn(header)) {
        zipBlocks.emplace(header);
        return;
    }
    catcher = std::make_unique<ChunkCatcher>();
    if (part.header.isTiled) {
        tiles = std::make_unique<Imf::TiledOutputFile>(*catcher, header);
    } else {
        scanLines = std::make_unique<Imf::OutputFile>(*catcher, header);
    }
    catcher->drop(); // a header and an empty table
}

ExrPartWriter::~ExrPartWriter() = default;

std::optional<int> ExrPartWriter::getRowsPerBlock() const
{
    return zipBlocks ? std::optional(zipBlocks->getRowsPerBlock()) : std::nullopt;
}

bool ExrPartWriter::isDirect(ExrPlannedChannel const& channel) const
{
    bool const isChanged =
        channel.component < exrColourNames.size() &&
        (part.isPremultiplying || part.luminanceWeights[channel.layer].has_value());
    return !isChanged && channel.type == typeOfDepth(part.formats[channel.layer].getDepth());
}

void ExrPartWriter::pack(IxTile const& result, ImageStrip& strip) const
{
    if (zipBlocks) {
        strip.packed = packBlocks(result, strip);
    }
}

std::vector<PackedBlock> ExrPartWriter::packBlocks(IxTile const& result,
                                                   ImageStrip const& strip) const
{
    GeRectangle<int> const& bounds = result.getBounds();
    Imf::FrameBuffer const frame = makeFrame(result, strip);
    std::vector<PackedBlock> blocks;
    for (int y = bounds.y0; y < bounds.y1; y += zipBlocks->getRowsPerBlock()) {
        blocks.push_back({y, zipBlocks->pack(frame, y)});
    }
    if (part.header.header.lineOrder() == Imf::DECREASING_Y) {
        std::reverse(blocks.begin(), blocks.end());
    }
    return blocks;
}

void ExrPartWriter::write(IxTile const& result, ImageStrip const& strip,
                          ExrChunkGrid::Level const& level, ExrContainer& container)
{
    if (zipBlocks) {
        std::vector<PackedBlock> packedHere;
        if (strip.packed.empty()) {
            packedHere = packBlocks(result, strip);
        }
        for (PackedBlock const& block : strip.packed.empty() ? packedHere : strip.packed) {
            container.writeRows(number, block.firstRow, block.bytes);
        }
        return;
    }
    for (std::size_t layer = 0; layer < part.formats.size(); ++layer) {
        convert(layer, tileOf(layer, result, strip));
    }
    writeRows(makeFrame(result, strip), result.getBounds(), level);
    container.writeAll(number, catcher->getCaught());
    catcher->drop();
}

Imf::FrameBuffer ExrPartWriter::makeFrame(IxTile const& result, ImageStrip const& strip) const
{
    Imf::FrameBuffer frame;
    insertColour(frame, result, strip);
    // Writing only reads from the frame, but the library has one kind of frame for both.
    insertFurtherChannels(frame, part.further, result.getBounds(),
                          const_cast<std::byte*>(strip.furtherChannels.data()));
    return frame;
}

/// The exact value where the three agree to the bit.
float ExrPartWriter::luminanceOf(float const* pixel, Imath::V3f const& weights)
{
    if (std::memcmp(pixel, pixel + 1, sizeof(float)) == 0 &&
        std::memcmp(pixel, pixel + 2, sizeof(float)) == 0) {
        return *pixel;
    }
    isColourLost = true;
    return pixel[0] * weights.x + pixel[1] * weights.y + pixel[2] * weights.z;
}

void ExrPartWriter::convert(std::size_t layer, IxTile const& tile)
{
    GeRectangle<int> const& bounds = tile.getBounds();
    IxPixelFormat const& format = part.formats[layer];
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    auto const components = static_cast<std::size_t>(format.getNbComponents());
    std::vector<std::size_t> converted;
    for (std::size_t index = 0; index < part.colours.size(); ++index) {
        if (part.colours[index].layer == layer && !isDirect(part.colours[index])) {
            planes[index].resize(width * static_cast<std::size_t>(bounds.getHeight()) *
                                 bytesOf(part.colours[index].type));
            converted.push_back(index);
        }
    }
    if (converted.empty()) {
        return;
    }
    IxReadGuard const guard(tile);
    std::vector<float> values(width * components);
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        samplesToFloat(guard.getRow(y), format.getDepth(), values);
        if (part.isPremultiplying) {
            premultiply(values);
        }
        for (std::size_t x = 0; part.luminanceWeights[layer].has_value() && x < width; ++x) {
            values[x * components] =
                luminanceOf(&values[x * components], *part.luminanceWeights[layer]);
        }
        for (std::size_t const index : converted) {
            ExrPlannedChannel const& colour = part.colours[index];
            std::size_t const rowBytes = width * bytesOf(colour.type);
            storeSamples(&values[colour.component], components, width, colour.type,
                         &planes[index][static_cast<std::size_t>(y - bounds.y0) * rowBytes]);
        }
    }
}

void ExrPartWriter::insertColour(Imf::FrameBuffer& frame, IxTile const& result,
                                 ImageStrip const& strip) const
{
    GeRectangle<int> const& bounds = result.getBounds();
    for (std::size_t index = 0; index < part.colours.size(); ++index) {
        ExrPlannedChannel const& colour = part.colours[index];
        std::size_t const sampleBytes = bytesOf(colour.type);
        if (isDirect(colour)) {
            IxTile const& tile = tileOf(colour.layer, result, strip);
            IxPixelFormat const& format = part.formats[colour.layer];
            IxWriteGuard const guard(tile); // for the address only, see makeFrame
            std::size_t const tileSampleBytes = static_cast<std::size_t>(format.getDepth()) / 8;
            insertSamples(frame, colour.name,
                          {colour.type,
                           guard.getRow(bounds.y0) + colour.component * tileSampleBytes,
                           format.getBytesPerPixel(), static_cast<std::size_t>(tile.getRowBytes())},
                          bounds);
        } else {
            insertSamples(frame, colour.name,
                          {colour.type, const_cast<std::byte*>(planes[index].data()), sampleBytes,
                           sampleBytes * static_cast<std::size_t>(bounds.getWidth())},
                          bounds);
        }
    }
}

void ExrPartWriter::writeRows(Imf::FrameBuffer const& frame, GeRectangle<int> const& bounds,
                              ExrChunkGrid::Level const& level)
{
    if (scanLines != nullptr) {
        scanLines->setFrameBuffer(frame);
        scanLines->writePixels(bounds.getHeight());
        return;
    }
    auto const tileRows = static_cast<int>(part.header.header.tileDescription().ySize);
    int const top = level.window.y0;
    tiles->setFrameBuffer(frame);
    tiles->writeTiles(0, static_cast<int>(level.across) - 1, (bounds.y0 - top) / tileRows,
                      (bounds.y1 - 1 - top) / tileRows, level.x, level.y);
}
