#pragma once

#include "primitives/GeRectangle.h"

#include <filesystem>
#include <string>
#include <vector>

/// What a file says of itself, without its pixels.
struct ChannelDescription {
    std::string name;
    std::string type; ///< half, float, uint, uint8, uint16 and the like
    int xSampling = 1;
    int ySampling = 1;
};

struct AttributeDescription {
    std::string name;
    std::string type; ///< as the format calls it
    std::string value;
};

struct PartDescription {
    std::string name; ///< "" for none
    std::string kind; ///< "scan lines", "tiles 64 x 64", "deep scan lines" and the like
    GeRectangle<int> dataWindow;
    GeRectangle<int> displayWindow;
    std::string compression; ///< "" where the format has one only
    int levels = 1;          ///< resolutions
    std::vector<ChannelDescription> channels;
    std::vector<AttributeDescription> attributes; ///< but for what the other members say
};

struct PictureDescription {
    std::string format; ///< "exr", "png" and the like
    std::vector<PartDescription> parts;
};

/// Reads the headers of a picture of any kind. Main thread; throws ImageFileError.
PictureDescription describePicture(std::filesystem::path const& file);
