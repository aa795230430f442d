#pragma once

#include "media/ExrBlocks.h"
#include "media/ExrContainer.h"
#include "media/ExrPlan.h"
#include "runtime/engine/ImageSink.h"

#include <ImfForward.h>
#include <atomic>
#include <vector>

/// Turns the strips of a part that is processed into chunks. Samples of a channel's own type are
/// taken from the tile without a pass of their own.
class ExrPartWriter {
public:
    /// `plannedPart` is the one of the number `partNumber` in the file; both live longer.
    ExrPartWriter(ExrPlannedPart const& plannedPart, std::size_t partNumber,
                  ExrContainer const& file);

    /// Rows whose multiples strips have.
    int getRowsPerBlock() const;

    /// Packs a strip of a level. Tiles are `result` and those of further layers in the strip. Any
    /// thread, several at once.
    void pack(IxTile const& result, ImageStrip const& strip, ExrChunkGrid::Level const& level,
              PackedBlocks& blocks) const;

    /// Whether colour came that the part has no channels for.
    bool hasLostColour() const { return isColourLost; }

private:
    /// Samples of the colours that are not direct; empty for the others.
    using Planes = std::vector<std::vector<std::byte>>;

    bool isDirect(ExrPlannedChannel const& channel) const;
    void convert(std::size_t layer, IxTile const& tile, Planes& planes) const;
    void insertColour(Imf::FrameBuffer& frame, IxTile const& result, ImageStrip const& strip,
                      Planes& planes) const;
    float luminanceOf(float const* pixel, Imath::V3f const& weights) const;

    ExrPlannedPart const& part;
    std::size_t number;
    ExrContainer const& container;
    ExrBlocks blockPacker;
    mutable std::atomic<bool> isColourLost = false;
};
