// Standard input, output and error as the shell left them.

#include "remapcolor/reports/StandardStreams.h"

#include "files/FileError.h"
#include "files/StandardFiles.h"
#include "remapcolor/session/StopSignals.h"
#include "session/Failures.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t fileBlockBytes = std::size_t{1} << 20;

/// How much can be written without waiting where there is room at all.
std::size_t findMostAtOnce()
{
    struct stat status {};
    bool const isFile = ::fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? fileBlockBytes : PIPE_BUF;
}

/// False where a reader closed its pipe.
bool writeAll(std::string_view rest)
{
    std::size_t const most = findMostAtOnce();
    while (!rest.empty()) {
        StopSignals::waitFor(STDOUT_FILENO, POLLOUT);
        ssize_t const written = ::write(STDOUT_FILENO, rest.data(), std::min(rest.size(), most));
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            return false;
        } else if (errno != EINTR && errno != EAGAIN) {
            throw SurroundingsError("cannot write to standard output: " +
                                    describeSystemError(errno));
        }
    }
    return true;
}

} // namespace

void holdStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
            // Takes the lowest free number, which is this one. Never closed.
            static_cast<void>(
                ::open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

void writeStandardOutput(std::string_view data)
{
    static_cast<void>(writeAll(data));
}

void checkStandardOutput(std::filesystem::path const& file)
{
    if (!isStandardStream(file)) {
        return;
    }
    if (::isatty(STDOUT_FILENO) == 1) {
        throw UsageError("standard output is a terminal; redirect it (> FILE) or pipe it into a "
                         "program");
    }
    int const flags = ::fcntl(STDOUT_FILENO, F_GETFL);
    if (flags == -1 || (flags & O_ACCMODE) == O_RDONLY) {
        throw SurroundingsError("cannot write to standard output: it is closed");
    }
}

void sendStandardFile(EarlyEnd end)
{
    std::optional<MemoryFile> const file = StandardFiles::get().takeOutput();
    std::string block(fileBlockBytes, '\0');
    std::size_t done = 0;
    while (std::size_t const count = file.value().read(done, block)) {
        if (!writeAll(std::string_view(block).substr(0, count))) {
            if (end == EarlyEnd::IsEnough) {
                return;
            }
            throw SurroundingsError(
                "cannot write to standard output: who reads it closed it before "
                "the end");
        }
        done += count;
    }
}

void writeStandardError(std::string_view text)
{
    static_cast<void>(!::write(STDERR_FILENO, text.data(), text.size()));
}
