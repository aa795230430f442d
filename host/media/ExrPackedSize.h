#pragma once

#include <ImfCompression.h>
#include <cstddef>
#include <cstdint>
#include <span>

/// The most bytes that one packed byte can become. Throws Iex::InputExc for an unknown compression.
std::uint64_t mostExpansion(Imf::Compression compression);

/// Whether the library notices that a block unpacks to less than is announced.
bool isCheckedByLibrary(Imf::Compression compression);

/// Whether such a block, which is not empty, fills `size` bytes; for DWA, whether what it says of
/// its parts could. Where the library checks, the answer is yes. Any thread.
bool fills(std::span<std::byte const> packed, std::uint64_t size, Imf::Compression compression);
