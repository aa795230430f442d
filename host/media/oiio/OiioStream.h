#pragma once

#include "files/TemporaryFile.h"

#include <OpenImageIO/filesystem.h>
#include <cstdio>

/// The file that an image library writes to. Some of its writers do not notice a full disk: the
/// first error is kept here and reported by finish(). One thread at a time.
class OiioStream : public OIIO::Filesystem::IOProxy {
public:
    /// Takes the stream of the file; throws ImageFileError.
    explicit OiioStream(TemporaryFile& temporary);
    ~OiioStream() override;

    /// Not "file": the JPEG writer takes everything of that name for the library's own class.
    char const* proxytype() const override { return "checked"; }
    void close() override {} // the writers close early; finish() does it
    bool seek(int64_t offset) override;
    std::size_t read(void* bytes, std::size_t count) override;
    std::size_t write(void const* bytes, std::size_t count) override;
    std::size_t pread(void* bytes, std::size_t count, int64_t offset) override;
    std::size_t pwrite(void const* bytes, std::size_t count, int64_t offset) override;
    std::size_t size() const override { return static_cast<std::size_t>(end); }
    void flush() const override;

    /// Closes the file. Throws ImageFileError if this or anything before it failed.
    void finish();

    /// Error number of the first failed operation, or 0.
    int getSystemError() const { return systemError; }

private:
    void keepError();

    TemporaryFile const& temporary;
    std::FILE* handle = nullptr; // owned
    int64_t end = 0;
    int systemError = 0;
};
