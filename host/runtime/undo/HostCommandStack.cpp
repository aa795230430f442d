#include "runtime/undo/HostCommandStack.h"

#include "base/Assertions.h"
#include "base/EvEventManager.h"
#include "runtime/values/FlagScope.h"

#include <algorithm>
#include <utility>

void HostCommandStack::beginCommand(std::string const& label)
{
    if (depth == 0) {
        open.label = label;
    }
    ++depth;
}

void HostCommandStack::endCommand()
{
    Assertions::check(depth > 0, "depth > 0");
    if (--depth > 0) {
        return;
    }
    Command closed = std::exchange(open, {});
    std::erase_if(closed.changes,
                  [](Change const& change) { return isSameState(*change.before, *change.after); });
    if (closed.changes.empty()) {
        return;
    }
    RCShdPtr<HostCommandStack> const self(this); // whoever is told may let the graph go
    closed.number = ++nbMade;
    commands.resize(nbDone);
    commands.push_back(std::move(closed));
    ++nbDone;
    tellState();
}

void HostCommandStack::abandonCommand()
{
    RCShdPtr<HostCommandStack> const self(this);
    takeBack({"", std::exchange(open.changes, {})}, ChangeCause::Abandon);
}

void HostCommandStack::record(HostValue& value, std::shared_ptr<ValueState const> const& before)
{
    if (depth == 0 || isReplaying || isReplayBeingTold() || PiUndoGuardNoLog::isActive()) {
        return;
    }
    auto const earlier =
        std::find_if(open.changes.begin(), open.changes.end(),
                     [&](Change const& change) { return change.value.get() == &value; });
    if (earlier != open.changes.end()) {
        earlier->after = value.getState();
        return;
    }
    open.changes.push_back({RCShdPtr<HostValue>(&value), before, value.getState()});
}

HistoryState HostCommandStack::getHistoryState() const
{
    HistoryState state;
    state.canUndo = canUndo();
    state.canRedo = canRedo();
    if (state.canUndo) {
        state.undoLabel = getUndoLabel();
        state.lastStep = commands[nbDone - 1].number;
    }
    if (state.canRedo) {
        state.redoLabel = getRedoLabel();
    }
    return state;
}

void HostCommandStack::undo()
{
    if (!canUndo() || depth > 0) {
        return;
    }
    RCShdPtr<HostCommandStack> const self(this);
    --nbDone;
    takeBack(commands[nbDone], ChangeCause::Undo);
    tellState();
}

void HostCommandStack::redo()
{
    if (!canRedo() || depth > 0) {
        return;
    }
    RCShdPtr<HostCommandStack> const self(this);
    {
        ChangeBatch const batch(ChangeCause::Redo);
        FlagScope const replaying(isReplaying);
        for (Change const& change : commands[nbDone++].changes) {
            change.value->restore(change.after);
        }
    }
    tellState();
}

// The command must not be used after this: who is told may drop it.
void HostCommandStack::takeBack(Command const& command, ChangeCause cause)
{
    ChangeBatch const batch(cause);
    FlagScope const replaying(isReplaying);
    for (auto change = command.changes.rbegin(); change != command.changes.rend(); ++change) {
        change->value->restore(change->before);
    }
}

// A handler that undoes in turn must not have the others told of the older state last.
void HostCommandStack::tellState()
{
    if (isTelling) {
        return;
    }
    FlagScope const telling(isTelling);
    for (HistoryState state = getHistoryState(); state != toldState; state = getHistoryState()) {
        toldState = state;
        handlers.call(state);
    }
}
