// Standard input, output and error as the shell left them.

#include "remapcolor/reports/StandardStreams.h"

#include "session/Failures.h"

#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <system_error>
#include <unistd.h>

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

void writeStandardOutput(std::string const& data)
{
    std::string_view rest = data;
    while (!rest.empty()) {
        ssize_t const written = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            return;
        } else if (errno != EINTR) {
            throw SurroundingsError("cannot write to standard output: " +
                                    std::generic_category().message(errno));
        }
    }
}

void writeStandardError(std::string_view text)
{
    static_cast<void>(!::write(STDERR_FILENO, text.data(), text.size()));
}

std::string readStandardInput()
{
    constexpr std::size_t blockBytes = 1 << 16;
    std::string data;
    for (;;) {
        std::size_t const before = data.size();
        data.resize(before + blockBytes);
        ssize_t const count = ::read(STDIN_FILENO, data.data() + before, blockBytes);
        data.resize(before + static_cast<std::size_t>(count > 0 ? count : 0));
        if (count == 0) {
            return data;
        }
        if (count < 0 && errno != EINTR) {
            throw SurroundingsError("cannot read standard input: " +
                                    std::generic_category().message(errno));
        }
    }
}
