#pragma once

#include "media/HeldFile.h"
#include "media/ImageFormats.h"
#include "media/MediaOptions.h"
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
    OiioReader(std::filesystem::path const& file, ReadOptions const& options);
    ~OiioReader() override;

    ImageInfo const& getInfo() const override { return info; }
    int getRowsPerBlock() const override
    {
        return alignRows(rowsPerBlock, rowsMultiple, spec.height);
    }
    GeRectangle<int> getStripBounds(int index, int rows) const override;
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override;

    bool isLuminanceOnly() const override { return isLuminance; }
    bool hasFurtherChannels() const override { return false; } // listLosses says so
    std::vector<std::string> listLosses(FileKind) const override { return losses; }
    void takePlainStrips() override {}
    void alignStrips(int rows) override { rowsMultiple = rows; }

    OIIO::ImageSpec const& getSpec() const { return spec; }
    /// Of the picture and of all further ones in the file.
    std::vector<OIIO::ImageSpec> listSpecs() const;
    std::string getFormat() const { return input->format_name(); }
    std::optional<FileKind> getKind() const override { return kind; }
    std::vector<std::string> listMetadata(FileKind target) const override;
    /// Significant bits of a sample as stored.
    int getBits() const { return bits; }

private:
    void open();
    void openByLibrary();
    std::string describeFailure(std::string text) const;
    void check(std::size_t mostBytes) const;
    void chooseChannels();
    void chooseMaskChannel(std::string const& name);
    void describe();
    void findLosses();
    void readRows(int top, int rows);
    void storeRow(std::byte const* samples, std::byte* row) const;

    std::filesystem::path path;
    HeldFile file;
    std::unique_ptr<OIIO::ImageInput> input;
    OIIO::ImageSpec spec;
    std::optional<FileKind> kind;
    OIIO::TypeDesc sampleType; ///< in which the library hands out samples
    std::vector<int> channels; ///< of the file, for each component of a tile
    bool isLuminance = false;
    bool hasAlpha = false;
    int bits = 8;
    std::vector<std::string> losses;
    ImageInfo info;
    int rowsPerBlock = 1;
    int rowsMultiple = 1;
    std::vector<std::byte> samples; ///< of one strip, all channels
};
