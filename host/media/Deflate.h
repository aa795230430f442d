#pragma once

#include <cstddef>
#include <span>

// Deflate with the zlib head and check sum, by a faster library than most that read and write files
// use themselves. What a thread needs for it is made once. Any thread; throws std::bad_alloc.

/// Packs `bytes` into `packed`; returns how many it took, 0 where there was no room. `level` is
/// that of zlib, 1 to 9.
std::size_t deflateBytes(std::span<std::byte const> bytes, std::span<std::byte> packed, int level);

/// Whether `packed` becomes exactly as many bytes as there are in `bytes`, which it fills.
bool inflateBytes(std::span<std::byte const> packed, std::span<std::byte> bytes);
