#pragma once

#include "media/ExrChannels.h"
#include "media/ExrChunks.h"
#include "media/ExrHeader.h"
#include "media/ExrZipBlocks.h"
#include "media/MediaOptions.h"
#include "media/MediaSource.h"

#include <ImfForward.h>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

class LumaChromaReader;

/// Reads one layer of an EXR picture. Half and float samples go into the tile without a pass of
/// their own. ImageStrip::furtherChannels is laid out as furtherBytesOf says.
class ExrReader : public MediaSource {
public:
    /// Opens the file, checks it and chooses its channels. Throws ImageFileError.
    ExrReader(std::filesystem::path const& file, ReadOptions const& options);
    ~ExrReader() override;

    ImageInfo const& getInfo() const override { return info; }
    int getRowsPerBlock() const override;
    std::size_t getFurtherBytesPerRow() const override;
    GeRectangle<int> getStripBounds(int index, int rows) const override;
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override;
    void unpackStrip(ImageStrip& strip) const override;

    bool isLuminanceOnly() const override { return colour.kind == ExrColourKind::Luminance; }
    bool hasFurtherChannels() const override { return !further.empty(); }
    std::vector<std::string> listLosses() const override;
    std::optional<FileKind> getKind() const override { return FileKind::Exr; }
    std::vector<std::string> listMetadata(FileKind target) const override;
    void takePlainStrips() override;
    void alignStrips(int rows) override { rowsMultiple = rows; }

    ExrHeader const& getHeader() const { return header; }
    ExrColour const& getColour() const { return colour; }
    std::vector<ExrFurtherChannel> const& getFurtherChannels() const { return further; }

private:
    void describe();
    void openPixels();
    void insertColour(Imf::FrameBuffer& frame, IxTile const& tile) const;
    Imf::FrameBuffer makeFrame(ImageStrip& strip) const;
    void fetchBlocks(GeRectangle<int> const& bounds, std::vector<PackedBlock>& blocks);
    void readRows(Imf::FrameBuffer const& frame, GeRectangle<int> const& bounds);
    void finishColour(IxTile const& tile) const;

    std::filesystem::path path;
    std::unique_ptr<CheckedInput> stream;
    ExrHeader header;
    ExrColour colour;
    std::vector<ExrFurtherChannel> further;
    ImageInfo info;
    StripOrder order = StripOrder::TopToBottom;
    bool bringsFurther = true;
    int rowsMultiple = 1;
    // One of these two, or none where `lumaChroma` reads all there is.
    std::unique_ptr<Imf::InputFile> scanLines;
    std::unique_ptr<Imf::TiledInputFile> tiles;
    std::unique_ptr<LumaChromaReader> lumaChroma;
    std::optional<ExrChunks> chunks;
    /// Set where blocks are unpacked in unpackStrip instead of by `scanLines`.
    std::optional<ExrZipBlocks> zipBlocks;
};
