#include "shots/MaskWindows.h"

namespace {

/// "512 x 256 at (0, 0)"
std::string formatWindow(GeRectangle<int> const& window)
{
    return std::to_string(window.getWidth()) + " x " + std::to_string(window.getHeight()) +
           " at (" + std::to_string(window.x0) + ", " + std::to_string(window.y0) + ")";
}

} // namespace

std::string describeMaskWindows(ImageInfo const& mask, ImageInfo const& picture)
{
    std::string const pixels = "the mask has pixels in " + formatWindow(mask.dataWindow) +
                               ", the picture in " + formatWindow(picture.dataWindow);
    if (intersect(mask.dataWindow, picture.dataWindow).isEmpty()) {
        return pixels + ": it is 0 everywhere in the picture";
    }
    if (!mask.dataWindow.contains(picture.dataWindow)) {
        return pixels + ": it is 0 outside of its own";
    }
    if (!(mask.dataWindow == picture.dataWindow)) {
        return pixels + ": only the part over the picture is used";
    }
    if (!(mask.displayWindow == picture.displayWindow)) {
        return "the mask shows " + formatWindow(mask.displayWindow) + ", the picture " +
               formatWindow(picture.displayWindow) +
               ": pixels of the same coordinates belong together";
    }
    return "";
}
