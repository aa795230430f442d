#include "shots/ReducedSource.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

/// The first coordinate of the lower resolution that stands for `value` or one after it.
int reduce(int value, int origin, int level)
{
    std::int64_t const step = std::int64_t{1} << level;
    std::int64_t const distance = std::int64_t{value} - origin;
    std::int64_t const steps = distance > 0 ? (distance + step - 1) / step : -(-distance / step);
    return static_cast<int>(origin + steps);
}

int expand(int value, int origin, int level)
{
    std::int64_t const step = std::int64_t{1} << level;
    return static_cast<int>(origin + (std::int64_t{value} - origin) * step);
}

} // namespace

ReducedSource::ReducedSource(ImageSource& source, Section const& imageSection)
    : pixels(source), section(imageSection), info(source.getInfo())
{
    GeRectangle<int> const& origin = section.dataWindow;
    GeRectangle<int>& window = info.dataWindow;
    window.x0 = reduce(window.x0, origin.x0, section.levelX);
    window.x1 = reduce(window.x1, origin.x0, section.levelX);
    window.y0 = reduce(window.y0, origin.y0, section.levelY);
    window.y1 = reduce(window.y1, origin.y0, section.levelY);
}

GeRectangle<int> ReducedSource::getStripBounds(int index, int rows) const
{
    GeRectangle<int> const& window = info.dataWindow;
    int const top = window.y0 + index * rows;
    return {window.x0, top, window.x1, std::min(window.y1 - top, rows) + top};
}

void ReducedSource::fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip)
{
    GeRectangle<int> const& origin = section.dataWindow;
    auto const pixelBytes = info.format.getBytesPerPixel();
    auto const step = pixelBytes << static_cast<unsigned>(section.levelX);
    strip.colour = IxTile(info.format, bounds);
    IxWriteGuard guard(strip.colour);
    int const left = expand(bounds.x0, origin.x0, section.levelX);
    int const right = expand(bounds.x1 - 1, origin.x0, section.levelX) + 1;
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        int const row = expand(y, origin.y0, section.levelY);
        IxTile const tile = pixels.read({left, row, right, row + 1});
        IxReadGuard const read(tile);
        std::byte const* from = read.getRow(row);
        std::byte* to = guard.getRow(y);
        for (int x = bounds.x0; x < bounds.x1; ++x, from += step, to += pixelBytes) {
            std::memcpy(to, from, pixelBytes);
        }
    }
}
