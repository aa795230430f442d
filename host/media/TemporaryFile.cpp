// Output files that appear under their name only when they are complete.

#include "media/TemporaryFile.h"

#include "media/ErrorText.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t everybodyReadsAndWrites = 0666; // less what the user's mask takes away
constexpr std::size_t longestFileName = 255;     // bytes, on every file system that matters here

std::filesystem::path followLink(std::filesystem::path const& target)
{
    std::error_code ignored;
    if (!std::filesystem::is_symlink(target, ignored)) {
        return target;
    }
    std::filesystem::path const real = std::filesystem::weakly_canonical(target, ignored);
    return ignored ? target : real;
}

std::filesystem::path folderOf(std::filesystem::path const& file)
{
    return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

std::filesystem::path temporaryName(std::filesystem::path const& file)
{
    std::string const ending =
        "." + std::to_string(::getpid()) + ".tmp" + file.extension().string();
    std::string stem = "." + file.stem().string();
    if (stem.size() + ending.size() > longestFileName && ending.size() < longestFileName) {
        stem.resize(longestFileName - ending.size());
    }
    return folderOf(file) / (stem + ending);
}

} // namespace

void checkTarget(std::filesystem::path const& target)
{
    std::filesystem::path const real = followLink(target);
    std::filesystem::path const folder = folderOf(real);
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored)) {
        throwWriteError(ImageFailure::Request, target,
                        "the folder \"" + folder.string() + "\" does not exist; make it first");
    }
    std::filesystem::file_status const status = std::filesystem::status(real, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throwWriteError(ImageFailure::Request, target, "something other than a file has that name");
    }
    if (::access(folder.c_str(), W_OK | X_OK) != 0) {
        int const error = errno;
        throwSystemWriteError(error, target);
    }
    if (std::filesystem::exists(status) && ::access(real.c_str(), W_OK) != 0) {
        throwWriteError(ImageFailure::Surroundings, target,
                        "a file of that name is there and write-protected");
    }
}

TemporaryFile::TemporaryFile(std::filesystem::path const& wantedTarget)
    : target(wantedTarget), finalPath(followLink(wantedTarget)), path(temporaryName(finalPath))
{
    checkTarget(target);
    ::unlink(path.c_str()); // left behind by a process of the same number that was killed
    int const descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, everybodyReadsAndWrites);
    if (descriptor < 0) {
        int const error = errno;
        throwSystemWriteError(error, target);
    }
    ::close(descriptor);
}

TemporaryFile::~TemporaryFile()
{
    if (!isPublished) {
        ::unlink(path.c_str());
    }
}

void TemporaryFile::publish()
{
    if (::rename(path.c_str(), finalPath.c_str()) != 0) {
        int const error = errno;
        throwSystemWriteError(error, target);
    }
    isPublished = true;
}
