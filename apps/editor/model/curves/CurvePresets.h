#pragma once

#include "editor/model/document/Document.h"
#include "editor/model/document/NodeCopy.h"

#include <array>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

/// Curves that are kept by name in a folder of the user's: for each preset a project file that
/// holds curves only. Others may change the folder meanwhile. User-interface thread.
class CurvePresets {
public:
    using Curves = std::array<CurvePoints, ControllerLink::nbChannels>;

    struct Preset {
        std::string name;
        Curves curves;
    };

    /// The folder need not be there.
    CurvePresets(Document& itsDocument, std::filesystem::path itsFolder);

    /// Those that can be used, by name. A file with keyframes counts as it is at the document's
    /// time.
    std::vector<Preset> list();

    /// What list() has left out since the last question, each file once; empty for nothing.
    std::string takeComplaint();

    /// Why no new preset can be called so; empty if one can.
    std::string refuse(std::string const& name) const;

    /// All throw UsageError and SurroundingsError, having changed nothing.
    void save(Preset const& preset);
    void rename(std::string const& name, std::string const& newName);
    void remove(std::string const& name);

private:
    std::filesystem::path getFile(std::string const& name) const;
    Curves load(std::filesystem::path const& file) const;
    void checkName(std::string const& name) const;

    Document& document;
    NodeCopy copy;
    std::filesystem::path folder;
    std::set<std::filesystem::path> told; ///< files that cannot be used
    std::vector<std::string> complaints;
};
