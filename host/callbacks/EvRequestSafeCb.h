#pragma once

#include "base/EvRequestEvent.h"
#include "callbacks/CbHandler.h"

#include <type_traits>
#include <utility>

/// Event that carries a value to a handler on the user-interface thread, if the handler still
/// exists by then. May be made on any thread: it holds the handler weakly and the value by copy.
template <template <class> class Ptr, class T>
class EvRequestSafeCb : public EvRequestEvent {
public:
    EvRequestSafeCb(Ptr<CbHandler<T>> handler, T const& value)
        : target(std::move(handler)), carriedValue(value)
    {
    }
    ~EvRequestSafeCb() override = default;

    /// Calls the handler with the value; does nothing when the handler is gone.
    void execute() override
    {
        auto const handler = target.lock();
        if (!handler.isNull()) {
            handler->call(carriedValue);
        }
    }

private:
    Ptr<CbHandler<T>> target;
    std::remove_const_t<T> carriedValue;
};
