#pragma once

#include "files/MemoryFile.h"

#include <cstdio>
#include <filesystem>
#include <optional>

/// A hidden file `.NAME.RANDOM.tmp.EXT` beside the file that it is to become. It has the
/// permissions that new files get here, and goes away with the object unless it was published. A
/// symbolic link to a file is followed: what it leads to is replaced, not the link. One thread at a
/// time.
///
/// The name has 64 random bits and the file is made exclusively, so no two processes ever write one
/// file, also where they don't share process numbers; of several that publish to one name, the last
/// one's file stays, whole. What killed processes left is removed by the first later run that
/// writes into the folder: ordinary files of such a name and of the same owner, untouched for a
/// day.
///
/// A file that is to become standard output, "-", lies in memory; publishing it is keeping it there
/// (StandardFiles.h).
class TemporaryFile {
public:
    /// Creates the empty file. Throws FileError where `target` cannot be written.
    explicit TemporaryFile(std::filesystem::path const& target);
    ~TemporaryFile();
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    std::filesystem::path const& getPath() const { return path; }

    /// The file as its user named it.
    std::filesystem::path const& getTarget() const { return target; }

    /// The stream of the very file that was created, to write and read. The caller closes it; once.
    /// Throws FileError.
    std::FILE* takeStream();

    /// Renames the file to its final name. Throws FileError.
    void publish();

private:
    void create();

    std::filesystem::path target;
    std::filesystem::path finalPath;
    std::filesystem::path path;
    int descriptor = -1; ///< until the stream is taken
    bool isPublished = false;
    std::optional<MemoryFile> memory; ///< of standard output
};

/// Checks that a file could be made or replaced at `target`: its folder exists and may be written,
/// and what stands there already is an ordinary file that may be written, or a link to one; or it
/// is standard output. Throws FileError.
void checkTarget(std::filesystem::path const& target);
