#pragma once

#include "files/TemporaryFile.h"

#include <ImfIO.h>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>

/// The low byte of a file's numbers comes first.
template <typename Number>
Number readNumber(std::byte const* bytes)
{
    Number number = 0;
    for (std::size_t index = sizeof(Number); index-- > 0;) {
        number = static_cast<Number>(number << 8U | static_cast<Number>(bytes[index]));
    }
    return number;
}

template <typename Number>
void writeNumber(Imf::OStream& stream, Number number)
{
    char bytes[sizeof(Number)];
    for (char& byte : bytes) {
        byte = static_cast<char>(number & 0xff);
        number >>= 8;
    }
    stream.write(bytes, sizeof(bytes));
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// A file that OpenEXR reads from. Remembers the system's error, which the library's own exceptions
/// lose. One thread at a time; OpenEXR locks where it reads from several.
class CheckedInput : public Imf::IStream {
public:
    /// Opens the file; throws ImageFileError.
    explicit CheckedInput(std::filesystem::path const& file);

    bool read(char* bytes, int count) override;
    std::uint64_t tellg() override { return position; }
    void seekg(std::uint64_t wanted) override;
    void clear() override;

    /// Fills `bytes` from `offset` on, apart from where read() is. Throws Iex::InputExc.
    void readAt(std::uint64_t offset, std::span<std::byte> bytes);

    /// Bytes in the file.
    std::uint64_t getSize() const { return size; }

    /// Error number of the first read that failed for another reason than the file's end, or 0.
    int getSystemError() const { return systemError; }

private:
    std::unique_ptr<std::FILE, FileCloser> handle;
    std::uint64_t position = 0;
    std::uint64_t size = 0;
    int systemError = 0;
};

/// A file that OpenEXR writes to. OpenEXR completes a file in a destructor, which cannot fail, so
/// the first error is kept and reported by close(). One thread at a time.
class CheckedOutput : public Imf::OStream {
public:
    /// Takes the stream of the file; throws ImageFileError about its target.
    explicit CheckedOutput(TemporaryFile& temporary);

    void write(char const* bytes, int count) override;
    std::uint64_t tellp() override { return position; }
    void seekp(std::uint64_t wanted) override;

    /// Writes out what is buffered and closes the file. Throws ImageFileError if this or anything
    /// before it failed.
    void close();

    /// Error number of the first failed operation, or 0.
    int getSystemError() const { return systemError; }

private:
    void fail();

    std::unique_ptr<std::FILE, FileCloser> handle;
    std::filesystem::path target;
    std::uint64_t position = 0;
    int systemError = 0;
};
