#pragma once

#include "base/Rational.h"

#include <cstddef>

/// What a pixel of a tile holds. Components are interleaved in the order red, green, blue, alpha.
class IxPixelFormat {
public:
    /// The value is the code that plug-ins pass; ALPHA is one component.
    enum Components { ALPHA = 1, RGB = 3, RGBA = 4 };

    /// Bits per component. COMPLEX is accepted in a format, but no tile of ours holds it.
    enum Depth { UINT8 = 8, FLOAT16 = 16, FLOAT32 = 32, COMPLEX = 64 };

    IxPixelFormat() = default;

    /// Throws the assertion failure for components or a depth outside their enumeration and for an
    /// aspect ratio (pixel width over height) that is not above 0. `isPremultiplied` says whether
    /// colour has been multiplied by alpha where that is known.
    IxPixelFormat(Components components, Depth depth, Rational const& aspectRatio,
                  bool isPremultiplied);

    Components getComponents() const { return _comps; }
    Depth getDepth() const { return _depth; }
    Rational const& getAspectRatio() const { return aspectRatio; }
    bool isPremultiplied() const { return premultiplied; }

    int getNbComponents() const { return static_cast<int>(_comps); }
    std::size_t getBytesPerPixel() const
    {
        return static_cast<std::size_t>(_comps) * static_cast<std::size_t>(_depth) / 8;
    }
    bool operator==(IxPixelFormat const&) const = default;

private:
    Components _comps = RGBA;
    Depth _depth = FLOAT32;
    Rational aspectRatio;
    bool premultiplied = false;
};
