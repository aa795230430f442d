#pragma once

#include "media/ExrChunkGrid.h"
#include "media/ExrCodec.h"
#include "media/ExrMemoryPicture.h"
#include "runtime/engine/PackedBlocks.h"

#include <ImfForward.h>
#include <memory>
#include <vector>

class ExrFrameRows;

/// Packs and unpacks the blocks of a part, several at once: by our own code where that is faster
/// than the library's and no sample is converted, else by the library. Immutable after
/// construction; any thread.
class ExrBlocks {
public:
    explicit ExrBlocks(ExrHeader const& partHeader);

    ExrChunkGrid const& getGrid() const { return grid; }

    /// Rows whose multiples, from a level's top, can be unpacked and packed: whole blocks, in which
    /// channels of fewer rows begin anew.
    int getRowsPerRun(int height) const;

    /// Fills the slices of `frame` from the blocks of the rows in `bounds`, which are a run's. Of
    /// each block, it has been checked that it may hold what it announces. Throws Iex::InputExc for
    /// damage.
    void unpack(PackedBlocks const& blocks, GeRectangle<int> const& bounds,
                Imf::FrameBuffer const& frame) const;

    /// Adds the blocks of a run's rows to `blocks`, in the order in which the file has them, each
    /// with `roomBefore` bytes before it that the caller fills. `frame` has slices for all
    /// channels.
    void pack(Imf::FrameBuffer const& frame, ExrChunkGrid::Level const& level,
              GeRectangle<int> const& bounds, std::size_t roomBefore, PackedBlocks& blocks) const;

private:
    std::vector<std::uint64_t> listBlocks(ExrChunkGrid::Level const& level,
                                          GeRectangle<int> const& bounds) const;
    void unpackByLibrary(PackedBlocks const& blocks, GeRectangle<int> const& bounds,
                         Imf::FrameBuffer const& frame) const;
    std::size_t packOwn(ExrFrameRows const& rows, GeRectangle<int> const& area,
                        std::span<std::byte> room) const;

    Imf::Header header;
    ExrChunkGrid grid;
    std::unique_ptr<ExrCodec const> codec; ///< null where the library packs and unpacks
    ExrMemoryPicture memoryPicture;
};
