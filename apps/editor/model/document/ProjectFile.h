#pragma once

#include "editor/model/document/LockFile.h"
#include "runtime/graph/HostNode.h"

#include <filesystem>
#include <stdexcept>
#include <string>

/// Saving would take something from somebody else; the text says what. Nothing has been written.
class SaveConflict : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Overwrite { OwnOnly, Anything };

/// The file that a project belongs to: what is known of its contents, and that it is open here, for
/// other editors to see. User-interface thread.
class ProjectFile {
public:
    /// Of a project that has no file yet.
    ProjectFile() = default;

    /// `knownText` is what the file held when it was last seen. Nobody is told yet.
    explicit ProjectFile(std::filesystem::path file, std::string knownText = {});

    /// A file that the user lets be replaced as it is now.
    static ProjectFile makeTarget(std::filesystem::path const& file);

    std::filesystem::path const& getPath() const { return path; }
    std::string const& getText() const { return text; }

    /// Who else has the project open, as they say themselves; empty for nobody.
    std::string const& getOther() const { return lock.getOther(); }

    /// Replaces the file. Throws UsageError and SurroundingsError, and SaveConflict if it was
    /// changed by somebody else or is open elsewhere, unless anything may be overwritten; it is as
    /// it was then.
    void save(HostNode const& node, Overwrite what);

    enum class State { AsKnown, Changed, Gone };
    State look() const;

    /// Says to other editors that it is open here, if it is not open there; and no more.
    void hold();
    void leave() { lock.release(); }

private:
    std::filesystem::path path;
    std::string text;
    LockFile lock;
};
