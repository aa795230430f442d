#pragma once

#include <filesystem>

/// A hidden file `.NAME.PID.tmp.EXT` beside the file that it is to become. It has the permissions
/// that new files get here, and goes away with the object unless it was published. A symbolic link
/// is followed: what it leads to is replaced, not the link. One thread at a time.
class TemporaryFile {
public:
    /// Creates the empty file. Throws ImageFileError where `target` cannot be written.
    explicit TemporaryFile(std::filesystem::path const& target);
    ~TemporaryFile();
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    std::filesystem::path const& getPath() const { return path; }

    /// The file as its user named it.
    std::filesystem::path const& getTarget() const { return target; }

    /// Renames the file to its final name. Throws ImageFileError.
    void publish();

private:
    std::filesystem::path target;
    std::filesystem::path finalPath;
    std::filesystem::path path;
    bool isPublished = false;
};

/// Checks that a file could be made or replaced at `target`: its folder exists and may be written,
/// and what stands there already is an ordinary file that may be written. Throws ImageFileError.
void checkTarget(std::filesystem::path const& target);
