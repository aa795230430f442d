// From float results to what a screen takes.

#include "editor/model/picture/ViewImage.h"

#include "pluginAPI/IxSampleConversion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace {

using Pixel = CoRgbaColorTyped<float>;

IxPixelFormat const screenFormat(IxPixelFormat::RGBA, IxPixelFormat::UINT8, Rational(1, 1), false);

int divideUp(int value, int divisor)
{
    return (value + divisor - 1) / divisor;
}

/// IEC 61966-2-1.
float encodeSrgb(float value)
{
    return value <= 0.0031308F ? 12.92F * value : 1.055F * std::pow(value, 1.0F / 2.4F) - 0.055F;
}

float choose(Pixel const& pixel, ViewTransform::Channels channels)
{
    switch (channels) {
    case ViewTransform::Red: return pixel.red;
    case ViewTransform::Green: return pixel.green;
    case ViewTransform::Blue: return pixel.blue;
    case ViewTransform::Rgb:
    case ViewTransform::Alpha: break;
    }
    return pixel.alpha;
}

void applyView(ViewTransform const& transform, std::span<Pixel> row)
{
    auto const gain = static_cast<float>(std::exp2(transform.exposure));
    bool const hasGain = transform.exposure != 0.0;
    for (Pixel& pixel : row) {
        if (transform.channels != ViewTransform::Alpha) {
            for (float* value : {&pixel.red, &pixel.green, &pixel.blue}) {
                *value = hasGain ? *value * gain : *value;
                *value = transform.isSrgb ? encodeSrgb(*value) : *value;
            }
        }
        if (transform.channels != ViewTransform::Rgb) {
            float const value = choose(pixel, transform.channels);
            pixel = {value, value, value, 1.0F};
        }
    }
}

/// Adds the pixels of a row to the sums of their blocks.
void addToBlocks(std::span<Pixel const> row, int block, std::span<Pixel> sums)
{
    for (std::size_t x = 0; x < row.size(); ++x) {
        Pixel& sum = sums[x / static_cast<std::size_t>(block)];
        sum.red += row[x].red;
        sum.green += row[x].green;
        sum.blue += row[x].blue;
        sum.alpha += row[x].alpha;
    }
}

void divideBlocks(std::span<Pixel> sums, std::size_t rowPixels, int block, int rows)
{
    for (std::size_t index = 0; index < sums.size(); ++index) {
        auto const columns = std::min(static_cast<std::size_t>(block),
                                      rowPixels - index * static_cast<std::size_t>(block));
        float const share = 1.0F / (static_cast<float>(columns) * static_cast<float>(rows));
        Pixel& sum = sums[index];
        sum = {sum.red * share, sum.green * share, sum.blue * share, sum.alpha * share};
    }
}

void writeScreenRow(std::span<Pixel const> row, std::span<std::uint32_t> screen)
{
    std::vector<std::byte> bytes(row.size() * 4);
    writePixelRow(screenFormat, row, bytes.data());
    for (std::size_t x = 0; x < row.size(); ++x) {
        auto const byte = [&](std::size_t component) {
            return std::to_integer<std::uint32_t>(bytes[4 * x + component]);
        };
        screen[x] = 0xff000000U | byte(0) << 16U | byte(1) << 8U | byte(2);
    }
}

} // namespace

ViewImage::ViewImage(GeRectangle<int> const& itsRegion, int itsReduction)
    : region(itsRegion), reduction(itsReduction),
      width(divideUp(itsRegion.getWidth(), itsReduction)),
      height(divideUp(itsRegion.getHeight(), itsReduction)),
      pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
{
}

ViewSink::ViewSink(ViewImage& target, ViewTransform const& viewTransform, Strips kind, int topEdge)
    : image(target), transform(viewTransform), block(kind == Strips::Whole ? target.reduction : 1),
      top(topEdge)
{
}

void ViewSink::packStrip(IxTile const& result, ImageStrip&) const
{
    IxReadGuard const guard(result);
    GeRectangle<int> const& bounds = result.getBounds();
    auto const imageWidth = static_cast<std::size_t>(image.width);
    std::vector<Pixel> row(static_cast<std::size_t>(bounds.getWidth()));
    std::vector<Pixel> blocks(imageWidth);
    for (int y = bounds.y0; y < bounds.y1; y += block) {
        int const rows = std::min(block, bounds.y1 - y);
        std::fill(blocks.begin(), blocks.end(), Pixel{0.0F, 0.0F, 0.0F, 0.0F});
        for (int inBlock = 0; inBlock < rows; ++inBlock) {
            std::span<Pixel> const target = block == 1 ? std::span(blocks) : std::span(row);
            readPixelRow(result.getPixelFormat(), guard.getRow(y + inBlock), target);
            if (block > 1) {
                addToBlocks(row, block, blocks);
            }
        }
        if (block > 1) {
            divideBlocks(blocks, row.size(), block, rows);
        }
        applyView(transform, blocks);
        auto const imageRow = static_cast<std::size_t>((y - top) / block);
        writeScreenRow(blocks, std::span(image.pixels).subspan(imageRow * imageWidth, imageWidth));
    }
}
