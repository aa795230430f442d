#pragma once

#include "OfxAbi.h"
#include "pluginAPI/IxPixelFormat.h"
#include "primitives/CoColor.h"
#include "primitives/GeRectangle.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

/// How an OpenFX image holds a component. Byte and Short stand for 0 to 1.
enum class SampleDepth { Byte, Short, Half, Float };

/// The depth of that OpenFX string, and the other way round. Nothing for any other text.
std::optional<SampleDepth> findDepth(std::string const& text);
char const* nameDepth(SampleDepth depth);

/// The components of that OpenFX string.
std::optional<IxPixelFormat::Components> findComponents(std::string const& text);

/// Pixels in the host's memory. Rows go up: y grows as in OpenFX, and so do the tiles' made from
/// them, which is all the same to a tool that works pixel by pixel.
struct Frame {
    GeRectangle<int> bounds;
    std::byte* firstRow = nullptr; ///< pixel (x0, y0)
    std::ptrdiff_t rowStep = 0;    ///< from a row to the one above; may be negative
    SampleDepth depth = SampleDepth::Float;
    IxPixelFormat::Components components = IxPixelFormat::RGBA;

    std::size_t getBytesPerPixel() const;
    std::byte* getPixel(int x, int y) const
    {
        return firstRow + (static_cast<std::ptrdiff_t>(y) - bounds.y0) * rowStep +
               (static_cast<std::ptrdiff_t>(x) - bounds.x0) *
                   static_cast<std::ptrdiff_t>(getBytesPerPixel());
    }

    /// The format of a tile that lies in this memory: none for Short, nor where samples do not lie
    /// at multiples of their size.
    std::optional<IxPixelFormat> findTileFormat() const;
};

/// The tile format with square pixels that all tiles of the bundle have.
IxPixelFormat makeTileFormat(IxPixelFormat::Components components, IxPixelFormat::Depth depth);

/// Reads pixels as float RGBA: missing alpha is 1, missing colour 0. They lie in the frame.
void readPixels(Frame const& frame, int x, int y, std::span<CoRgbaColorTyped<float>> pixels);

/// Writes them: Byte and Short take NaN as 0, limit to 0 to 1 and round to nearest.
void writePixels(Frame const& frame, int x, int y, std::span<CoRgbaColorTyped<float> const> pixels);

/// Makes pixels transparent black.
void clearPixels(Frame const& frame, GeRectangle<int> const& region);
