#pragma once

#include "files/MemoryFile.h"

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

bool isStandardStream(std::filesystem::path const& file);

/// How people read of a file that is read: its printable name in quotes, or "standard input".
std::string nameInput(std::filesystem::path const& file);

/// The same for one that is written: "standard output".
std::string nameOutput(std::filesystem::path const& file);

/// Standard input and output in the place of files, under the name "-"; a file of that name is
/// "./-". What is read or written as a file is there as a whole, in memory: pictures are read and
/// written in jumps. A process has one; each of its modules has this code, and is given the one.
class StandardFiles {
public:
    static StandardFiles& get();

    /// What get() gives in this module from now on. Before anything else is done here.
    static void share(StandardFiles& ofProcess);

    StandardFiles() = default;
    StandardFiles(StandardFiles const&) = delete;
    StandardFiles& operator=(StandardFiles const&) = delete;

    /// Says how standard input is read to its end; it is, when "-" is first opened. Until this is
    /// called "-" is a file to those who read. Main thread, before any file is opened.
    void offerInput(std::function<MemoryFile()> read);

    /// What standard input had; null where none was offered. Throws what reading it throws. Main
    /// thread until it has been read, any thread then.
    MemoryFile const* openInput();

    /// Keeps what was written to "-" until it is taken. Any thread.
    void keepOutput(MemoryFile written);

    /// What was last written to "-" and has not been taken. Any thread.
    std::optional<MemoryFile> takeOutput();

private:
    std::function<MemoryFile()> readInput;
    std::optional<MemoryFile> input;
    std::mutex mutex;
    std::optional<MemoryFile> output; // locked by mutex
};
