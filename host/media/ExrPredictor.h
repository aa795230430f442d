#pragma once

#include <cstddef>
#include <span>

// The order of bytes in which RLE and ZIP blocks are packed: the first bytes of all pairs come
// before the second ones, and each byte is the difference to the one before it, plus 128. Both
// spans have the same even number of bytes, at least two. Any thread.
// Source: "OpenEXR File Layout", of the OpenEXR project.

void predictBytes(std::span<std::byte const> samples, std::span<std::byte> predicted);

/// The inverse; `predicted` is used up.
void restoreBytes(std::span<std::byte> predicted, std::span<std::byte> samples);
