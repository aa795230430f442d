#include "runtime/engine/StripWindow.h"

#include "runtime/engine/RenderEngine.h"

#include <cstring>

StripWindow::StripWindow(ImageSource& imageSource)
    : source(imageSource), rowsPerStrip(chooseStripRows(imageSource)),
      nbStrips((imageSource.getInfo().dataWindow.getHeight() + rowsPerStrip - 1) / rowsPerStrip)
{
}

IxTile StripWindow::read(GeRectangle<int> const& bounds)
{
    GeRectangle<int> const covered = intersect(bounds, source.getInfo().dataWindow);
    if (covered.isEmpty()) {
        return {};
    }
    IxTile const tile(source.getInfo().format, covered);
    IxWriteGuard guard(tile);
    if (heldStrip >= 0) {
        copyStrip(guard);
    }
    int const heldBefore = heldStrip;
    for (int index = 0; index < nbStrips; ++index) {
        GeRectangle<int> const candidate = source.getStripBounds(index, rowsPerStrip);
        if (index != heldBefore && !intersect(candidate, covered).isEmpty()) {
            heldStrip = -1; // if reading fails
            source.readStrip(candidate, strip);
            heldStrip = index;
            copyStrip(guard);
        }
    }
    return tile;
}

/// The rows that both have.
void StripWindow::copyStrip(IxWriteGuard& tile) const
{
    GeRectangle<int> const& bounds = tile.getTile().getBounds();
    GeRectangle<int> const rows = intersect(bounds, strip.colour.getBounds());
    std::size_t const pixelBytes = source.getInfo().format.getBytesPerPixel();
    auto const skipped = static_cast<std::size_t>(bounds.x0 - source.getInfo().dataWindow.x0);
    IxReadGuard const from(strip.colour);
    for (int y = rows.y0; y < rows.y1; ++y) {
        std::memcpy(tile.getRow(y), from.getRow(y) + skipped * pixelBytes,
                    static_cast<std::size_t>(bounds.getWidth()) * pixelBytes);
    }
}
