// Standard input as a file.

#include "remapcolor/session/StandardInput.h"

#include "files/FileError.h"
#include "files/StandardFiles.h"
#include "media/ImageFormats.h"
#include "remapcolor/session/StopSignals.h"
#include "session/Failures.h"
#include "shots/MachineLimits.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;
constexpr std::size_t mostOfPictures = 4096 * mebibyte;
constexpr std::size_t mostOfOthers = 64 * mebibyte;

/// What `start` may be the beginning of.
std::size_t findMost(std::string_view start)
{
    return recogniseFileKind(start).has_value() ? std::min(findUsableMemory() / 2, mostOfPictures)
                                                : mostOfOthers;
}

/// What there is by now; nothing at the end.
std::string_view readSome(std::string& block)
{
    for (;;) {
        StopSignals::waitFor(STDIN_FILENO, POLLIN);
        ssize_t const count = ::read(STDIN_FILENO, block.data(), block.size());
        if (count >= 0) {
            return std::string_view(block).substr(0, static_cast<std::size_t>(count));
        }
        if (errno != EINTR && errno != EAGAIN) {
            int const error = errno;
            throw FileError(error);
        }
    }
}

} // namespace

MemoryFile readStandardInput()
{
    MemoryFile file;
    std::string block(mebibyte, '\0');
    std::string start;
    std::size_t size = 0;
    std::size_t most = mostOfOthers;
    for (std::string_view some = readSome(block); !some.empty(); some = readSome(block)) {
        if (start.size() < fileKindBytes) { // pipes may give it byte by byte
            start += some.substr(0, fileKindBytes - start.size());
            most = findMost(start);
        }
        file.append(some);
        size += some.size();
        if (size > most) {
            throw FileError(FileError::Fault::Request, "it goes on after " +
                                                           std::to_string(most / mebibyte) +
                                                           " MiB; write it to a file first");
        }
    }
    if (size == 0) {
        throw FileError(FileError::Fault::Request, "it is empty");
    }
    return file;
}

void refuseTerminal(std::initializer_list<std::filesystem::path> pictures)
{
    bool const isRead = std::any_of(pictures.begin(), pictures.end(), isStandardStream);
    if (isRead && ::isatty(STDIN_FILENO) == 1) {
        throw UsageError("standard input is a terminal; redirect a picture to it (< FILE) or pipe "
                         "one into it");
    }
}
