#pragma once

// Who is told of a change of a value, when, and of what. User-interface thread.
//
// A change is stored, then recorded for undo, then told: to the controller of the value's node, to
// the node's handlers, to the value's handlers. Whoever is told finds the change done. Changes are
// told in the order in which they were made, each to all before the next: what a handler changes is
// told after what it was called for, so that nobody sees an old state last. Outside of handlers and
// batches, all have been told when the call that changed the value returns.
//
// What a handler throws changes nothing: the change stands, the others are told, and the failure
// goes to the event manager's report.

#include "base/RCShdPtr.h"
#include "callbacks/CbDispatcher.h"
#include "runtime/values/HostValue.h"

#include <memory>

enum class ChangeCause { Edit, Undo, Redo, Abandon, Load };

/// One change of one value.
struct ValueChange {
    RCShdPtr<HostValue> value;
    std::shared_ptr<ValueState const> before;
    std::shared_ptr<ValueState const> after; ///< the value may have gone on from there
    ChangeCause cause;
};

/// While it lives, changes are kept back; when the outermost one goes, they are told. So nobody
/// sees half of what belongs together.
class ChangeBatch {
public:
    explicit ChangeBatch(ChangeCause cause = ChangeCause::Edit);
    ~ChangeBatch();
    ChangeBatch(ChangeBatch const&) = delete;
    ChangeBatch& operator=(ChangeBatch const&) = delete;

private:
    ChangeCause former;
};

/// Whether somebody is being told of an undo, a redo or something abandoned: what is changed then
/// follows from it and leaves no record of its own.
bool isReplayBeingTold();

/// For HostValue: tells the change, or puts it behind those that are to be told before it.
void tellChange(HostValue& value, std::shared_ptr<ValueState const> before,
                std::shared_ptr<ValueState const> after);
