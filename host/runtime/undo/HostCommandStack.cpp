#include "runtime/undo/HostCommandStack.h"

#include "base/Assertions.h"

#include <algorithm>
#include <utility>

namespace {

/// Keeps a flag set for a scope.
class FlagScope {
public:
    explicit FlagScope(bool& scopedFlag) : flag(scopedFlag) { flag = true; }
    ~FlagScope() { flag = false; }
    FlagScope(FlagScope const&) = delete;
    FlagScope& operator=(FlagScope const&) = delete;

private:
    bool& flag;
};

} // namespace

void HostCommandStack::beginCommand(std::string const& label)
{
    if (depth++ == 0) {
        open.label = label;
    }
}

void HostCommandStack::endCommand()
{
    Assertions::check(depth > 0, "depth > 0");
    if (--depth > 0 || open.changes.empty()) {
        return;
    }
    commands.resize(nbDone);
    commands.push_back(std::exchange(open, {}));
    ++nbDone;
}

void HostCommandStack::record(HostValue& value, ValueState const& before, ValueState const& after)
{
    if (depth == 0 || isReplaying || PiUndoGuardNoLog::isActive()) {
        return;
    }
    auto const earlier =
        std::find_if(open.changes.begin(), open.changes.end(),
                     [&](Change const& change) { return change.value.get() == &value; });
    if (earlier != open.changes.end()) {
        earlier->after = after;
        return;
    }
    open.changes.push_back({RCShdPtr<HostValue>(&value), before, after});
}

void HostCommandStack::undo()
{
    if (!canUndo() || depth > 0) {
        return;
    }
    FlagScope const replaying(isReplaying);
    Command const& command = commands[--nbDone];
    for (auto change = command.changes.rbegin(); change != command.changes.rend(); ++change) {
        change->value->setState(change->before);
    }
}

void HostCommandStack::redo()
{
    if (!canRedo() || depth > 0) {
        return;
    }
    FlagScope const replaying(isReplaying);
    for (Change const& change : commands[nbDone++].changes) {
        RCShdPtr<HostValue>(change.value)->setState(change.after);
    }
}
