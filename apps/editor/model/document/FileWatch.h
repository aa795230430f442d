#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

/// Notices that files were replaced, written to, moved or removed by anybody. The system tells by a
/// descriptor, which a loop waits for; nothing polls. Where the system has no notices (a folder of
/// another machine), nothing is told. User-interface thread.
class FileWatch {
public:
    FileWatch();
    ~FileWatch();
    FileWatch(FileWatch const&) = delete;
    FileWatch& operator=(FileWatch const&) = delete;

    /// Readable when there is something to read; -1 if there never will be.
    int getDescriptor() const { return descriptor; }

    /// These from now on, and no others.
    void watch(std::vector<std::filesystem::path> const& files);

    /// Which of the files something has happened to since the last call. Never waits.
    std::set<std::filesystem::path> read();

private:
    using Names = std::map<std::string, std::set<std::filesystem::path>>;

    void add(std::filesystem::path const& file, std::filesystem::path const& place);

    int descriptor;
    std::map<int, Names> folders; ///< what is watched in each, by its number
};
