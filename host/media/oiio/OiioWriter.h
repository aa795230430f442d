#pragma once

#include "files/TemporaryFile.h"
#include "media/MediaOptions.h"
#include "media/MediaReport.h"
#include "media/OutputDepth.h"
#include "media/oiio/OiioReader.h"
#include "media/oiio/OiioStream.h"
#include "runtime/engine/ImageSink.h"

#include <OpenImageIO/imageio.h>
#include <atomic>
#include <memory>
#include <span>
#include <vector>

/// Closes what was not finished. An output of which that fails is left where it is.
struct OiioOutputCloser {
    void operator()(OIIO::ImageOutput* output) const noexcept;
};

/// Writes PNG, TIFF, JPEG and DPX. These have no windows: they get the display window, what lies
/// outside of the data window 0.
///
/// Alpha: PNG holds colour that is not multiplied by it, so premultiplied colour is divided;
/// TIFF and DPX hold either and keep the source's; JPEG holds none. Colour that was not multiplied
/// at the source is never touched.
///
/// A source of luminance makes a file of luminance; a source of alpha alone a grey picture of it.
class OiioWriter : public ImageSink {
public:
    /// Begins the file; see createImage.
    OiioWriter(std::filesystem::path const& file, ImageSource& source, IxPixelFormat const& format,
               WriteOptions const& options, MediaReport const& mediaReport);
    ~OiioWriter() override;

    void packStrip(IxTile const& result, ImageStrip& strip) const override;
    void writeStrip(IxTile const& result, ImageStrip const& strip) override;
    void finish() override;

private:
    void planChannels(MediaSource const* source);
    void planSamples(ImageSource const& source, bool keepsInputDepth);
    void planAttributes(ImageSource const& source, std::string const& stamp);
    void reportLosses(MediaSource const* source) const;
    void open();
    bool isStraightCopy() const;
    void pack(IxTile const& result, PackedBlocks& packed) const;
    void fillRow(IxTile const& result, int y, std::vector<float>& values, std::byte* row) const;
    void reduceToChannels(std::vector<float>& values, std::size_t pixels) const;
    void storeSamples(std::span<float const> values, std::byte* samples) const;
    void planStrips();
    void writeRows(int rows, std::span<std::byte const> bytes);
    void handOver(int row, std::span<std::byte const> bytes);
    void padTo(int y);
    [[noreturn]] void fail() const;
    void check() const;

    MediaReport report;
    FileKind kind;
    IxPixelFormat format;
    GeRectangle<int> dataWindow;
    GeRectangle<int> displayWindow;
    bool isSourcePremultiplied = false;
    bool isLuminance = false;
    mutable std::atomic<bool> hasLostColour = false; ///< found while strips are packed
    std::size_t channels = 0;                        ///< of the file
    OutputDepth depth;
    OIIO::ImageSpec spec;
    OIIO::ImageSpec sourceSpec;      ///< of a source of the same kind
    int nextRow = 0;                 ///< of the display window, in picture coordinates
    int stripRows = 1;               ///< of the file, that the library is to get at a time
    std::vector<std::byte> gathered; ///< the rows before `nextRow` that it has not got yet
    TemporaryFile temporary;
    OiioStream stream;
    std::unique_ptr<OIIO::ImageOutput, OiioOutputCloser> output; ///< ends before the stream
};
