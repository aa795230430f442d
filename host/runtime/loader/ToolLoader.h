#pragma once

#include "base/HostException.h"
#include "pluginAPI/PiToolProtocol.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// A tool library that cannot be used. The text says which and why.
class ToolLoadError : public HostException {
public:
    using HostException::HostException;
};

/// Loads tool libraries at run time, starts their packages and, at the end, shuts everything down
/// in order. One per process at a time; user-interface thread.
class ToolLoader {
public:
    ToolLoader();
    ToolLoader(ToolLoader const&) = delete;
    ToolLoader& operator=(ToolLoader const&) = delete;

    /// Shuts the packages down in reverse order, which lets go of all tools, and unloads the
    /// libraries.
    /// No node of a tool may be left.
    ~ToolLoader();

    /// Loads the library and starts its packages. Throws ToolLoadError: the library is missing or
    /// none, needs something that is not there, announces no package, or fails to start.
    void load(std::filesystem::path const& library);

    /// Loads the library of that file name from findToolFolder. Throws ToolLoadError.
    void find(std::string const& fileName);

    /// The registered tool of that name. Throws ToolLoadError if there is none.
    PiToolProtocol const& getTool(std::string const& name) const;

private:
    struct Close {
        void operator()(void* library) const;
    };

    std::vector<std::unique_ptr<void, Close>> libraries;
};

/// Folders in which tools are looked for, in order: those of the environment's VX_TOOL_PATH
/// (separated by colons), the program's own, and ../lib/vxtools from there.
std::vector<std::filesystem::path> getToolFolders();

/// The first of them that has a library of that file name. Throws ToolLoadError.
std::filesystem::path findToolFolder(std::string const& fileName);
