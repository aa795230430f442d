#include "editor/model/document/UserFolders.h"

#include <cstdlib>

namespace {

constexpr char const* ownFolder = "remapcolor";

std::filesystem::path findFolder(char const* variable, char const* below)
{
    char const* const set = std::getenv(variable);
    if (set != nullptr && std::filesystem::path(set).is_absolute()) {
        return std::filesystem::path(set) / ownFolder;
    }
    char const* const home = std::getenv("HOME");
    bool const hasHome = home != nullptr && std::filesystem::path(home).is_absolute();
    return hasHome ? std::filesystem::path(home) / below / ownFolder : std::filesystem::path();
}

} // namespace

std::filesystem::path getConfigFolder()
{
    return findFolder("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path getStateFolder()
{
    return findFolder("XDG_STATE_HOME", ".local/state");
}

std::filesystem::path getDataFolder()
{
    return findFolder("XDG_DATA_HOME", ".local/share");
}
