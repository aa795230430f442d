#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// What the program was called with.
struct CommandLine {
    struct Size {
        int width;
        int height;
    };

    std::vector<std::filesystem::path> files;
    std::filesystem::path screenshot; ///< empty for none
    std::optional<Size> size;
    bool isHelpWanted = false;
    bool isVersionWanted = false;
};

/// Throws UsageError.
CommandLine parseCommandLine(std::vector<std::string> const& words);

extern char const* const commandLineHelp;
