#pragma once

#include "callbacks/CbDispatcher.h"
#include "controllerLink/ControllerLink.h"
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

    /// Empty for a project that has no file yet.
    std::filesystem::path const& getProjectFile() const { return projectFile; }
    bool isModified() const;

    /// Replaces all values, as one step of the history. Throws UsageError and SurroundingsError,
    /// having changed nothing.
    void openProject(std::filesystem::path const& file);

    /// Throws UsageError and SurroundingsError; the file is then as it was.
    void saveProject(std::filesystem::path const& file);

    /// One step of the history. Throws ValueError, having changed nothing.
    void edit(std::string const& label, NodeValues const& states);

    /// The same with a number for each name; a switch is on unless it is 0.
    void setNumbers(std::string const& label, std::vector<std::string> const& names, double number);

    double getNumber(std::string const& name) const;
    CurvePoints getCurve(int channel) const;
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
    HostGraph& graph() const;

    ToolSession session;
    RCShdPtr<ControllerLink> link;
    std::unique_ptr<PiUndoGuard> drag;
    std::filesystem::path projectFile;
    std::uint64_t savedStep = 0;
    double time = 0.0;
    CbDispatcher<double const> timeHandlers;
};
