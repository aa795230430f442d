#include "base/CbEmptyType.h"

#include "base/Assertions.h"
#include "base/EvEventManager.h"

namespace {

/// Fails when it is run, so that the failure is reported like that of any event.
class InvalidCallEvent : public EvRequestEvent {
public:
    void execute() override { Assertions::check(false, "T is CbEmptyType"); }
};

} // namespace

void CbEmptyType::NoArgCallBase::invalidNoArgCall()
{
    EvEventManager::getInstance().post(makeOwned<InvalidCallEvent>());
}
