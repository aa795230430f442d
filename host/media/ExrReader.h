#pragma once

#include "media/ExrBlocks.h"
#include "media/ExrChannels.h"
#include "media/ExrChunks.h"
#include "media/ExrHeader.h"
#include "media/ExrSelection.h"
#include "media/MediaOptions.h"
#include "media/MediaSource.h"

#include <ImfForward.h>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

class LumaChromaReader;

/// Reads the chosen layers and parts of an EXR picture; every resolution of a part is a section.
/// Half and float samples go into the tile without a pass of their own.
/// ImageStrip::furtherChannels is laid out as furtherBytesOf says.
class ExrReader : public MediaSource {
public:
    /// Opens the file, checks it and chooses its channels. Throws ImageFileError.
    ExrReader(std::filesystem::path const& file, ReadOptions const& options);
    ~ExrReader() override;

    ImageInfo const& getInfo() const override { return info; }
    std::vector<ImageInfo> const& getFurtherLayers() const override { return furtherInfos; }
    std::vector<Section> listSections() const override;
    bool hasNextSection() const override { return sectionIndex + 1 < sections.size(); }
    void startNextSection() override;
    int getRowsPerBlock() const override;
    std::size_t getFurtherBytesPerRow() const override;
    GeRectangle<int> getStripBounds(int index, int rows) const override;
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override;
    void unpackStrip(ImageStrip& strip) const override;

    bool isLuminanceOnly() const override
    {
        return colours().front().kind == ExrColourKind::Luminance;
    }
    bool hasFurtherChannels() const override { return !selected().further.empty(); }
    std::vector<std::string> listLosses(FileKind target) const override;
    std::size_t countPictures() const override;
    std::optional<FileKind> getKind() const override { return FileKind::Exr; }
    std::vector<std::string> listMetadata(FileKind target) const override;
    void takePlainStrips() override;
    void alignStrips(int rows) override { rowsMultiple = rows; }

    std::filesystem::path const& getFile() const { return path; }
    ExrHeaders const& getHeaders() const { return headers; }
    std::vector<ExrSelectedPart> const& getSelection() const { return selection; }
    /// Of every part.
    std::vector<ExrChunks> const& getChunks() const { return chunks; }

    /// Error number that the file met, or 0.
    int getSystemError() const;

    /// What a tile of a layer is like.
    ImageInfo describe(std::size_t part, ExrColour const& colour) const;

    /// A place in the picture: a selected part, and one of its levels.
    struct Place {
        std::size_t selected;
        std::size_t level;
    };
    Place const& getPlace() const { return sections[sectionIndex]; }

private:
    ExrSelectedPart const& selected() const { return selection[getPlace().selected]; }
    std::vector<ExrColour> const& colours() const { return selected().layers; }
    ExrHeader const& partHeader() const { return headers.parts[selected().part]; }
    ExrChunkGrid::Level const& levelAt(Place const& place) const;
    void startSection();
    void openPixels();
    void insertColour(Imf::FrameBuffer& frame, std::size_t layer, IxTile const& tile) const;
    Imf::FrameBuffer makeFrame(ImageStrip& strip) const;
    void finishColours(ImageStrip const& strip) const;

    std::filesystem::path path;
    std::unique_ptr<CheckedInput> stream;
    ExrHeaders headers;
    std::vector<ExrSelectedPart> selection;
    std::vector<ExrChunks> chunks; ///< of every part
    std::vector<Place> sections;
    std::size_t sectionIndex = 0;
    // Of the section that is on.
    ImageInfo info;
    std::vector<ImageInfo> furtherInfos;
    StripOrder order = StripOrder::TopToBottom;
    bool isPlain = false; ///< strips are for a file of another kind
    bool bringsFurther = true;
    int rowsMultiple = 1;
    std::optional<ExrBlocks> blocks;
    std::vector<std::unique_ptr<LumaChromaReader>> lumaChroma; ///< of each layer, or null
};
