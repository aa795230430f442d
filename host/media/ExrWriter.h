#pragma once

#include "files/TemporaryFile.h"
#include "media/ExrReader.h"
#include "media/ExrZipBlocks.h"
#include "media/MediaOptions.h"
#include "media/MediaReport.h"
#include "runtime/engine/ImageSink.h"

#include <ImathVec.h>
#include <ImfForward.h>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Writes an EXR picture. From an EXR source it keeps all but the colour: attributes, windows,
/// tiling, line order, compression (unless another is chosen), names, order and further channels.
/// From another source it makes a picture of R, G, B (and A) with ZIP compression. Samples of a
/// channel's own type are written from the tile without a pass of their own.
class ExrWriter : public ImageSink {
public:
    /// Begins the file; see createImage.
    ExrWriter(std::filesystem::path const& file, ImageSource& source, IxPixelFormat const& format,
              WriteOptions const& options, MediaReport const& mediaReport);
    ~ExrWriter() override;

    void packStrip(IxTile const& result, ImageStrip& strip) const override;
    void writeStrip(IxTile const& result, ImageStrip const& strip) override;
    void finish() override;

private:
    /// A channel that is written from the tile.
    struct ColourChannel {
        std::string name;
        Imf::PixelType type = Imf::HALF;
        std::size_t component = 0; ///< of the tile's format
    };

    void planFromExr(ExrReader const& reader, bool keepsInputDepth);
    void planFromOther(ImageSource const& source);
    void addColour(Imf::ChannelList& channels, ColourChannel const& colour,
                   Imf::Channel const& likeness);
    void reportRecompressed(ExrReader const& reader) const;
    void open(ImageSource& source);
    bool isDirect(ColourChannel const& channel) const;
    void convert(IxTile const& result);
    void insertColour(Imf::FrameBuffer& frame, IxTile const& result) const;
    Imf::FrameBuffer makeFrame(IxTile const& result, ImageStrip const& strip) const;
    void packBlocks(IxTile const& result, ImageStrip const& strip,
                    std::vector<PackedBlock>& blocks) const;
    void writeBlock(PackedBlock const& block);
    void writeBlockTable();
    void writeRows(Imf::FrameBuffer const& frame, GeRectangle<int> const& bounds);
    float luminanceOf(float const* pixel);
    void check() const;

    MediaReport report;
    TemporaryFile temporary;
    IxPixelFormat format;
    Imf::Header header;
    bool isTiled = false;
    bool isPremultiplying = false;
    std::vector<ColourChannel> colours;
    std::vector<ExrFurtherChannel> further;
    /// Set where the first three components end in one channel.
    std::optional<Imath::V3f> luminanceWeights;
    bool hasLostColour = false;
    std::vector<std::vector<std::byte>> planes; ///< of the channels that are not direct
    int rowsLeft = 0;
    std::unique_ptr<CheckedOutput> stream;
    // One of these three; each ends before the stream.
    std::optional<ExrZipBlocks> zipBlocks;
    std::vector<std::uint64_t> blockOffsets; ///< in the file; with zipBlocks
    std::uint64_t blockTable = 0;            ///< where they are stored
    std::unique_ptr<Imf::OutputFile> scanLines;
    std::unique_ptr<Imf::TiledOutputFile> tiles;
};
