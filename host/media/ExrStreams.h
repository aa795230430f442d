#pragma once

#include <ImfIO.h>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>

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
    /// Opens an existing file and empties it; throws ImageFileError about `target`.
    CheckedOutput(std::filesystem::path const& file, std::filesystem::path const& target);

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
