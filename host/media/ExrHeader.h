#pragma once

#include "media/ExrStreams.h"

#include <ImfHeader.h>
#include <cstddef>
#include <cstdint>
#include <filesystem>

/// A single-part picture's header and how its pixels lie in the file.
struct ExrHeader {
    Imf::Header header; ///< as stored: nothing the library adds
    bool isTiled = false;
    bool hasPartNumbers = false;  ///< each chunk begins with the number of its part
    std::uint64_t tableStart = 0; ///< where the table of chunks is in the file
};

/// Reads and checks the header before the library takes memory for anything it announces. Throws
/// ImageFileError for what is no EXR file, for deep and many-part files, for damage, and for
/// pictures of more than `mostBytes` of pixels.
ExrHeader readExrHeader(CheckedInput& stream, std::filesystem::path const& file,
                        std::size_t mostBytes);

/// Rows that are compressed together, or a tile's height.
int rowsPerBlockOf(ExrHeader const& header);

/// Bytes of one pixel in all channels together, sub-sampled ones counted as if they were not.
std::size_t bytesPerPixelOf(Imf::ChannelList const& channels);
