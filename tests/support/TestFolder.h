#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

/// An empty folder of its own for a test, removed with everything in it.
class TestFolder {
public:
    TestFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "remapcolorXXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        path = name;
    }
    ~TestFolder() { std::filesystem::remove_all(path); }
    TestFolder(TestFolder const&) = delete;
    TestFolder& operator=(TestFolder const&) = delete;

    /// Names of all that is in it, hidden files too, sorted.
    std::vector<std::string> list() const
    {
        std::vector<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(path)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::filesystem::path path;
};

inline std::string loadBytes(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void saveBytes(std::filesystem::path const& file, std::string const& bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}
