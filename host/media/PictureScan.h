#pragma once

#include "media/PictureDescription.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// How many samples of a channel are no finite numbers.
struct ChannelScan {
    std::size_t part = 0;
    std::string name;
    std::uint64_t nbNan = 0;
    std::uint64_t nbInfinite = 0;
};

/// A picture that has been read to its last sample.
struct PictureScan {
    PictureDescription description;
    std::vector<ChannelScan> channels; ///< part after part; none of parts with deep data
};

/// Reads a picture of any kind fully: every channel of every resolution of every part. Of deep
/// parts the packed pixels are read and not unpacked; of other files than EXR the first picture.
/// Main thread; throws ImageFileError for what cannot be read or is incomplete.
PictureScan scanPicture(std::filesystem::path const& file);
