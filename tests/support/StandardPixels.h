#pragma once

/// Inputs that image arithmetic must survive: one fixed set of odd pixels and endless random ones.

#include "ReferenceTransfer.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference {

/// The values of standardPixels(): ordinary ones, both zeros, denormals, the ends of half and
/// float, infinities and quiet NaNs of several payloads, with both signs.
std::vector<float> standardValues();

/// Each standard value in red, green, blue and alpha alone, beside ordinary neighbours, and in
/// all four at once.
std::vector<Pixel> standardPixels();

/// `count` pixels that depend on `seed` alone, the same on every platform. Each value is drawn
/// on its own: most in or near [0, 1], some up to 65504 of either sign, some any bit pattern
/// (infinities, denormals and quiet NaNs included).
std::vector<Pixel> randomPixels(std::size_t count, std::uint32_t seed);

} // namespace reference
