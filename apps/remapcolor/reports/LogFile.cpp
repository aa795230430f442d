#include "remapcolor/reports/LogFile.h"

#include "files/FileError.h"
#include "files/PrintableText.h"
#include "files/RunningProgram.h"
#include "media/ImageFormats.h"
#include "session/Failures.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr mode_t everybodyReadsAndWrites = 0666; // less what the user's mask takes away

std::string describe(std::filesystem::path const& file, int error)
{
    return "cannot write the log " + quote(file.string()) + ": " + describeSystemError(error);
}

} // namespace

LogFile::LogFile(std::filesystem::path const& logFile) : file(logFile), descriptor(-1)
{
    if (findFileKind(file).has_value()) {
        throw UsageError("the log " + quote(file.string()) +
                         " has the name of a picture; choose another, such as render.log");
    }
    descriptor =
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, everybodyReadsAndWrites);
    if (descriptor < 0) {
        int const error = errno;
        bool const isWrong = error == ENOENT || error == ENOTDIR || error == EISDIR;
        if (isWrong) {
            throw UsageError(describe(file, error));
        }
        throw SurroundingsError(describe(file, error));
    }
}

LogFile::~LogFile()
{
    ::close(descriptor);
}

void LogFile::add(std::string const& line) const
{
    std::string const whole = formatUniversalTime() + " " + makePrintable(line) + "\n";
    if (::write(descriptor, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) {
        throw SurroundingsError(describe(file, errno));
    }
}
