#include "editor/model/document/ProjectFile.h"

#include "files/PrintableText.h"
#include "runtime/project/Project.h"
#include "session/Failures.h"
#include "session/ProjectFiles.h"

#include <optional>
#include <utility>

namespace {

/// One for all names that lead to the file.
std::filesystem::path findLock(std::filesystem::path const& file)
{
    std::error_code failure;
    std::filesystem::path const real = std::filesystem::weakly_canonical(file, failure);
    std::filesystem::path const& place = failure ? file : real;
    return place.parent_path() / ("." + place.filename().string() + ".lock");
}

/// Whoever needs the reason why it cannot be read opens it.
std::optional<std::string> readIfThere(std::filesystem::path const& file)
{
    try {
        return loadTextFile(file);
    } catch (std::exception const&) {
        return std::nullopt;
    }
}

} // namespace

ProjectFile::ProjectFile(std::filesystem::path file, std::string knownText)
    : path(std::move(file)), text(std::move(knownText))
{
}

ProjectFile ProjectFile::makeTarget(std::filesystem::path const& file)
{
    return ProjectFile(file, readIfThere(file).value_or(std::string()));
}

void ProjectFile::hold()
{
    if (!path.empty() && !lock.isHeld()) {
        lock = LockFile(findLock(path), describeThisProcess());
    }
}

ProjectFile::State ProjectFile::look() const
{
    std::error_code ignored;
    if (path.empty()) {
        return State::AsKnown;
    }
    if (!std::filesystem::exists(path, ignored)) {
        return State::Gone;
    }
    // What cannot be read says so when it is written to.
    return readIfThere(path).value_or(std::string()) == text ? State::AsKnown : State::Changed;
}

void ProjectFile::save(HostNode const& node, Overwrite what)
{
    hold(); // who had it may have closed it
    if (what == Overwrite::OwnOnly) {
        std::string const name = quote(path.filename().string());
        if (!getOther().empty()) {
            throw SaveConflict(name + " is open in another editor too (" +
                               makePrintable(getOther()) + ")");
        }
        if (look() == State::Changed) {
            throw SaveConflict(name + " has been changed by another program since it was opened");
        }
    }
    std::string saved = writeProject(node);
    saveText(path, "project", saved);
    text = std::move(saved);
}
