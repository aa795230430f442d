#include "files/MemoryFile.h"

#include "files/FileError.h"

#include <cerrno>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace {

[[noreturn]] void throwSystemError()
{
    int const error = errno;
    throw FileError(error);
}

} // namespace

MemoryFile::MemoryFile() : descriptor(::memfd_create("remapcolor", MFD_CLOEXEC))
{
    if (descriptor < 0) {
        throwSystemError();
    }
}

MemoryFile::~MemoryFile()
{
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

MemoryFile::MemoryFile(MemoryFile&& other) noexcept
    : descriptor(std::exchange(other.descriptor, -1))
{
}

void MemoryFile::append(std::string_view bytes)
{
    while (!bytes.empty()) {
        ssize_t const count = ::write(descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            throwSystemError();
        }
    }
}

std::size_t MemoryFile::read(std::size_t offset, std::span<char> bytes) const
{
    for (;;) {
        ssize_t const count =
            ::pread(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            throwSystemError();
        }
    }
}

std::filesystem::path MemoryFile::getPath() const
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}
