#pragma once

#include "pluginAPI/PiUndo.h"
#include "runtime/values/HostValue.h"

#include <cstddef>
#include <string>
#include <vector>

/// The undo history of a graph: commands with a label, each a run of changes of values. A change
/// outside any command, or under a PiUndoGuardNoLog, leaves no record. User-interface thread.
class HostCommandStack : public PiCommandStack {
public:
    void beginCommand(std::string const& label) override;
    void endCommand() override;

    /// Adds a change to the open command, if there is one; drops what was undone.
    void record(HostValue& value, ValueState const& before, ValueState const& after);

    bool canUndo() const { return nbDone > 0; }
    bool canRedo() const { return nbDone < commands.size(); }

    /// Labels of the next command to undo or redo. There must be one.
    std::string const& getUndoLabel() const { return commands[nbDone - 1].label; }
    std::string const& getRedoLabel() const { return commands[nbDone].label; }

    /// Takes the last command back or does it again. Does nothing where there is none or while a
    /// command is open.
    void undo();
    void redo();

    std::size_t getNbCommands() const { return commands.size(); }

private:
    struct Change {
        RCShdPtr<HostValue> value;
        ValueState before;
        ValueState after;
    };
    struct Command {
        std::string label;
        std::vector<Change> changes;
    };

    std::vector<Command> commands; // done ones first
    std::size_t nbDone = 0;
    Command open;
    int depth = 0; // how many guards are open
    bool isReplaying = false;
};
