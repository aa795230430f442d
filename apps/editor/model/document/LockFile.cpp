#include "editor/model/document/LockFile.h"

#include "files/RunningProgram.h"

#include <array>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr mode_t ownerWritesAllRead = 0644;
constexpr std::size_t longestText = 400;

std::string readText(int descriptor)
{
    std::array<char, longestText> text{};
    ssize_t const got = ::pread(descriptor, text.data(), text.size(), 0);
    return {text.data(), got > 0 ? static_cast<std::size_t>(got) : 0};
}

std::string findUserName()
{
    passwd const* const user = ::getpwuid(::getuid());
    return user != nullptr ? user->pw_name : std::to_string(::getuid());
}

std::string describeNow()
{
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%F %H:%M", ::localtime_r(&now, &parts));
    return text.data();
}

} // namespace

LockFile::LockFile(std::filesystem::path const& file, std::string const& text) : path(file)
{
    open();
    // Who ends in order removes the file: what was opened just before is nobody's any more.
    constexpr int mostTries = 10;
    for (int tries = 0; tries < mostTries && descriptor >= 0; ++tries) {
        if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            bool const isOthers = errno == EWOULDBLOCK;
            other = isOthers ? readText(descriptor) : std::string();
            other = isOthers && other.empty() ? "another process" : other;
            ::close(std::exchange(descriptor, -1));
        } else if (isStillNamed()) {
            write(text);
            return;
        } else {
            ::close(std::exchange(descriptor, -1));
            open();
        }
    }
}

LockFile::~LockFile()
{
    release();
}

LockFile::LockFile(LockFile&& from) noexcept
    : path(std::move(from.path)), descriptor(std::exchange(from.descriptor, -1)),
      other(std::move(from.other))
{
}

LockFile& LockFile::operator=(LockFile&& from) noexcept
{
    if (this != &from) {
        release();
        path = std::move(from.path);
        descriptor = std::exchange(from.descriptor, -1);
        other = std::move(from.other);
    }
    return *this;
}

void LockFile::open()
{
    descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                        ownerWritesAllRead);
    if (descriptor < 0 && errno == EACCES) { // another user's: whether it is held can be seen
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    }
}

bool LockFile::isStillNamed() const
{
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// For people only: a full disk makes the lock no weaker.
void LockFile::write(std::string const& text) const
{
    if (::ftruncate(descriptor, 0) == 0) {
        [[maybe_unused]] ssize_t const written =
            ::pwrite(descriptor, text.data(), std::min(text.size(), longestText), 0);
    }
}

void LockFile::release()
{
    if (descriptor >= 0) {
        if (isStillNamed()) {
            ::unlink(path.c_str());
        }
        ::close(std::exchange(descriptor, -1));
    }
}

std::string describeThisProcess()
{
    return "process " + std::to_string(::getpid()) + " of " + findUserName() + " on " +
           findHostName() + ", since " + describeNow();
}
