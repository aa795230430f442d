/// The pixels of one example picture and the writing of them as an OpenEXR file.
#pragma once

#include "vec3.h"

#include <cstddef>
#include <string>
#include <vector>

namespace examples {

/// A pixel as it goes to the file: colour is linear and premultiplied by `alpha`.
struct Pixel {
    Vec3 color;
    double alpha = 1.0;
    double depth = 0.0; ///< Distance along the view axis in scene units.
};

/// Which channels a file gets.
enum class Channels {
    Rgb,   ///< R, G, B as half.
    RgbaZ, ///< R, G, B, A as half and Z as float.
};

/// A rectangle of pixels, row by row from the top, starting black.
class Picture {
public:
    /// `width` and `height` in pixels, both at least 1.
    Picture(int width, int height);

    int width() const { return m_width; }
    int height() const { return m_height; }

    /// `x` in [0, width), `y` in [0, height), y growing downwards; not checked.
    Pixel& at(int x, int y) { return m_pixels[index(x, y)]; }
    Pixel const& at(int x, int y) const { return m_pixels[index(x, y)]; }

private:
    std::size_t index(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
               static_cast<std::size_t>(x);
    }

    int m_width;
    int m_height;
    std::vector<Pixel> m_pixels;
};

/// Writes `picture` to `path` with ZIP compression, replacing a file that is there.
/// Only the attributes every OpenEXR file must have are set, so that equal pixels give equal
/// bytes. Throws a std::exception naming the file when it cannot be written.
void writePicture(Picture const& picture, Channels channels, std::string const& path);

} // namespace examples
