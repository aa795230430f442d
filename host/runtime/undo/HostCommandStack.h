#pragma once

#include "callbacks/CbDispatcher.h"
#include "pluginAPI/PiUndo.h"
#include "runtime/values/ValueChange.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What can be undone and redone. The labels are empty where there is nothing.
struct HistoryState {
    bool canUndo = false;
    bool canRedo = false;
    std::string undoLabel;
    std::string redoLabel;
    /// Which step was done last, by a number that no other step of the history has; 0 for none. A
    /// document is as it was saved when this is what it was then.
    std::uint64_t lastStep = 0;

    bool operator==(HistoryState const&) const = default;
};

/// The undo history of a graph: commands with a label, each a run of changes of values. A change
/// outside any command, or under a PiUndoGuardNoLog, leaves no record; several changes of one value
/// within a command are one, and a command that ends where it began leaves no step.
///
/// Undo, redo and abandon change all values first and tell of them then. Who is told may let go of
/// the graph, undo and redo in turn, and throw. What it changes follows from the step and leaves no
/// record. User-interface thread.
class HostCommandStack : public PiCommandStack {
public:
    using HistoryHandler = CbHandler<HistoryState const>;

    void beginCommand(std::string const& label) override;
    void endCommand() override;

    /// Takes back what the open command has changed. It stays open until its guards go: what is
    /// changed from here on is what it consists of. Does nothing without an open command.
    void abandonCommand();

    /// Adds a change, which has just been made, to the open command if there is one.
    void record(HostValue& value, std::shared_ptr<ValueState const> const& before);

    bool canUndo() const { return nbDone > 0; }
    bool canRedo() const { return nbDone < commands.size(); }

    /// Labels of the next command to undo or redo. There must be one.
    std::string const& getUndoLabel() const { return commands[nbDone - 1].label; }
    std::string const& getRedoLabel() const { return commands[nbDone].label; }
    HistoryState getHistoryState() const;

    /// Takes the last command back or does it again. Does nothing where there is none or while a
    /// command is open.
    void undo();
    void redo();

    std::size_t getNbCommands() const { return commands.size(); }

    /// Told whenever the history's state is another one, after the values' handlers. Subscribes
    /// until the handler leaves or dies, or the history goes.
    void addHistoryHandler(HistoryHandler* handler) { handlers.addHandler(handler); }
    void removeHistoryHandler(HistoryHandler* handler) { handlers.removeHandler(handler); }

private:
    struct Change {
        RCShdPtr<HostValue> value;
        std::shared_ptr<ValueState const> before;
        std::shared_ptr<ValueState const> after;
    };
    struct Command {
        std::string label;
        std::vector<Change> changes;
        std::uint64_t number = 0;
    };

    void takeBack(Command const& command, ChangeCause cause);
    void tellState();

    std::vector<Command> commands; // done ones first
    std::size_t nbDone = 0;
    std::uint64_t nbMade = 0; // dropped ones too
    Command open;
    int depth = 0; // how many guards are open
    bool isReplaying = false;
    CbDispatcher<HistoryState const> handlers;
    HistoryState toldState;
    bool isTelling = false;
};
