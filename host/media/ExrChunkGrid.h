#pragma once

#include "media/ExrHeader.h"
#include "primitives/GeRectangle.h"

#include <ImathBox.h>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// A window of a header, which holds its last row and column, as half-open bounds.
GeRectangle<int> toRectangle(Imath::Box2i const& window);

/// How a part's pixels are cut into chunks: blocks of rows, or tiles of one or more levels. Chunks
/// are counted as the file's table lists them: level after level (of a rip map all widths of a
/// height), rows of tiles from the top, tiles from the left. Immutable after construction.
class ExrChunkGrid {
public:
    /// A resolution; a part of scan lines has one.
    struct Level {
        int x = 0; ///< halved so often
        int y = 0;
        GeRectangle<int> window;
        std::uint64_t firstChunk = 0;
        std::uint64_t across = 1; ///< chunks
        std::uint64_t down = 1;
    };

    explicit ExrChunkGrid(ExrHeader const& header);

    std::vector<Level> const& getLevels() const { return levels; }
    std::uint64_t countChunks() const;
    int getRowsPerChunk() const { return rowsPerChunk; }
    bool areTiles() const { return isTiled; }

    Level const& levelOf(std::uint64_t chunk) const;
    GeRectangle<int> boundsOf(std::uint64_t chunk) const;

    /// Of the row of chunks that has row `y` of a level, the first one.
    std::uint64_t firstInRow(Level const& level, int y) const;

    /// The numbers by which a chunk says where it belongs: its first row, or a tile's column, row
    /// and levels.
    std::vector<int> coordinatesOf(std::uint64_t chunk) const;

    /// The inverse, for as many numbers; nothing where there is no such chunk.
    std::optional<std::uint64_t> findChunk(std::array<int, 4> const& coordinates) const;

    std::size_t countCoordinates() const { return isTiled ? 4 : 1; }

private:
    std::vector<Level> levels;
    bool isTiled;
    int rowsPerChunk;
    int columnsPerChunk;
};
