// Project files, with failures as the user sees them.

#include "session/ProjectFiles.h"

#include "files/FileError.h"
#include "files/StandardFiles.h"
#include "files/TemporaryFile.h"
#include "runtime/project/Project.h"
#include "session/Failures.h"

#include <string>

namespace {

[[noreturn]] void throwFileFailure(std::string const& action, FileError const& error)
{
    std::string const text = action + ": " + error.what();
    if (error.getFault() == FileError::Fault::Request) {
        throw UsageError(text);
    }
    throw SurroundingsError(text);
}

std::string describeWriting(std::filesystem::path const& file, std::string const& kind)
{
    return "cannot write the " + kind + " " + nameOutput(file);
}

std::string describeUse(std::filesystem::path const& file)
{
    return "cannot use the project " + std::string(isStandardStream(file) ? "from " : "") +
           nameInput(file);
}

} // namespace

NodeValues loadProject(std::filesystem::path const& file, HostNode const& pattern)
{
    return readProjectText(file, loadProjectText(file), pattern);
}

NodeValues readProjectText(std::filesystem::path const& file, std::string const& text,
                           HostNode const& pattern)
{
    try {
        return readProject(text, pattern);
    } catch (ProjectError const& error) {
        throw UsageError(describeUse(file) + ": " + error.what());
    }
}

std::string loadProjectText(std::filesystem::path const& file)
{
    try {
        return loadTextFile(file);
    } catch (FileError const& error) {
        throwFileFailure(describeUse(file), error);
    }
}

void saveProject(std::filesystem::path const& file, HostNode const& node)
{
    saveText(file, "project", writeProject(node));
}

void checkOutput(std::filesystem::path const& file, std::string const& kind)
{
    try {
        checkTarget(file);
    } catch (FileError const& error) {
        throwFileFailure(describeWriting(file, kind), error);
    }
}

void saveText(std::filesystem::path const& file, std::string const& kind, std::string const& text)
{
    try {
        saveTextFile(file, text);
    } catch (FileError const& error) {
        throwFileFailure(describeWriting(file, kind), error);
    }
}
