#include "editor/model/picture/RegionSource.h"

#include <algorithm>
#include <utility>

RegionSource::RegionSource(std::shared_ptr<HeldPicture const> heldPicture,
                           GeRectangle<int> const& region, int blockRows)
    : picture(std::move(heldPicture)), info(picture->info), rowsPerBlock(blockRows)
{
    info.dataWindow = region;
}

GeRectangle<int> RegionSource::getStripBounds(int index, int rows) const
{
    GeRectangle<int> const& window = info.dataWindow;
    int const y = window.y0 + index * rows;
    return {window.x0, y, window.x1, std::min(y + rows, window.y1)};
}

void RegionSource::fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip)
{
    strip.colour = viewOf(picture->pixels, bounds);
}
