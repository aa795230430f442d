#pragma once

#include "media/ImageFormats.h"

#include <filesystem>
#include <optional>

/// As openOrdinaryFile, with failures as ImageFileError.
int openImageFile(std::filesystem::path const& file);

/// The kind that the file's first bytes announce. Throws ImageFileError where it cannot be read.
std::optional<FileKind> readFileKind(std::filesystem::path const& file);

/// A picture's file kept open for a library that opens files by name: wherever the name leads by
/// now, `getPath` leads to the file that was opened.
class HeldFile {
public:
    /// Throws ImageFileError.
    explicit HeldFile(std::filesystem::path const& file);
    ~HeldFile();
    HeldFile(HeldFile const&) = delete;
    HeldFile& operator=(HeldFile const&) = delete;

    std::filesystem::path const& getPath() const { return path; }

private:
    int descriptor;
    std::filesystem::path path;
};
