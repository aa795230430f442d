// Standard input, output and error as the shell left them.

#include "remapcolor/StandardStreams.h"

#include "remapcolor/Failures.h"

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
        } else if (errno != EINTR) {
            throw SurroundingsError("cannot write to standard output: " +
                                    std::generic_category().message(errno));
        }
    }
}
