// One pixel out of a picture.

#include "remapcolor/PickedPixel.h"

#include "pluginAPI/IxSampleConversion.h"
#include "remapcolor/Failures.h"
#include "remapcolor/PickRequest.h"

#include <cstddef>
#include <span>

namespace {

std::string formatPlace(int x, int y)
{
    return std::to_string(x) + "," + std::to_string(y);
}

/// The strip that the row lies in; strips come in the picture's own order.
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

} // namespace

CoRgbaColorTyped<float> readPixel(ImageSource& source, PixelPlace const& place,
                                  std::string const& name)
{
    GeRectangle<int> const& window = source.getInfo().dataWindow;
    if (!window.contains({place.x, place.y, place.x, place.y}) || place.x == window.x1 ||
        place.y == window.y1) {
        throw UsageError("there is no pixel " + formatPlace(place.x, place.y) + " in " +
                         quote(name) + ", which goes from " + formatPlace(window.x0, window.y0) +
                         " to " + formatPlace(window.x1 - 1, window.y1 - 1));
    }
    ImageStrip strip;
    source.readStrip(findStrip(source, place.y), strip);
    IxPixelFormat const& format = strip.colour.getPixelFormat();
    IxReadGuard const guard(strip.colour);
    auto const column = static_cast<std::size_t>(place.x - strip.colour.getBounds().x0);
    CoRgbaColorTyped<float> pixel;
    readPixelRow(format, guard.getRow(place.y) + column * format.getBytesPerPixel(),
                 std::span(&pixel, 1));
    return pixel;
}
