#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string_view>

/// A file without a name in any folder. It lives in memory, and no longer than the object. Reading
/// on several threads is safe.
class MemoryFile {
public:
    /// An empty one. Throws FileError.
    MemoryFile();
    ~MemoryFile();
    MemoryFile(MemoryFile&& other) noexcept;
    MemoryFile& operator=(MemoryFile&&) = delete;

    /// Adds to its end. Throws FileError, as where memory runs out.
    void append(std::string_view bytes);

    /// Reads from `offset` on; gives how many bytes there were, 0 behind the end. Throws FileError.
    std::size_t read(std::size_t offset, std::span<char> bytes) const;

    int getDescriptor() const { return descriptor; }

    /// A name for it within this process.
    std::filesystem::path getPath() const;

private:
    int descriptor;
};
