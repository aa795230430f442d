// Packing the strips of one part.

#include "media/ExrPartWriter.h"

#include "media/PixelRows.h"

#include <ImfFrameBuffer.h>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <half.h>

namespace {

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

ExrPartWriter::ExrPartWriter(ExrPlannedPart const& plannedPart, std::size_t partNumber,
                             ExrContainer const& file)
    : part(plannedPart), number(partNumber), container(file), blockPacker(part.header)
{
}

int ExrPartWriter::getRowsPerBlock() const
{
    return blockPacker.getRowsPerRun(blockPacker.getGrid().getLevels().front().window.getHeight());
}

bool ExrPartWriter::isDirect(ExrPlannedChannel const& channel) const
{
    bool const isChanged =
        channel.component < exrColourNames.size() &&
        (part.isPremultiplying || part.luminanceWeights[channel.layer].has_value());
    return !isChanged && channel.type == typeOfDepth(part.formats[channel.layer].getDepth());
}

void ExrPartWriter::pack(IxTile const& result, ImageStrip const& strip,
                         ExrChunkGrid::Level const& level, PackedBlocks& blocks) const
{
    Planes planes(part.colours.size());
    for (std::size_t layer = 0; layer < part.formats.size(); ++layer) {
        convert(layer, tileOf(layer, result, strip), planes);
    }
    Imf::FrameBuffer frame;
    insertColour(frame, result, strip, planes);
    // Packing only reads from the frame, but the library has one kind of frame for both.
    insertFurtherChannels(frame, part.further, result.getBounds(),
                          const_cast<std::byte*>(strip.furtherChannels.data()));
    blockPacker.pack(frame, level, result.getBounds(), container.getHeadBytes(number), blocks);
    container.fillHeads(number, blocks);
}

/// The exact value where the three agree to the bit.
float ExrPartWriter::luminanceOf(float const* pixel, Imath::V3f const& weights) const
{
    if (std::memcmp(pixel, pixel + 1, sizeof(float)) == 0 &&
        std::memcmp(pixel, pixel + 2, sizeof(float)) == 0) {
        return *pixel;
    }
    isColourLost = true;
    return pixel[0] * weights.x + pixel[1] * weights.y + pixel[2] * weights.z;
}

void ExrPartWriter::convert(std::size_t layer, IxTile const& tile, Planes& planes) const
{
    GeRectangle<int> const& bounds = tile.getBounds();
    IxPixelFormat const& format = part.formats[layer];
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    auto const components = static_cast<std::size_t>(format.getNbComponents());
    std::vector<std::size_t> converted;
    for (std::size_t index = 0; index < part.colours.size(); ++index) {
        if (part.colours[index].layer == layer && !isDirect(part.colours[index])) {
            planes[index].resize(width * static_cast<std::size_t>(bounds.getHeight()) *
                                 sampleBytesOf(part.colours[index].type));
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
            std::size_t const rowBytes = width * sampleBytesOf(colour.type);
            storeSamples(&values[colour.component], components, width, colour.type,
                         &planes[index][static_cast<std::size_t>(y - bounds.y0) * rowBytes]);
        }
    }
}

void ExrPartWriter::insertColour(Imf::FrameBuffer& frame, IxTile const& result,
                                 ImageStrip const& strip, Planes& planes) const
{
    GeRectangle<int> const& bounds = result.getBounds();
    for (std::size_t index = 0; index < part.colours.size(); ++index) {
        ExrPlannedChannel const& colour = part.colours[index];
        std::size_t const sampleBytes = sampleBytesOf(colour.type);
        if (isDirect(colour)) {
            IxTile const& tile = tileOf(colour.layer, result, strip);
            IxPixelFormat const& format = part.formats[colour.layer];
            IxWriteGuard const guard(tile); // for the address only, see pack
            std::size_t const tileSampleBytes = static_cast<std::size_t>(format.getDepth()) / 8;
            insertSamples(frame, colour.name,
                          {colour.type,
                           guard.getRow(bounds.y0) + colour.component * tileSampleBytes,
                           format.getBytesPerPixel(), static_cast<std::size_t>(tile.getRowBytes())},
                          bounds);
        } else {
            insertSamples(frame, colour.name,
                          {colour.type, planes[index].data(), sampleBytes,
                           sampleBytes * static_cast<std::size_t>(bounds.getWidth())},
                          bounds);
        }
    }
}
