#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/// Samples of 2 bytes that the Huffman codes of a PIZ block stand for; nothing if they are damaged.
/// The library takes zeros for the codes that a block lacks. Any thread.
std::optional<std::uint64_t> countPizSymbols(std::span<std::byte const> codes);
