#pragma once

#include "files/TemporaryFile.h"
#include "media/ExrContainer.h"
#include "media/ExrPartWriter.h"
#include "media/ExrPlan.h"
#include "media/ExrReader.h"
#include "media/MediaOptions.h"
#include "media/MediaReport.h"
#include "runtime/engine/ImageSink.h"

#include <memory>
#include <optional>

/// Writes an EXR picture; see ExrPlan for what of. Parts that are not processed are copied as they
/// are in the file, without being unpacked.
class ExrWriter : public ImageSink {
public:
    /// Begins the file; see createImage. `source` lives longer.
    ExrWriter(std::filesystem::path const& file, ImageSource& source, ResultFormat const& formatOf,
              WriteOptions const& options, MediaReport const& mediaReport);
    ~ExrWriter() override;

    void packStrip(IxTile const& result, ImageStrip& strip) const override;
    void writeStrip(IxTile const& result, ImageStrip const& strip) override;
    void endSection() override;
    void startSection() override;
    void finish() override;

private:
    void pack(IxTile const& result, ImageStrip const& strip, PackedBlocks& blocks) const;
    void report(WriteOptions const& options) const;
    void endPart();
    void copyOtherParts();
    void check() const;

    MediaReport lines;
    TemporaryFile temporary;
    ImageSource& source;
    ExrReader const* reader; ///< `source` if it is one
    ExrPlan plan;
    std::unique_ptr<CheckedOutput> stream;
    std::optional<ExrContainer> container;
    // Of the section that is on.
    std::size_t partNumber = 0;
    std::size_t level = 0;
    std::unique_ptr<ExrPartWriter> part;
    int rowsLeft = 0;
    bool isEnded = false; ///< all sections have come
    bool hasLostColour = false;
};
