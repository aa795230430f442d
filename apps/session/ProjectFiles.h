#pragma once

#include "runtime/graph/HostNode.h"

#include <filesystem>
#include <string>

/// The values of a project file for nodes like `pattern`. Throws UsageError for a file that is
/// missing or no project of this tool, SurroundingsError for one that cannot be read.
NodeValues loadProject(std::filesystem::path const& file, HostNode const& pattern);

/// The same for a file that has been read already.
NodeValues readProjectText(std::filesystem::path const& file, std::string const& text,
                           HostNode const& pattern);

/// What the file holds; throws as loadProject does.
std::string loadProjectText(std::filesystem::path const& file);

/// Saves all values of the node; the file appears when it is complete. Throws UsageError for a
/// missing folder, SurroundingsError for what else the system refuses.
void saveProject(std::filesystem::path const& file, HostNode const& node);

/// Throws what saveText would throw for a name that leads nowhere or cannot be written.
void checkOutput(std::filesystem::path const& file, std::string const& kind);

/// The same for any text or bytes; `kind` is what the user calls it.
void saveText(std::filesystem::path const& file, std::string const& kind, std::string const& text);
