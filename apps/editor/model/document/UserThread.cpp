#include "editor/model/document/UserThread.h"

#include "base/EvEventManager.h"

#include <utility>

namespace {

class CallEvent : public EvRequestEvent {
public:
    CallEvent(std::weak_ptr<void> eventOwner, std::function<void()> called)
        : owner(std::move(eventOwner)), function(std::move(called))
    {
    }

    void execute() override
    {
        if (!owner.expired()) {
            function();
        }
    }

private:
    std::weak_ptr<void> owner;
    std::function<void()> function;
};

} // namespace

void callOnUserThread(std::weak_ptr<void> owner, std::function<void()> function)
{
    EvEventManager::getInstance().post(
        OPtr<EvRequestEvent>(new CallEvent(std::move(owner), std::move(function))));
}
