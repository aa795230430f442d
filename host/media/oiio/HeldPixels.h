#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

/// Width and height in pixels.
struct AnnouncedSize {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
};

/// The size that a PNG, TIFF, DPX or JPEG file announces, if the file is too short to hold as much
/// in any way that it could be packed; nothing for other files and kinds of packing. No pixel is
/// decoded. Never throws for what is in the file. Any thread.
std::optional<AnnouncedSize> findSizeBeyondFile(std::filesystem::path const& file);

/// Whether a DPX file announces more bytes of a user's own than it has in all, of which the library
/// would end the process. Never throws for what is in the file.
bool hasImpossibleUserData(std::filesystem::path const& file);

/// Whether a strip or tile of a deflated TIFF file ends before its rows do: the library fills the
/// rest with what was in its memory. Unpacks the whole file. Never throws for what is in the file.
bool hasShortBlocks(std::filesystem::path const& file);
