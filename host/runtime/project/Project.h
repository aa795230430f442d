#pragma once

#include "base/HostException.h"
#include "runtime/graph/HostNode.h"

#include <filesystem>
#include <string>
#include <vector>

/// A project that cannot be used. The text names the place within it and what is wrong there.
class ProjectError : public HostException {
public:
    using HostException::HostException;
};

/// The project of a node as JSON text: every value, in the order of the tool's description. Saving
/// and loading loses nothing: numbers keep every bit.
///
///   {"format": "remap-color-project", "version": 1, "tool": NAME, "schema": NUMBER,
///    "values": {NAME: VALUE, ...}}
///
/// VALUE is a number, a boolean, an enumeration's label, a list of finite numbers, a curve
/// {"points": [[x, y], ... three per key]}, or keyframes {"keys": [[time, VALUE], ...]}.
/// User-interface thread.
std::string writeProject(HostNode const& node);

/// The same with these of its values only.
std::string writeProject(HostNode const& node, std::vector<std::string> const& names);

/// The values that a project's text names. `pattern` is a node of the tool that the project is for;
/// it is only asked what values there are. Throws ProjectError for text that is no such project,
/// another tool or schema, a newer version, unknown or repeated names, and values that the tool
/// does not accept.
NodeValues readProject(std::string const& text, HostNode const& pattern);

/// Writes text to a file that appears under its name only when it is complete. A symbolic link is
/// followed: what it leads to is replaced, not the link. Throws FileError.
void saveTextFile(std::filesystem::path const& file, std::string const& text);

/// The whole of a file. Throws FileError.
std::string loadTextFile(std::filesystem::path const& file);
