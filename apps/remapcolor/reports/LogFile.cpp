#include "remapcolor/reports/LogFile.h"

#include "files/FileError.h"
#include "files/PrintableText.h"
#include "media/ImageFormats.h"
#include "session/Failures.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr mode_t everybodyReadsAndWrites = 0666; // less what the user's mask takes away

/// "2030-01-31T23:59:59Z"
std::string formatNow()
{
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    char text[sizeof("2030-01-31T23:59:59Z")];
    std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

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
    std::string const whole = formatNow() + " " + makePrintable(line) + "\n";
    if (::write(descriptor, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) {
        throw SurroundingsError(describe(file, errno));
    }
}
