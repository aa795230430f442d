#pragma once

#include "media/ExrChannels.h"
#include "media/ExrHeader.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

/// Holds what a header announces against the chunks that the file has for it: blocks of rows, or
/// tiles. The library takes memory for what is announced, and of a block that unpacks to less it
/// hands on whatever was in the memory.
///
/// No chunk can unpack to more than its compression allows, and chunks share no bytes: so the table
/// of where they begin tells whether the file can hold the picture at all. What a block says of
/// itself is looked at when its rows are about to be read. One thread at a time.
class ExrChunks {
public:
    /// Reads the table and checks it. Throws ImageFileError, and what the stream throws. `stream`
    /// lives longer.
    ExrChunks(ExrHeader const& header, CheckedInput& stream, std::filesystem::path const& file);

    /// Who unpacks a block: our own code refuses what does not fill it.
    enum class Unpacker { Library, Own };

    /// Checks the chunks that have the rows `first` to `last`. Throws Iex::InputExc for damage,
    /// ImageFileError for what is missing.
    void checkRows(int first, int last, Unpacker unpacker) const;

private:
    struct Chunk {
        std::uint64_t offset = 0;
        std::uint64_t room = 0; ///< bytes to the next chunk or to the end of the file
    };

    void readTable(std::uint64_t start, std::uint64_t entries);
    std::size_t measureRooms();
    void checkRooms() const;
    [[noreturn]] void throwTooShort() const;
    std::uint64_t headBytes() const;
    std::size_t chunksAcross() const;
    bool isOfFullResolution(std::size_t index) const;
    std::uint64_t rawBytesOf(std::size_t index) const;
    void checkBlock(std::size_t index, Unpacker unpacker) const;

    CheckedInput& stream;
    std::filesystem::path file;
    Imf::Compression compression;
    std::vector<ExrFurtherChannel> channels; ///< all there are
    GeRectangle<int> window;
    bool isTiled;
    bool hasPartNumbers;
    int rowsPerChunk;
    int columnsPerChunk = 0;   ///< a tile's width, or the window's
    std::vector<Chunk> chunks; ///< those of full resolution come first
};
