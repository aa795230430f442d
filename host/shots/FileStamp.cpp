#include "shots/FileStamp.h"

#include "files/StandardFiles.h"

#include <sys/stat.h>

FileStamp readFileStamp(std::filesystem::path const& file)
{
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    struct stat status {};
    if (isStandardStream(file) || ::stat(file.c_str(), &status) != 0) {
        return {};
    }
    return {true, status.st_dev, status.st_ino, status.st_size,
            status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec};
}
