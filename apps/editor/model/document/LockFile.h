#pragma once

#include <filesystem>
#include <string>

/// A file that one process at a time holds, for as long as it lives: the system lets go of it when
/// the process ends, however it ends, so what a killed one left is no lock. Processes of several
/// containers and machines that share the folder see each other's. The text says who holds it; the
/// file goes away with the holder that ends in order. User-interface thread.
class LockFile {
public:
    LockFile() = default;

    /// Tries to hold the file; see isHeld. Never waits, throws nothing.
    LockFile(std::filesystem::path const& file, std::string const& text);
    ~LockFile();
    LockFile(LockFile&& other) noexcept;
    LockFile& operator=(LockFile&& other) noexcept;

    bool isHeld() const { return descriptor >= 0; }

    /// What the process that holds the file wrote into it; empty if nobody does, or the file cannot
    /// be locked here at all.
    std::string const& getOther() const { return other; }

    void release();

private:
    void open();
    bool isStillNamed() const;
    void write(std::string const& text) const;

    std::filesystem::path path;
    int descriptor = -1;
    std::string other;
};

/// This process as people know it: "process 12 of NAME on HOST, since TIME".
std::string describeThisProcess();
