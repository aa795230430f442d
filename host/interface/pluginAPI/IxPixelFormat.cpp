#include "pluginAPI/IxPixelFormat.h"

#include "base/Assertions.h"

IxPixelFormat::IxPixelFormat(Components components, Depth depth, Rational const& ratio,
                             bool isPremultiplied)
    : _comps(components), _depth(depth), aspectRatio(ratio), premultiplied(isPremultiplied)
{
    Assertions::check(_comps == ALPHA || _comps == RGB || _comps == RGBA,
                      "_comps == ALPHA || _comps == RGB || _comps == RGBA");
    Assertions::check(_depth == UINT8 || _depth == FLOAT16 || _depth == FLOAT32 ||
                          _depth == COMPLEX,
                      "_depth == UINT8 || _depth == FLOAT16 || _depth == FLOAT32 || "
                      "_depth == COMPLEX");
    Assertions::check(aspectRatio.getFloat() > 0.F, "aspectRatio.getFloat() is greater than 0.F");
}
