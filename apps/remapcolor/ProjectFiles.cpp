// Project files, with failures as the user sees them.

#include "remapcolor/ProjectFiles.h"

#include "remapcolor/Failures.h"
#include "runtime/project/Project.h"

#include <string>
#include <system_error>

namespace {

/// Missing files and folders are the request's fault, everything else is that of the surroundings.
[[noreturn]] void throwSystemFailure(std::string const& action, std::error_code const& reason)
{
    std::string const text = action + ": " + reason.message();
    if (reason == std::errc::no_such_file_or_directory || reason == std::errc::is_a_directory ||
        reason == std::errc::not_a_directory || reason == std::errc::filename_too_long) {
        throw UsageError(text);
    }
    throw SurroundingsError(text);
}

} // namespace

NodeValues loadProject(std::filesystem::path const& file, HostNode const& pattern)
{
    std::string const action = "cannot use the project " + quote(file.string());
    try {
        return readProject(loadTextFile(file), pattern);
    } catch (ProjectError const& error) {
        throw UsageError(action + ": " + error.what());
    } catch (std::system_error const& error) {
        throwSystemFailure(action, error.code());
    }
}

void saveProject(std::filesystem::path const& file, HostNode const& node)
{
    try {
        saveTextFile(file, writeProject(node));
    } catch (std::system_error const& error) {
        throwSystemFailure("cannot write the project " + quote(file.string()), error.code());
    }
}
