// The queue of changes that are to be told.

#include "runtime/values/ValueChange.h"

#include "base/EvEventManager.h"
#include "runtime/values/FlagScope.h"

#include <deque>
#include <utility>

namespace {

/// Of the user-interface thread.
struct ChangeQueue {
    std::deque<ValueChange> changes;
    int nbBatches = 0;
    ChangeCause cause = ChangeCause::Edit; // of the changes that are made now
    ChangeCause told = ChangeCause::Edit;  // of the change that is being told
    bool isTelling = false;

    void tell()
    {
        if (nbBatches > 0 || isTelling) {
            return;
        }
        FlagScope const telling(isTelling);
        while (!changes.empty()) {
            ValueChange const change = std::move(changes.front());
            changes.pop_front();
            told = change.cause;
            try {
                change.value->tell(change);
            } catch (...) {
                EvEventManager::getInstance().postCurrentException();
            }
            told = ChangeCause::Edit;
        }
    }
};

ChangeQueue& getQueue()
{
    static ChangeQueue queue;
    return queue;
}

} // namespace

ChangeBatch::ChangeBatch(ChangeCause cause) : former(std::exchange(getQueue().cause, cause))
{
    ++getQueue().nbBatches;
}

ChangeBatch::~ChangeBatch()
{
    ChangeQueue& queue = getQueue();
    queue.cause = former;
    --queue.nbBatches;
    queue.tell();
}

bool isReplayBeingTold()
{
    switch (getQueue().told) {
    case ChangeCause::Undo:
    case ChangeCause::Redo:
    case ChangeCause::Abandon: return true;
    case ChangeCause::Edit:
    case ChangeCause::Load: break;
    }
    return false;
}

void tellChange(HostValue& value, std::shared_ptr<ValueState const> before,
                std::shared_ptr<ValueState const> after)
{
    ChangeQueue& queue = getQueue();
    queue.changes.push_back(
        {RCShdPtr<HostValue>(&value), std::move(before), std::move(after), queue.cause});
    queue.tell();
}
