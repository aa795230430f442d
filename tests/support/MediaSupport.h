#pragma once

// Pictures made and read without the code under test.

#include "media/ImageFiles.h"
#include "support/Failures.h"
#include "support/TestFolder.h"

#include <ImathBox.h>
#include <ImfCompression.h>
#include <ImfHeader.h>
#include <ImfLineOrder.h>
#include <ImfPixelType.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// A test with an empty folder of its own.
class MediaTest : public ::testing::Test {
protected:
    ~MediaTest() noexcept override = default;
    std::filesystem::path file(std::string const& name) const { return folder.path / name; }

    TestFolder folder;
};

struct TestChannel {
    std::string name;
    Imf::PixelType type = Imf::HALF;
    int xSampling = 1;
    int ySampling = 1;
};

/// An EXR picture of random bits, NaNs and infinities among them; `values` are the values of half
/// channels that have the same one everywhere.
struct ExrRecipe {
    std::vector<TestChannel> channels = {{"R"}, {"G"}, {"B"}};
    Imf::Compression compression = Imf::ZIP_COMPRESSION;
    Imf::LineOrder lineOrder = Imf::INCREASING_Y;
    int tileSize = 0; ///< 0 for scan lines
    bool hasLevels = false;
    bool hasLevelsOfBoth = false; ///< widths and heights apart
    bool isDeep = false;          ///< of a part of scan lines
    Imath::Box2i dataWindow{{0, 0}, {36, 52}};
    Imath::Box2i displayWindow{{0, 0}, {36, 52}};
    unsigned longestRun = 1; ///< samples that are alike, one after the other
    bool isComplete = true;
    std::map<std::string, float> values{};
    std::function<void(Imf::Header&)> addAttributes = [](Imf::Header&) {};
};
void writeExr(std::filesystem::path const& file, ExrRecipe const& recipe);

/// The same as parts that are called "0", "1" and so on, unless their attributes say otherwise.
void writeParts(std::filesystem::path const& file, std::vector<ExrRecipe> const& recipes);

/// The bytes of every channel of every part at every resolution, as "part/channel/x,y"; of deep
/// parts the packed bytes of every row, as "part/row". Other packed bytes too if asked for, as
/// "part/chunk".
std::map<std::string, std::string> loadParts(std::filesystem::path const& file,
                                             bool isPackedToo = false);

/// What comes before the tables of chunks.
std::string loadHeaders(std::filesystem::path const& file);

/// The bytes of every channel at full resolution, row after row.
std::map<std::string, std::string> loadExr(std::filesystem::path const& file);

/// The value of one of the halves of a channel.
float valueOf(std::string const& halves, std::size_t index);

/// Type and value of every attribute as the bytes in the file.
std::map<std::string, std::string> loadAttributes(std::filesystem::path const& file);

/// A file of any other format, written by OpenImageIO as one with unassociated alpha. `samples` are
/// bytes or words of 16 bit.
using OtherAttributes = std::map<std::string, std::string>;
void writeOther(std::filesystem::path const& file, int width, int channels, int bits,
                std::string const& samples, OtherAttributes const& attributes = {});

/// What OpenImageIO says of a file besides its pixels, numbers as text; and its sample type as
/// "type".
OtherAttributes loadOtherAttributes(std::filesystem::path const& file);

/// How a picture is copied with the code under test.
struct CopyOptions {
    ReadOptions read{};
    IxPixelFormat::Depth depth = IxPixelFormat::COMPLEX; ///< COMPLEX: the source's, kept
    int blocksPerStrip = 2;
    std::optional<CompressionChoice> compression{};
    std::vector<float> colour{}; ///< if any, that of every pixel: red, green, blue
};
/// Returns what was reported: notes as they are, warnings after "warning: ".
std::vector<std::string> copyImage(std::filesystem::path const& from,
                                   std::filesystem::path const& to,
                                   CopyOptions const& options = {});

/// All components of a picture as floats, row after row over its data window.
std::vector<float> loadValues(std::filesystem::path const& file);

/// The text of the ImageFileError that `action` throws; fails if it throws none or the text has
/// several lines.
std::string errorOf(std::function<void()> const& action, ImageFailure expected);
