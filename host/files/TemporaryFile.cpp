// Output files that appear under their name only when they are complete.

#include "files/TemporaryFile.h"

#include "files/FileError.h"
#include "files/StandardFiles.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr mode_t everybodyReadsAndWrites = 0666; // less what the user's mask takes away
constexpr std::size_t longestFileName = 255;     // bytes, on every file system that matters here
constexpr std::size_t randomDigits = 16;
constexpr std::string_view mark = ".tmp";
constexpr int mostTries = 100;
constexpr time_t secondsOfADay = 24 * 60 * 60;

/// Where a symbolic link leads.
std::filesystem::path followLink(std::filesystem::path const& target)
{
    std::error_code failure;
    if (!std::filesystem::is_symlink(target, failure)) {
        return target;
    }
    std::filesystem::path const real = std::filesystem::canonical(target, failure);
    if (failure == std::errc::too_many_symbolic_link_levels) {
        throw FileError(FileError::Fault::Request, "it is a link that leads back to itself");
    }
    if (failure == std::errc::no_such_file_or_directory) {
        throw FileError(
            FileError::Fault::Request,
            "it is a link to a file that is not there; remove the link or make the file");
    }
    if (failure) {
        throw FileError(failure.value());
    }
    return real;
}

std::filesystem::path folderOf(std::filesystem::path const& file)
{
    return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

std::string makeRandomDigits()
{
    std::random_device device;
    std::string digits;
    while (digits.size() < randomDigits) {
        digits += "0123456789abcdef"[device() % 16];
    }
    return digits;
}

/// At most `bytes` bytes of UTF-8 text, no letter cut in two.
std::string shorten(std::string text, std::size_t bytes)
{
    if (text.size() > bytes) {
        auto const isWithinLetter = [&text](std::size_t place) {
            return (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U;
        };
        while (bytes > 0 && isWithinLetter(bytes)) {
            --bytes;
        }
        text.resize(bytes);
    }
    return text;
}

std::string makeTemporaryName(std::filesystem::path const& file)
{
    std::string const ending =
        "." + makeRandomDigits() + std::string(mark) + file.extension().string();
    std::size_t const room =
        ending.size() < longestFileName ? longestFileName - ending.size() : longestFileName;
    return shorten("." + file.stem().string(), room) + ending;
}

bool isTemporaryName(std::string const& name)
{
    auto const place = name.rfind(mark);
    if (name.front() != '.' || place == std::string::npos || place < randomDigits + 2) {
        return false;
    }
    std::string_view const rest = std::string_view(name).substr(place + mark.size());
    std::string_view const digits =
        std::string_view(name).substr(place - randomDigits, randomDigits);
    return (rest.empty() || rest.front() == '.') && name[place - randomDigits - 1] == '.' &&
           digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// Removes what killed processes left beside `fresh`, whose time is that of the file system's
/// clock.
void removeAbandoned(std::filesystem::path const& folder, struct stat const& fresh)
{
    static std::mutex mutex;
    static std::set<std::filesystem::path> doneFolders;
    {
        std::lock_guard const lock(mutex);
        if (!doneFolders.insert(folder).second) {
            return; // listing a folder of thousands of frames for each of them would take long
        }
    }
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        struct stat status {};
        bool const isOld = isTemporaryName(entry->path().filename().string()) &&
                           ::lstat(entry->path().c_str(), &status) == 0 &&
                           S_ISREG(status.st_mode) && status.st_uid == fresh.st_uid &&
                           status.st_mtime < fresh.st_mtime - secondsOfADay;
        if (isOld) {
            ::unlink(entry->path().c_str());
        }
    }
}

} // namespace

void checkTarget(std::filesystem::path const& target)
{
    if (isStandardStream(target)) {
        return;
    }
    std::filesystem::path const real = followLink(target);
    std::filesystem::path const folder = folderOf(real);
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored)) {
        throw FileError(FileError::Fault::Request,
                        "the folder \"" + folder.string() + "\" does not exist; make it first");
    }
    std::filesystem::file_status const status = std::filesystem::status(real, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw FileError(FileError::Fault::Request, "something other than a file has that name");
    }
    if (::access(folder.c_str(), W_OK | X_OK) != 0) {
        int const error = errno;
        throw FileError(error);
    }
    if (std::filesystem::exists(status) && ::access(real.c_str(), W_OK) != 0) {
        throw FileError(FileError::Fault::Surroundings,
                        "a file of that name is there and write-protected");
    }
}

TemporaryFile::TemporaryFile(std::filesystem::path const& wantedTarget) : target(wantedTarget)
{
    if (isStandardStream(target)) {
        memory.emplace();
        path = memory->getPath();
        descriptor = ::fcntl(memory->getDescriptor(), F_DUPFD_CLOEXEC, 0);
        if (descriptor < 0) {
            int const error = errno;
            throw FileError(error);
        }
        return;
    }
    checkTarget(target);
    finalPath = followLink(target);
    create();
    struct stat fresh {};
    if (::fstat(descriptor, &fresh) == 0) {
        removeAbandoned(folderOf(finalPath), fresh);
    }
}

void TemporaryFile::create()
{
    for (int tries = 0; descriptor < 0; ++tries) {
        path = folderOf(finalPath) / makeTemporaryName(finalPath);
        descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                            everybodyReadsAndWrites);
        int const error = errno;
        if (descriptor < 0 && (error != EEXIST || tries == mostTries)) {
            throw FileError(error);
        }
    }
}

TemporaryFile::~TemporaryFile()
{
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (!isPublished && !memory.has_value()) {
        ::unlink(path.c_str());
    }
}

std::FILE* TemporaryFile::takeStream()
{
    std::FILE* const stream = ::fdopen(descriptor, "w+b");
    if (stream == nullptr) {
        int const error = errno;
        throw FileError(error);
    }
    descriptor = -1;
    return stream;
}

void TemporaryFile::publish()
{
    if (memory.has_value()) {
        StandardFiles::get().keepOutput(std::move(*memory));
    } else if (::rename(path.c_str(), finalPath.c_str()) != 0) {
        int const error = errno;
        throw FileError(error);
    }
    isPublished = true;
}
