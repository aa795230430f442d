#pragma once

#include "media/ImageFiles.h"
#include "media/ImageFormats.h"
#include "media/MediaSource.h"

#include <OpenImageIO/imageio.h>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

/// Reads a picture that is not EXR. 8-bit samples, half and float come as they are, 16-bit integers
/// as v / 65535, everything else as float. One channel is taken as luminance, two as luminance and
/// alpha. Colour of a file with unassociated alpha is not touched.
class OiioReader : public MediaSource {
public:
    /// Opens the file and checks it. Throws ImageFileError.
    OiioReader(std::filesystem::path const& file, ReadOptions const& options,
               MediaNote const& note);
    ~OiioReader() override;

    ImageInfo const& getInfo() const override { return info; }
    int getRowsPerBlock() const override { return rowsPerBlock; }
    GeRectangle<int> getStripBounds(int index, int rows) const override;
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override;

    bool isLuminanceOnly() const override { return isLuminance; }
    bool hasFurtherChannels() const override { return false; } // said at opening
    void takePlainStrips() override {}

    OIIO::ImageSpec const& getSpec() const { return spec; }
    /// The file's kind if it is one that can be written.
    std::optional<FileKind> getKind() const { return kind; }
    /// Significant bits of a sample as stored.
    int getBits() const { return bits; }

private:
    void open();
    void check(std::size_t mostBytes) const;
    void chooseChannels();
    void describe();
    void noteLosses(MediaNote const& note);
    void readRows(int top, int rows);
    void storeRow(std::byte const* samples, std::byte* row) const;

    std::filesystem::path path;
    std::unique_ptr<OIIO::ImageInput> input;
    OIIO::ImageSpec spec;
    std::optional<FileKind> kind;
    OIIO::TypeDesc sampleType; ///< in which the library hands out samples
    std::vector<int> channels; ///< of the file, for each component of a tile
    bool isLuminance = false;
    bool hasAlpha = false;
    int bits = 8;
    ImageInfo info;
    int rowsPerBlock = 1;
    std::vector<std::byte> samples; ///< of one strip, all channels
};
