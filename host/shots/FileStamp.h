#pragma once

#include <cstdint>
#include <filesystem>
#include <sys/types.h>

/// Which file a name leads to, and in which state: equal as long as nobody replaces the file or
/// writes to it.
struct FileStamp {
    bool isThere = false;
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;
    std::int64_t written = 0; ///< last time of writing, nanoseconds

    bool operator==(FileStamp const& other) const = default;
};

/// Of the file behind `file`, through links; one that is not there if the system gives none, and
/// for standard input. Any
/// thread.
FileStamp readFileStamp(std::filesystem::path const& file);
