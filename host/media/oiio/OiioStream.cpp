// The file under OpenImageIO's writers, with every error kept.

#include "media/oiio/OiioStream.h"

#include "media/ErrorText.h"
#include "media/ImageTarget.h"

#include <algorithm>
#include <cerrno>

OiioStream::OiioStream(TemporaryFile& temporaryFile)
    : IOProxy(temporaryFile.getTarget().filename().string(), Write), temporary(temporaryFile),
      handle(takeImageStream(temporaryFile))
{
}

OiioStream::~OiioStream()
{
    if (handle != nullptr) {
        std::fclose(handle);
    }
}

void OiioStream::keepError()
{
    if (systemError == 0) {
        systemError = errno != 0 ? errno : EIO;
    }
}

bool OiioStream::seek(int64_t offset)
{
    errno = 0;
    if (::fseeko(handle, offset, SEEK_SET) != 0) {
        keepError();
        return false;
    }
    m_pos = offset;
    return true;
}

std::size_t OiioStream::read(void* bytes, std::size_t count)
{
    // A stream that turns from writing to reading needs a seek in between, and back.
    if (!seek(m_pos)) {
        return 0;
    }
    std::size_t const got = std::fread(bytes, 1, count, handle);
    seek(m_pos + static_cast<int64_t>(got));
    return got;
}

std::size_t OiioStream::write(void const* bytes, std::size_t count)
{
    errno = 0;
    std::size_t const done = std::fwrite(bytes, 1, count, handle);
    if (done != count) {
        keepError();
    }
    m_pos += static_cast<int64_t>(done);
    end = std::max(end, m_pos);
    return done;
}

std::size_t OiioStream::pread(void* bytes, std::size_t count, int64_t offset)
{
    int64_t const before = m_pos;
    std::size_t const got = seek(offset) ? read(bytes, count) : 0;
    seek(before);
    return got;
}

std::size_t OiioStream::pwrite(void const* bytes, std::size_t count, int64_t offset)
{
    int64_t const before = m_pos;
    std::size_t const done = seek(offset) ? write(bytes, count) : 0;
    seek(before);
    return done;
}

void OiioStream::flush() const
{
    std::fflush(handle); // finish() finds out what could not be written
}

void OiioStream::finish()
{
    errno = 0;
    if (std::fflush(handle) != 0 || std::ferror(handle) != 0) {
        keepError();
    }
    std::FILE* const closing = handle;
    handle = nullptr;
    if (std::fclose(closing) != 0) {
        keepError();
    }
    if (systemError != 0) {
        throwSystemWriteError(systemError, temporary.getTarget());
    }
}
