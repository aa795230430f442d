#pragma once

#include "pluginAPI/IxPixelFormat.h"
#include "primitives/CoColor.h"

#include <cstddef>
#include <span>

/// Rows between a tile's format and float RGBA; samples are converted as IxSampleKernels says. Pure
/// functions; any thread.

/// Widens the pixels of a tile's row to float RGBA: missing alpha is 1, missing colour is 0.
/// `row` holds as many pixels of `format` (8, 16 or 32 bit) as `pixels`.
void readPixelRow(IxPixelFormat const& format, std::byte const* row,
                  std::span<CoRgbaColorTyped<float>> pixels);

/// Rounds float RGBA pixels to the format of a tile's row and drops the components it lacks.
void writePixelRow(IxPixelFormat const& format, std::span<CoRgbaColorTyped<float> const> pixels,
                   std::byte* row);

/// Gives the row's alpha the bits of the source's row; both have `format`, and alpha.
void copyAlphaRow(IxPixelFormat const& format, std::byte const* source, std::size_t pixels,
                  std::byte* row);
