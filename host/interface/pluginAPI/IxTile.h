#pragma once

#include "pluginAPI/IxPixelFormat.h"
#include "primitives/GeRectangle.h"

#include <cstddef>
#include <memory>

/// A rectangle of pixels in one format, held in memory. A tile is a handle: copies share the
/// pixels, which go back to the host's pool of buffers with the last copy. Any thread may copy and
/// release tiles; pixels are reached through IxReadGuard and IxWriteGuard.
class IxTile {
public:
    IxTile() = default;

    /// Takes a buffer for `bounds` (in the picture's pixel coordinates). The pixels are not
    /// cleared. Rows start at multiples of 64 bytes. Throws std::bad_alloc.
    IxTile(IxPixelFormat const& pixelFormat, GeRectangle<int> const& tileBounds);

    /// A tile in memory that is not the host's: row y0 of `tileBounds` starts at `firstRow`, each
    /// next one `rowStep` bytes (which may be negative) further. The memory must outlive all copies
    /// of the tile.
    IxTile(IxPixelFormat const& pixelFormat, GeRectangle<int> const& tileBounds,
           std::byte* firstRow, std::ptrdiff_t rowStep);

    IxPixelFormat const& getPixelFormat() const { return format; }
    GeRectangle<int> const& getBounds() const { return bounds; }
    bool isNull() const { return buffer == nullptr; }

    /// Distance between the starts of two rows, in bytes; not below 0 for the host's own memory.
    std::ptrdiff_t getRowBytes() const { return rowBytes; }

private:
    friend class IxReadGuard;
    friend class IxWriteGuard;

    IxPixelFormat format;
    GeRectangle<int> bounds;
    std::ptrdiff_t rowBytes = 0;
    std::shared_ptr<std::byte> buffer;
};

/// Reading access to a tile's pixels; keeps the tile alive.
class IxReadGuard {
public:
    IxReadGuard() = default;
    explicit IxReadGuard(IxTile const& readTile) : tile(readTile) {}

    IxTile const& getTile() const { return tile; }

    /// First byte of row `y`, which must lie within the tile's bounds.
    std::byte const* getRow(int y) const
    {
        return tile.buffer.get() + static_cast<std::ptrdiff_t>(y - tile.bounds.y0) * tile.rowBytes;
    }

private:
    IxTile tile;
};

/// Writing access to a tile's pixels; keeps the tile alive. One thread writes a row at a time.
class IxWriteGuard {
public:
    explicit IxWriteGuard(IxTile const& writtenTile) : tile(writtenTile) {}

    IxTile const& getTile() const { return tile; }

    /// First byte of row `y`, which must lie within the tile's bounds.
    std::byte* getRow(int y) const
    {
        return tile.buffer.get() + static_cast<std::ptrdiff_t>(y - tile.bounds.y0) * tile.rowBytes;
    }

private:
    IxTile tile;
};
