#pragma once

#include "pluginAPI/IxPixelFormat.h"
#include "primitives/CoColor.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Samples and rows between a tile's depth and float. Pure functions; any thread.

/// The half with these bits, exactly; a NaN becomes quiet and keeps its payload.
float halfToFloat(std::uint16_t half);

/// The nearest half, ties to even; beyond 65504 and a rounding step, infinity; a NaN becomes quiet
/// and keeps the upper bits of its payload.
std::uint16_t floatToHalf(float value);

/// NaN gives 0; below 0 and above 1 are limited; value * 255 is rounded to the nearest integer.
std::uint8_t floatToUint8(float value);

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
