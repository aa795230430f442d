#include "editor/model/picture/RegionSource.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

int countSteps(int length, int step)
{
    return (length + step - 1) / step;
}

} // namespace

RegionSource::RegionSource(std::shared_ptr<HeldPicture const> heldPicture,
                           GeRectangle<int> const& itsRegion, int itsStep, int blockRows)
    : picture(std::move(heldPicture)), region(itsRegion), step(itsStep), rowsPerBlock(blockRows),
      info(picture->info)
{
    GeRectangle<int> const& whole = picture->info.dataWindow;
    info.dataWindow = step == 1 ? region
                                : GeRectangle<int>{whole.x0, whole.y0,
                                                   whole.x0 + countSteps(region.getWidth(), step),
                                                   whole.y0 + countSteps(region.getHeight(), step)};
}

GeRectangle<int> RegionSource::getStripBounds(int index, int rows) const
{
    GeRectangle<int> const& window = info.dataWindow;
    int const y = window.y0 + index * rows;
    return {window.x0, y, window.x1, std::min(y + rows, window.y1)};
}

void RegionSource::fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip)
{
    if (step > 1) {
        strip.colour = IxTile(info.format, bounds);
        return;
    }
    std::size_t const skipped = static_cast<std::size_t>(region.x0 - picture->info.dataWindow.x0) *
                                info.format.getBytesPerPixel();
    // The tile is only read; the type of its memory is that of tiles that are written, too.
    auto* const first =
        const_cast<std::byte*>(IxReadGuard(picture->pixels).getRow(bounds.y0) + skipped);
    strip.colour = IxTile(info.format, bounds, first, picture->pixels.getRowBytes());
}

void RegionSource::unpackStrip(ImageStrip& strip) const
{
    if (step == 1) {
        return;
    }
    GeRectangle<int> const& bounds = strip.colour.getBounds();
    IxWriteGuard const to(strip.colour);
    IxReadGuard const from(picture->pixels);
    std::size_t const pixelBytes = info.format.getBytesPerPixel();
    // From the middle of each block, so that what is shown does not jump when all are averaged.
    auto const place = [this](int index, int begin, int end) {
        return std::min(begin + index * step + step / 2, end - 1);
    };
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        std::byte const* const source =
            from.getRow(place(y - info.dataWindow.y0, region.y0, region.y1));
        std::byte* target = to.getRow(y);
        for (int x = 0; x < bounds.getWidth(); ++x) {
            int const column = place(x, region.x0, region.x1) - picture->info.dataWindow.x0;
            std::memcpy(target, source + static_cast<std::size_t>(column) * pixelBytes, pixelBytes);
            target += pixelBytes;
        }
    }
}
