#pragma once

#include "media/ExrStreams.h"

#include <ImfHeader.h>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// One part's header.
struct ExrHeader {
    Imf::Header header; ///< as stored: nothing the library adds
    bool isTiled = false;
    bool isDeep = false;
};

/// The headers of a file and how its pixels lie in it.
struct ExrHeaders {
    int version = 0;               ///< with flags, as stored
    bool hasPartNumbers = false;   ///< each chunk begins with the number of its part
    std::vector<ExrHeader> parts;  ///< at least one
    std::uint64_t tablesStart = 0; ///< where the tables of chunks are in the file, part after part
};

/// Reads and checks the headers before the library takes memory for anything they announce. Throws
/// ImageFileError for what is no EXR file, for damage, and for parts that announce more than
/// `mostBytes` of pixels.
ExrHeaders readExrHeaders(CheckedInput& stream, std::filesystem::path const& file,
                          std::size_t mostBytes);

/// Throws ImageFileError: deep data has no plain pixels.
[[noreturn]] void throwDeep(std::filesystem::path const& file);

/// `"beauty"`, or the number where the part has no name.
std::string namePart(ExrHeaders const& headers, std::size_t part);

/// Rows that are compressed together, or a tile's height.
int rowsPerBlockOf(ExrHeader const& header);

/// Bytes of one pixel in all channels together, sub-sampled ones counted as if they were not.
std::size_t bytesPerPixelOf(Imf::ChannelList const& channels);
