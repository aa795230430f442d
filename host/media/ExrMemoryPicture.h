#pragma once

#include "primitives/GeRectangle.h"

#include <ImfForward.h>
#include <ImfHeader.h>
#include <cstddef>
#include <functional>
#include <span>
#include <vector>

/// A run of whole blocks of a part as a picture of its own in memory: so the library packs and
/// unpacks on any thread, several runs at once, and knows of no file. Immutable after construction.
class ExrMemoryPicture {
public:
    using Blocks = std::vector<std::span<std::byte const>>;

    /// For parts of the like of `header`, with rows or tiles of one level.
    ExrMemoryPicture(Imf::Header const& partHeader, bool isTiledPart);

    /// Unpacks the blocks of `bounds`, from the top and from the left, into `frame`. Throws what
    /// the library throws.
    void unpack(Blocks const& blocks, GeRectangle<int> const& bounds,
                Imf::FrameBuffer const& frame) const;

    /// Packs the pixels in `bounds` and hands the blocks, in the same order, to `take`.
    void pack(Imf::FrameBuffer const& frame, GeRectangle<int> const& bounds,
              std::function<void(Blocks const&)> const& take) const;

private:
    Imf::Header makeHeader(GeRectangle<int> const& bounds) const;
    int countTiles(GeRectangle<int> const& bounds) const;
    void readAll(std::span<std::byte const> file, GeRectangle<int> const& bounds,
                 Imf::FrameBuffer const& frame) const;

    Imf::Header header; ///< of any window
    bool isTiled;
    int blockRows;
    int blockColumns;
};
