#pragma once

#include <ImfPixelType.h>
#include <cstddef>
#include <span>
#include <vector>

// What PXR24 deflates of a block: row after row, channel after channel, the differences of samples
// to those before them, the first bytes of all samples before the second ones and so on. A float
// has lost its lowest byte then. Any thread.
// Source: "OpenEXR File Layout" and the library's own format, of the OpenEXR project.

/// Of `width` samples of each channel.
std::size_t pxr24BytesPerRow(std::vector<Imf::PixelType> const& types, std::size_t width);

/// Both ways for whole rows; `samples` are as large as the rows, `planes` as pxr24BytesPerRow says.
void toPxr24(std::vector<Imf::PixelType> const& types, std::size_t width,
             std::span<std::byte const> samples, std::span<std::byte> planes);
void fromPxr24(std::vector<Imf::PixelType> const& types, std::size_t width,
               std::span<std::byte const> planes, std::span<std::byte> samples);
