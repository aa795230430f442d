#pragma once

#include "callbacks/CbDispatcher.h"
#include "editor/model/document/Document.h"
#include "editor/model/render/ChildProgram.h"
#include "editor/model/render/RenderWish.h"
#include "shots/ShotEvent.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Renders by the command line, with the document's values as they are at the start: what is edited
/// meanwhile has no influence, and what goes wrong there leaves the editor alone. One render at a
/// time. User-interface thread.
class RenderRun {
public:
    /// Of the command line that lies beside this program.
    RenderRun();
    ~RenderRun();
    RenderRun(RenderRun const&) = delete;
    RenderRun& operator=(RenderRun const&) = delete;

    /// Handlers are told from then on. Throws SurroundingsError.
    void start(Document const& document, RenderWish const& wish);

    /// Frames on their way are dropped without a trace; it still ends later on.
    void cancel();

    bool isRunning() const { return program != nullptr; }
    bool isCancelled() const { return wasCancelled; }

    std::size_t countDone() const { return nbDone; }
    std::size_t countFrames() const { return nbFrames; } ///< 0 until that is known

    /// "3/10, 30 %, 2.5 frames/s, 0:12 left"
    std::string describePace() const;

    /// What was said so far of frames that failed, and the like: a line each.
    std::vector<std::string> const& getMessages() const { return messages; }

    /// How it ended, in one sentence; empty while it runs.
    std::string const& getOutcome() const { return outcome; }
    bool hasFailed() const { return status != 0 && !wasCancelled; }

    /// Subscribes until the handler leaves or dies, or the run goes.
    void addHandler(CbHandler<RenderRun const>* handler) { handlers.addHandler(handler); }

private:
    class SavedLook;

    void takeLine(std::string const& line);
    void takeEnd(int newStatus);

    std::unique_ptr<SavedLook> look;
    std::unique_ptr<ChildProgram> program; ///< null unless it runs
    bool wasCancelled = false;
    int status = 0;
    std::size_t nbDone = 0;
    std::size_t nbFrames = 0;
    std::chrono::steady_clock::time_point started;
    std::vector<std::string> messages;
    std::optional<ShotSummary> summary;
    std::string outcome;
    CbDispatcher<RenderRun const> handlers;
};
