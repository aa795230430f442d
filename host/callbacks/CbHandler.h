#pragma once

#include "base/CbEmptyType.h"

#include <algorithm>
#include <type_traits>
#include <vector>

template <typename T>
class CbDispatcher;

/// Receives the values of the dispatchers that it is subscribed to. Used on the user-interface
/// thread only.
///
/// A handler and a dispatcher hold raw pointers to each other: the dispatcher is in the handler's
/// list exactly when the handler is in the dispatcher's. Neither owns the other; whichever dies
/// first unlinks both. T may be const.
///
/// All members are defined outside the class so that a library can instantiate and export them one
/// by one.
template <typename T>
class CbHandler {
public:
    virtual ~CbHandler();

    /// Receives one value. Handlers after this one see what it changes in `value`.
    virtual void call(T& value) = 0;

    /// Receives a notification without a value: a temporary CbEmptyType for handlers of that type,
    /// CbEmptyType::NoArgCallBase::invalidNoArgCall for all others.
    void call();

    /// The number of dispatchers that this handler is subscribed to.
    int getNbDispatchers() const;

    /// Unsubscribes from every dispatcher.
    void reset();

    CbHandler(CbHandler const&) = delete;
    CbHandler& operator=(CbHandler const&) = delete;

protected:
    CbHandler();

private:
    friend class CbDispatcher<T>;

    /// This side of a subscription only; a dispatcher that is in the list already changes nothing.
    void addDispatcher(CbDispatcher<T>* dispatcher);

    /// This side of an unsubscription only; a dispatcher that is not in the list changes nothing.
    void removeDispatcher(CbDispatcher<T>* dispatcher);

    std::vector<CbDispatcher<T>*> dispatchers; // in the order of subscription
};

// Handlers and dispatchers call each other: whoever includes one gets both.
#include "callbacks/CbDispatcher.h"

// Not "= default", which could not be instantiated explicitly.
template <typename T>
CbHandler<T>::CbHandler()
{
}

template <typename T>
CbHandler<T>::~CbHandler()
{
    reset();
}

template <typename T>
void CbHandler<T>::call(T&)
{
}

template <typename T>
void CbHandler<T>::call()
{
    if constexpr (std::is_same_v<T, CbEmptyType>) {
        CbEmptyType empty;
        call(empty);
    } else {
        CbEmptyType::NoArgCallBase::invalidNoArgCall();
    }
}

template <typename T>
int CbHandler<T>::getNbDispatchers() const
{
    return static_cast<int>(dispatchers.size());
}

template <typename T>
void CbHandler<T>::reset()
{
    // From the back: what removeHandler erases from this list lies behind what is still to come.
    for (auto position = dispatchers.size(); position-- > 0;) {
        dispatchers[position]->removeHandler(this);
    }
    dispatchers.clear();
}

template <typename T>
void CbHandler<T>::addDispatcher(CbDispatcher<T>* dispatcher)
{
    if (std::find(dispatchers.begin(), dispatchers.end(), dispatcher) == dispatchers.end()) {
        dispatchers.push_back(dispatcher);
    }
}

template <typename T>
void CbHandler<T>::removeDispatcher(CbDispatcher<T>* dispatcher)
{
    auto const found = std::find(dispatchers.begin(), dispatchers.end(), dispatcher);
    if (found != dispatchers.end()) {
        dispatchers.erase(found);
    }
}
