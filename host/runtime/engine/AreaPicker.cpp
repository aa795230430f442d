// An area of a picture through a chain, summed up.

#include "runtime/engine/AreaPicker.h"

#include "pluginAPI/IxSampleConversion.h"
#include "runtime/engine/DeliveredStrip.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

namespace {

using Pixel = CoRgbaColorTyped<float>;

void add(ChannelSummary& summary, float value)
{
    if (std::isnan(value)) {
        ++summary.nans;
        return;
    }
    if (std::isinf(value)) {
        ++summary.infinities;
        return;
    }
    bool const isFirst = summary.values++ == 0;
    summary.least = isFirst ? value : std::min(summary.least, value);
    summary.greatest = isFirst ? value : std::max(summary.greatest, value);
    summary.mean += value; // the sum until it is finished
}

void addTile(std::array<ChannelSummary, 4>& summaries, IxTile const& tile)
{
    IxReadGuard const guard(tile);
    GeRectangle<int> const& bounds = tile.getBounds();
    std::vector<Pixel> row(static_cast<std::size_t>(bounds.getWidth()));
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        readPixelRow(tile.getPixelFormat(), guard.getRow(y), row);
        for (Pixel const& pixel : row) {
            add(summaries[0], pixel.red);
            add(summaries[1], pixel.green);
            add(summaries[2], pixel.blue);
            add(summaries[3], pixel.alpha);
        }
    }
}

void finish(std::array<ChannelSummary, 4>& summaries)
{
    for (ChannelSummary& summary : summaries) {
        summary.mean = summary.values == 0 ? 0.0 : summary.mean / double(summary.values);
    }
}

/// The part of a strip within `bounds`, as float.
IxTile widen(IxTile const& strip, IxPixelFormat const& format, GeRectangle<int> const& bounds)
{
    IxTile const tile(format, bounds);
    IxWriteGuard const to(tile);
    IxReadGuard const from(strip);
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    std::size_t const skipped = static_cast<std::size_t>(bounds.x0 - strip.getBounds().x0) *
                                strip.getPixelFormat().getBytesPerPixel();
    std::vector<Pixel> row(width);
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        readPixelRow(strip.getPixelFormat(), from.getRow(y) + skipped, row);
        writePixelRow(format, row, to.getRow(y));
    }
    return tile;
}

ImageInfo widenInfo(ImageInfo info)
{
    info.format = IxPixelFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32,
                                info.format.getAspectRatio(), info.format.isPremultiplied());
    return info;
}

} // namespace

GeRectangle<int> findStrip(ImageSource const& source, int row)
{
    int const rows = source.getRowsPerBlock();
    int index = 0;
    GeRectangle<int> bounds = source.getStripBounds(index, rows);
    while (row < bounds.y0 || row >= bounds.y1) {
        bounds = source.getStripBounds(++index, rows);
    }
    return bounds;
}

AreaPicker::AreaPicker(HostNode& node, ImageSource& imageSource, ChainMask const& chainMask)
    : source(imageSource), mask(chainMask),
      start(makeNode<SourceImageNode>(widenInfo(source.getInfo()))),
      chain(castNode<PxImageProtocol const>(node.buildChain(
          PxNodePtr<PxImageProtocol const>(start), PxNodePtr<PxImageProtocol const>(mask.node))))
{
}

AreaSummary AreaPicker::pick(GeRectangle<int> const& area, double time,
                             std::function<void()> const& beforeStrip)
{
    AreaSummary summary;
    ImageStrip strip;
    for (int y = area.y0; y < area.y1;) {
        beforeStrip();
        GeRectangle<int> const rows = findStrip(source, y);
        GeRectangle<int> const bounds = intersect(rows, area);
        source.readStrip(rows, strip);
        IxTile const tile = widen(strip.colour, start->getImageFormat().getPixelFormat(), bounds);
        IxTile const maskTile = mask.feed == nullptr ? IxTile() : mask.feed->read(bounds);
        DeliveredStrip const delivered(*start, tile);
        std::optional<DeliveredStrip> deliveredMask;
        if (!maskTile.isNull()) {
            deliveredMask.emplace(*mask.node, maskTile);
        }
        PxImageResult const result = chain->computeImage(PxImageContext(time, bounds));
        addTile(summary.in, tile);
        addTile(summary.out, result.getTileGuard().getTile());
        y = bounds.y1;
    }
    finish(summary.in);
    finish(summary.out);
    return summary;
}
