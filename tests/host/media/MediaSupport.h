#pragma once

// Pictures made and read without the code under test.

#include "media/ImageFiles.h"

#include <ImathBox.h>
#include <ImfCompression.h>
#include <ImfHeader.h>
#include <ImfLineOrder.h>
#include <ImfPixelType.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// A test with an empty folder of its own.
class MediaTest : public ::testing::Test {
protected:
    MediaTest();
    ~MediaTest() override;

    std::filesystem::path file(std::string const& name) const { return folder / name; }
    /// Names of all files in the folder, hidden ones too.
    std::vector<std::string> listFolder() const;

    std::filesystem::path folder;
};

struct TestChannel {
    std::string name;
    Imf::PixelType type = Imf::HALF;
    int xSampling = 1;
    int ySampling = 1;
};

/// An EXR picture of random bits, NaNs and infinities among them.
struct ExrRecipe {
    std::vector<TestChannel> channels = {{"R"}, {"G"}, {"B"}};
    Imf::Compression compression = Imf::ZIP_COMPRESSION;
    Imf::LineOrder lineOrder = Imf::INCREASING_Y;
    int tileSize = 0; ///< 0 for scan lines
    bool hasLevels = false;
    Imath::Box2i dataWindow{{0, 0}, {36, 52}};
    Imath::Box2i displayWindow{{0, 0}, {36, 52}};
    bool isComplete = true;
};
void writeExr(std::filesystem::path const& file, ExrRecipe const& recipe);

/// The bytes of every channel at full resolution, row after row.
std::map<std::string, std::string> loadExr(std::filesystem::path const& file);

/// Type and value of every attribute as the bytes in the file.
std::map<std::string, std::string> loadAttributes(std::filesystem::path const& file);

std::string loadBytes(std::filesystem::path const& file);
void saveBytes(std::filesystem::path const& file, std::string const& bytes);

/// A PNG file without compression. `samples` are big-endian as the file has them.
enum class PngColour { Grey = 0, Rgb = 2, GreyAlpha = 4, Rgba = 6 };
void writePng(std::filesystem::path const& file, int width, int height, PngColour colour, int bits,
              std::string const& samples);

/// A TIFF file of one strip without compression: 8-bit RGBA with unassociated alpha.
void writeRgbaTiff(std::filesystem::path const& file, int width, int height,
                   std::string const& samples);

/// How a picture is copied with the code under test.
struct CopyOptions {
    std::string layer{};
    IxPixelFormat::Depth depth = IxPixelFormat::COMPLEX; ///< COMPLEX: the source's, kept
    int blocksPerStrip = 2;
};
/// Returns the notes.
std::vector<std::string> copyImage(std::filesystem::path const& from,
                                   std::filesystem::path const& to,
                                   CopyOptions const& options = {});

/// All components of a picture as floats, row after row over its data window.
std::vector<float> loadValues(std::filesystem::path const& file);

/// The text of the ImageFileError that `action` throws; fails if it throws none or the text has
/// several lines.
std::string errorOf(std::function<void()> const& action, ImageFailure expected);
