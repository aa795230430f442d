#pragma once

#include "callbacks/CbDispatcher.h"
#include "callbacks/CbFunction.h"
#include "controllerLink/ControllerLink.h"
#include "editor/model/document/ProjectFile.h"
#include "session/ToolSession.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// What the editor works on: the tool's node with its history, and the project file it belongs to.
/// Node values are the truth; who shows them subscribes to the node. User-interface thread.
class Document {
public:
    /// Throws ToolLoadError, UsageError.
    Document();

    HostNode& getNode() const { return session.getNode(); }
    HostCommandStack& getHistory() const { return graph().getHistory(); }
    ControllerLink& getLink() const { return *link; }
    std::filesystem::path getPanelFile() const { return session.getPanelFile(); }

    /// With an empty path for a project that has no file yet.
    ProjectFile& getProjectFile() const { return *binding.file; }
    bool isModified() const;

    /// Replaces all values, as one step of the history: undone, it leads back to the project that
    /// was open before, its file included. Throws UsageError and SurroundingsError, having changed
    /// nothing.
    void openProject(std::filesystem::path const& file);

    /// The same with all values at their defaults, and no file.
    void beginProject();

    /// The same with what was set aside: text of a project that is not saved yet, and the file that
    /// it belongs to as it was known then. Throws UsageError.
    void recoverProject(std::string const& text, std::filesystem::path const& file,
                        std::string const& knownText);

    /// To its own file, or to another one, which is its own from then on. Throws UsageError,
    /// SurroundingsError and SaveConflict (see ProjectFile::save).
    void saveProject(std::filesystem::path const& file, Overwrite what = Overwrite::OwnOnly);

    /// Told when the project has another file, was saved, or is as saved no more or again.
    /// Subscribes until the handler leaves or dies, or the document goes.
    void addFileHandler(CbHandler<ProjectFile const>* handler) { fileHandlers.addHandler(handler); }

    /// One step of the history. Throws ValueError, having changed nothing.
    void edit(std::string const& label, NodeValues const& states);

    /// The same with a number for each name; a switch is on unless it is 0. Of several that refuse
    /// it, the first of `names` says why.
    void setNumbers(std::string const& label, std::vector<std::string> const& names, double number);

    double getNumber(std::string const& name) const;
    CurvePoints getCurve(int channel) const;
    std::vector<std::string> listCurveNames() const; ///< red, green, blue
    void setCurves(std::string const& label, std::array<CurvePoints, 3> const& curves);
    ControllerLink::Mode getMode() const;

    /// What is edited until endDrag is one step; abandonDrag takes it back.
    void beginDrag(std::string const& label);
    void abandonDrag();
    void endDrag() { drag.reset(); }
    bool isDragging() const { return drag != nullptr; }

    /// The moment that is shown and edited, a frame's number.
    double getTime() const { return time; }
    void setTime(double newTime); ///< finite
    /// Told the new moment. Subscribes until the handler leaves or dies, or the document goes.
    void addTimeHandler(CbHandler<double const>* handler) { timeHandlers.addHandler(handler); }

private:
    /// The file, and the step of the history that is as in it.
    struct Binding {
        std::shared_ptr<ProjectFile> file;
        std::uint64_t savedStep;
    };
    /// A step of the history that leads from one file to another.
    struct Opening {
        std::uint64_t step;
        Binding before;
        Binding after;
    };

    HostGraph& graph() const;
    void replaceAll(std::string const& label, NodeValues const& values, ProjectFile file,
                    bool isSaved);
    void bind(Binding const& next);
    void followHistory(HistoryState const& state);

    ToolSession session;
    RCShdPtr<ControllerLink> link;
    std::unique_ptr<PiUndoGuard> drag;
    Binding binding{std::make_shared<ProjectFile>(), 0};
    std::vector<Opening> openings; ///< done ones first
    std::size_t nbOpened = 0;      ///< of these are done
    bool wasModified = false;
    double time = 0.0;
    CbDispatcher<double const> timeHandlers;
    CbDispatcher<ProjectFile const> fileHandlers;
    CbFunction<HistoryState const> historyChanged{
        [this](HistoryState const& state) { followHistory(state); }};
};
