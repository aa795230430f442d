#pragma once

#include "media/ExrChannels.h"
#include "media/ExrHeader.h"
#include "media/MediaOptions.h"

#include <cstddef>
#include <filesystem>
#include <vector>

/// What of a part is to be processed.
struct ExrSelectedPart {
    std::size_t part = 0;
    std::vector<ExrColour> layers; ///< at least one
    std::vector<ExrFurtherChannel> further;
};

/// Finds what `options` ask for, in the file's order; at least one part. What is asked for is found
/// by its name, whatever its place. Throws ImageFileError where something is not there or cannot
/// be processed.
std::vector<ExrSelectedPart> selectExr(ExrHeaders const& headers, ReadOptions const& options,
                                       std::filesystem::path const& file);
