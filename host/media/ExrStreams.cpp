// Files as OpenEXR reads and writes them, with every error kept.

#include "media/ExrStreams.h"

#include "media/ErrorText.h"

#include <IexBaseExc.h>
#include <cerrno>
#include <sys/stat.h>

CheckedInput::CheckedInput(std::filesystem::path const& file)
    : Imf::IStream(file.c_str()), handle(std::fopen(file.c_str(), "rbe"))
{
    if (handle == nullptr) {
        int const error = errno;
        throwSystemReadError(error, file);
    }
    struct stat status {};
    if (::fstat(::fileno(handle.get()), &status) != 0) {
        int const error = errno;
        throwSystemReadError(error, file);
    }
    if (!S_ISREG(status.st_mode)) {
        throwReadError(ImageFailure::File, file, "it is not an ordinary file");
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

void CheckedInput::clear()
{
    std::clearerr(handle.get());
}

CheckedOutput::CheckedOutput(std::filesystem::path const& file,
                             std::filesystem::path const& wantedTarget)
    : Imf::OStream(wantedTarget.c_str()), handle(std::fopen(file.c_str(), "wbe")),
      target(wantedTarget)
{
    if (handle == nullptr) {
        int const error = errno;
        throwSystemWriteError(error, target);
    }
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
