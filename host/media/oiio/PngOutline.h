#pragma once

#include <filesystem>

/// What a walk over a PNG file's chunks tells; no pixel is decoded.
struct PngOutline {
    bool isPng = false;            ///< it begins as a PNG file does
    bool isComplete = false;       ///< all chunks up to the last one, IEND, are there
    bool namesColourSpace = false; ///< a chunk before the pixels says what the colours mean
};

/// Never throws for what is in the file; what cannot be read counts as missing. Any thread.
PngOutline outlinePng(std::filesystem::path const& file);
