// Files as OpenEXR reads and writes them, with every error kept.

#include "media/ExrStreams.h"

#include "media/ErrorText.h"
#include "media/HeldFile.h"
#include "media/ImageTarget.h"

#include <IexBaseExc.h>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

CheckedInput::CheckedInput(std::filesystem::path const& file) : Imf::IStream(file.c_str())
{
    int const descriptor = openImageFile(file);
    handle.reset(::fdopen(descriptor, "rb"));
    struct stat status {};
    if (handle == nullptr || ::fstat(descriptor, &status) != 0) {
        int const error = errno;
        if (handle == nullptr) {
            ::close(descriptor);
        }
        throwSystemReadError(error, file);
    }
    size = static_cast<std::uint64_t>(status.st_size);
}

bool CheckedInput::read(char* bytes, int count)
{
    auto const wanted = static_cast<std::size_t>(count);
    errno = 0;
    std::size_t const got = std::fread(bytes, 1, wanted, handle.get());
    position += got;
    if (got != wanted) {
        if (std::ferror(handle.get()) != 0 && systemError == 0) {
            systemError = errno != 0 ? errno : EIO;
        }
        throw Iex::InputExc("unexpected end of file");
    }
    return position < size;
}

void CheckedInput::seekg(std::uint64_t wanted)
{
    // A damaged file announces offsets that no file has.
    if (wanted > size || ::fseeko(handle.get(), static_cast<off_t>(wanted), SEEK_SET) != 0) {
        throw Iex::InputExc("it refers to places beyond its end");
    }
    position = wanted;
}

void CheckedInput::readAt(std::uint64_t offset, std::span<std::byte> bytes)
{
    while (!bytes.empty()) {
        errno = 0;
        ssize_t const got =
            ::pread(::fileno(handle.get()), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            if (got < 0 && systemError == 0) {
                systemError = errno;
            }
            throw Iex::InputExc("unexpected end of file");
        }
        offset += static_cast<std::uint64_t>(got);
        bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
}

void CheckedInput::clear()
{
    std::clearerr(handle.get());
}

CheckedOutput::CheckedOutput(TemporaryFile& temporary)
    : Imf::OStream(temporary.getTarget().c_str()), handle(takeImageStream(temporary)),
      target(temporary.getTarget())
{
}

void CheckedOutput::fail()
{
    if (systemError == 0) {
        systemError = errno != 0 ? errno : EIO;
    }
    throw Iex::IoExc("writing failed");
}

void CheckedOutput::write(char const* bytes, int count)
{
    auto const wanted = static_cast<std::size_t>(count);
    errno = 0;
    if (handle == nullptr || std::fwrite(bytes, 1, wanted, handle.get()) != wanted) {
        fail();
    }
    position += wanted;
}

void CheckedOutput::seekp(std::uint64_t wanted)
{
    errno = 0;
    if (handle == nullptr || ::fseeko(handle.get(), static_cast<off_t>(wanted), SEEK_SET) != 0) {
        fail();
    }
    position = wanted;
}

void CheckedOutput::close()
{
    errno = 0;
    bool const isFlushed = std::fflush(handle.get()) == 0;
    int const flushError = errno;
    bool const isClosed = std::fclose(handle.release()) == 0;
    if (systemError == 0 && !(isFlushed && isClosed)) {
        systemError = !isFlushed && flushError != 0 ? flushError : (errno != 0 ? errno : EIO);
    }
    if (systemError != 0) {
        throwSystemWriteError(systemError, target);
    }
}
