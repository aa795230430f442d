#pragma once

#include <ImfCompression.h>
#include <cstddef>
#include <cstdint>
#include <span>

/// The most bytes that one packed byte can become. Throws Iex::InputExc for an unknown compression.
std::uint64_t mostExpansion(Imf::Compression compression);

/// A block does not become what the header announces. Throws Iex::InputExc.
[[noreturn]] void throwDamagedBlock();

/// Throws so unless a block fills `size` bytes, which may be none; of DWA, unless what it says of
/// its parts could. Says nothing where the library notices that a block unpacks to less than is
/// announced. Any thread.
void checkFills(std::span<std::byte const> packed, std::uint64_t size,
                Imf::Compression compression);
