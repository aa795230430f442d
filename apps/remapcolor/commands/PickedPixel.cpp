// One pixel out of a picture.

#include "remapcolor/commands/PickedPixel.h"

#include "pluginAPI/IxSampleConversion.h"
#include "runtime/engine/AreaPicker.h"

#include <cstddef>
#include <span>

CoRgbaColorTyped<float> readPixel(ImageSource& source, int x, int y)
{
    ImageStrip strip;
    source.readStrip(findStrip(source, y), strip);
    IxPixelFormat const& format = strip.colour.getPixelFormat();
    IxReadGuard const guard(strip.colour);
    auto const column = static_cast<std::size_t>(x - strip.colour.getBounds().x0);
    CoRgbaColorTyped<float> pixel;
    readPixelRow(format, guard.getRow(y) + column * format.getBytesPerPixel(),
                 std::span(&pixel, 1));
    return pixel;
}
