#pragma once

#include "media/ExrContainer.h"
#include "media/ExrPlan.h"
#include "media/ExrZipBlocks.h"
#include "runtime/engine/ImageSink.h"

#include <ImfForward.h>
#include <memory>
#include <optional>
#include <span>
#include <vector>

class ChunkCatcher;

/// Turns the strips of a part that is processed into chunks. Samples of a channel's own type are
/// taken from the tile without a pass of their own. ZIP blocks are packed here; the library's
/// writers of single parts pack all others, and what they would write becomes chunks.
class ExrPartWriter {
public:
    /// `plannedPart` is the one of the number `partNumber` in the file and lives longer.
    ExrPartWriter(ExrPlannedPart const& plannedPart, std::size_t partNumber);
    ~ExrPartWriter();

    /// Rows whose multiples strips should have; none where it does not matter.
    std::optional<int> getRowsPerBlock() const;

    /// See ImageSink::packStrip. Tiles are `result` and those of further layers in the strip.
    void pack(IxTile const& result, ImageStrip& strip) const;

    /// Writes the rows of a strip of a level to the file. Strips of a level come in the part's line
    /// order, levels in the file's.
    void write(IxTile const& result, ImageStrip const& strip, ExrChunkGrid::Level const& level,
               ExrContainer& container);

    /// Whether colour came that the part has no channels for.
    bool hasLostColour() const { return isColourLost; }

private:
    bool isDirect(ExrPlannedChannel const& channel) const;
    std::vector<PackedBlock> packBlocks(IxTile const& result, ImageStrip const& strip) const;
    void convert(std::size_t layer, IxTile const& tile);
    void insertColour(Imf::FrameBuffer& frame, IxTile const& result, ImageStrip const& strip) const;
    Imf::FrameBuffer makeFrame(IxTile const& result, ImageStrip const& strip) const;
    void writeRows(Imf::FrameBuffer const& frame, GeRectangle<int> const& bounds,
                   ExrChunkGrid::Level const& level);
    float luminanceOf(float const* pixel, Imath::V3f const& weights);

    ExrPlannedPart const& part;
    std::size_t number;
    bool isColourLost = false;
    std::vector<std::vector<std::byte>> planes; ///< of the channels that are not direct
    std::optional<ExrZipBlocks> zipBlocks;
    // Without ZIP blocks, one of the last two; each ends before the first.
    std::unique_ptr<ChunkCatcher> catcher;
    std::unique_ptr<Imf::OutputFile> scanLines;
    std::unique_ptr<Imf::TiledOutputFile> tiles;
};
