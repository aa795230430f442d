#pragma once

#include "media/ExrChannels.h"
#include "media/ExrChunkGrid.h"
#include "media/ExrHeader.h"
#include "runtime/engine/PackedBlocks.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

/// Holds what a part's header announces against the chunks that the file has for it: blocks of
/// rows, or tiles. The library takes memory for what is announced, and of a block that unpacks to
/// less it hands on whatever was in the memory.
///
/// No chunk can unpack to more than its compression allows, and chunks share no bytes: so the table
/// of where they begin tells whether the file can hold the picture at all. What a block says of
/// itself is looked at when its rows are about to be read. One thread at a time.
class ExrChunks {
public:
    /// Reads the tables of all parts and checks them. Throws ImageFileError, and what the stream
    /// throws. `stream` lives longer.
    static std::vector<ExrChunks> readAll(ExrHeaders const& headers, CheckedInput& stream,
                                          std::filesystem::path const& file);

    ExrChunkGrid const& getGrid() const { return grid; }

    /// Adds the packed pixels of the chunks that have the rows `first` to `last` of a level; what
    /// lies together is read at once. No more of a chunk is read than its samples can take. Throws
    /// Iex::InputExc for damage, ImageFileError for what is missing.
    void readBlocks(ExrChunkGrid::Level const& level, int first, int last,
                    PackedBlocks& blocks) const;

    /// Whether the chunks of level 0 hold all that they announce, which the library does not look
    /// for. Throws as readBlocks.
    void checkBlocks() const;

    /// A chunk as it is in the file, but for the number of its part. Deep ones too. Throws as
    /// readBlocks.
    std::vector<std::byte> readRaw(std::uint64_t chunk) const;

    /// Where in the file what readRaw returns is, of each chunk. Throws as readBlocks.
    struct Extent {
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
    };
    std::vector<Extent> listExtents() const;

    /// The chunks in the order in which they lie in the file.
    std::vector<std::uint64_t> listByPlace() const;

private:
    struct Chunk {
        std::uint64_t offset = 0;
        std::uint64_t room = 0; ///< bytes to the next chunk or to the end of the file
    };

    ExrChunks(ExrHeaders const& headers, std::size_t part, CheckedInput& stream,
              std::filesystem::path const& file);
    void readTable(std::uint64_t start, std::uint64_t end);
    static void measureRooms(std::vector<ExrChunks>& parts, std::uint64_t end);
    void checkRooms() const;
    [[noreturn]] void throwTooShort() const;
    std::uint64_t headBytes() const;
    std::uint64_t rawBytesOf(std::uint64_t index) const;
    Extent extentOf(std::uint64_t index) const;
    std::uint64_t readHead(std::uint64_t index, std::span<std::byte const> head) const;
    std::uint64_t checkHead(std::uint64_t index, std::span<std::byte const> head) const;
    std::uint64_t checkBlock(std::uint64_t index) const;
    std::uint64_t usefulBytesOf(std::uint64_t index) const;

    CheckedInput* stream;
    std::filesystem::path file;
    ExrChunkGrid grid;
    Imf::Compression compression;
    std::vector<ExrFurtherChannel> channels; ///< all there are
    bool isDeep;
    bool hasPartNumbers;
    int number; ///< of the part
    std::vector<Chunk> chunks;
};
