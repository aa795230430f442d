#pragma once

#include "media/ExrPlan.h"
#include "media/ExrStreams.h"
#include "runtime/engine/PackedBlocks.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// The outside of an EXR file that is written: headers, the tables of chunks, and the chunks, which
/// may come in any order. One thread at a time; throws what the stream and the library throw.
class ExrContainer {
public:
    /// Writes the headers and keeps room for the tables. `output` lives longer.
    ExrContainer(ExrPlan const& plan, CheckedOutput& output);

    ExrChunkGrid const& getGrid(std::size_t part) const { return parts[part].grid; }

    /// Writes one chunk: where it belongs, its size, its pixels, as the file holds them but for the
    /// number of its part.
    void write(std::size_t part, std::uint64_t chunk, std::span<std::byte const> bytes);

    /// Bytes of a head: where a block belongs and its size.
    std::size_t getHeadBytes(std::size_t part) const;

    /// Fills in the heads of blocks, for which there is room before each.
    void fillHeads(std::size_t part, PackedBlocks& blocks) const;

    /// Writes blocks that lie one after the other, each behind its head.
    void write(std::size_t part, PackedBlocks const& blocks);

    /// Fills in the tables.
    void finish();

private:
    void beginChunk(std::size_t part, std::uint64_t chunk);
    void writeBytes(std::span<std::byte const> bytes);

    struct Part {
        ExrChunkGrid grid;
        std::vector<std::uint64_t> offsets;
    };

    CheckedOutput& stream;
    bool hasPartNumbers;
    std::vector<Part> parts;
    std::uint64_t tables = 0; ///< where they are
};
