// Luminance and chroma, as the OpenEXR library defines and reconstructs them.

#include "media/LumaChroma.h"

#include "media/ExrPartInput.h"

#include <ImfRgbaYca.h>
#include <ImfStandardAttributes.h>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t halfBytes = 2;

std::size_t widthOf(IxTile const& tile)
{
    return static_cast<std::size_t>(tile.getBounds().getWidth());
}

/// Stores pixels in a row of half RGB or RGBA.
void storeRow(std::vector<Imf::Rgba> const& line, std::size_t pixelBytes, std::byte* row)
{
    for (Imf::Rgba const& pixel : line) {
        std::memcpy(row, &pixel, pixelBytes);
        row += pixelBytes;
    }
}

void loadRow(std::byte const* row, std::size_t pixelBytes, std::vector<Imf::Rgba>& line)
{
    for (Imf::Rgba& pixel : line) {
        std::memcpy(static_cast<void*>(&pixel), row, pixelBytes);
        row += pixelBytes;
    }
}

} // namespace

Imath::V3f luminanceWeightsOf(Imf::Header const& header)
{
    if (Imf::hasChromaticities(header)) {
        Imath::V3f const weights = Imf::RgbaYca::computeYw(Imf::chromaticities(header));
        if (std::isfinite(weights.x) && std::isfinite(weights.y) && std::isfinite(weights.z)) {
            return weights;
        }
    }
    return Imf::RgbaYca::computeYw(Imf::Chromaticities());
}

LumaChromaReader::LumaChromaReader(std::unique_ptr<ExrPartInput> part, ExrColour const& colour)
    : stream(std::move(part)), pixels(std::make_unique<Imf::RgbaInputFile>(*stream, colour.layer))
{
    Imath::Box2i const& window = pixels->dataWindow();
    line.resize(static_cast<std::size_t>(window.max.x - window.min.x) + 1);
    // The library counts from pixel (0, 0), which need not lie in memory: formed as a number. A row
    // distance of 0 puts every row at the same place.
    auto const origin = reinterpret_cast<std::uintptr_t>(line.data()) -
                        static_cast<std::uintptr_t>(window.min.x) * sizeof(Imf::Rgba);
    pixels->setFrameBuffer(reinterpret_cast<Imf::Rgba*>(origin), 1, 0);
}

LumaChromaReader::~LumaChromaReader() = default;

void LumaChromaReader::readRows(IxTile const& tile)
{
    IxWriteGuard const guard(tile);
    for (int y = tile.getBounds().y0; y < tile.getBounds().y1; ++y) {
        pixels->readPixels(y);
        storeRow(line, tile.getPixelFormat().getBytesPerPixel(), guard.getRow(y));
    }
}

int LumaChromaReader::getSystemError() const
{
    return stream->getSystemError();
}

void convertFullLumaChroma(IxTile const& tile, Imath::V3f const& weights)
{
    IxWriteGuard const guard(tile);
    std::size_t const pixelBytes = tile.getPixelFormat().getBytesPerPixel();
    std::vector<Imf::Rgba> line(widthOf(tile));
    for (int y = tile.getBounds().y0; y < tile.getBounds().y1; ++y) {
        loadRow(guard.getRow(y), pixelBytes, line);
        Imf::RgbaYca::YCAtoRGBA(weights, static_cast<int>(line.size()), line.data(), line.data());
        storeRow(line, pixelBytes, guard.getRow(y));
    }
}

void spreadLuminance(IxTile const& tile)
{
    IxWriteGuard const guard(tile);
    std::size_t const pixelBytes = tile.getPixelFormat().getBytesPerPixel();
    std::size_t const sampleBytes =
        tile.getPixelFormat().getDepth() == IxPixelFormat::FLOAT16 ? halfBytes : sizeof(float);
    for (int y = tile.getBounds().y0; y < tile.getBounds().y1; ++y) {
        std::byte* pixel = guard.getRow(y);
        for (std::size_t x = 0; x < widthOf(tile); ++x, pixel += pixelBytes) {
            std::memcpy(pixel + sampleBytes, pixel, sampleBytes);
            std::memcpy(pixel + 2 * sampleBytes, pixel, sampleBytes);
        }
    }
}
