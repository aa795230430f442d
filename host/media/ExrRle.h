#pragma once

#include <cstddef>
#include <span>

// Runs of equal bytes as EXR files have them: a count of 2 to 127 and the byte that is there once
// more than that, or the negative count of bytes that follow as they are, at most 127. Any thread.
// Source: "OpenEXR File Layout", of the OpenEXR project.

/// Packs `bytes`, which are not none, into `packed`; returns how many it took, 0 where there was no
/// room.
std::size_t packRuns(std::span<std::byte const> bytes, std::span<std::byte> packed);

/// Whether `packed` becomes exactly as many bytes as there are in `bytes`, which it fills.
bool unpackRuns(std::span<std::byte const> packed, std::span<std::byte> bytes);
