#pragma once

#include <filesystem>
#include <string>

/// A file to which lines with the time before them are added, each in one piece: several processes
/// may write to one file. Main thread.
class LogFile {
public:
    /// Opens the file at its end, or makes it. Throws UsageError for a name that stands for a
    /// picture or lies in a folder that is not there, SurroundingsError for what the system
    /// refuses.
    explicit LogFile(std::filesystem::path const& logFile);
    ~LogFile();
    LogFile(LogFile const&) = delete;
    LogFile& operator=(LogFile const&) = delete;

    /// Throws SurroundingsError when the line cannot be written.
    void add(std::string const& line) const;

private:
    std::filesystem::path file;
    int descriptor;
};
