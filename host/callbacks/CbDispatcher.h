#pragma once

#include "base/EvEventManager.h"

#include <algorithm>
#include <cstddef>
#include <vector>

template <typename T>
class CbHandler;

/// Calls its subscribed handlers, in order, with a value. Used on the user-interface thread only;
/// owns no handler (see CbHandler for how both sides are linked). Null handlers are ignored
/// everywhere. T may be const.
///
/// A handler may subscribe, unsubscribe and destroy handlers while it is called, itself included,
/// but must not destroy the dispatcher that is calling it.
///
/// All members are defined outside the class so that a library can instantiate and export them one
/// by one.
template <typename T>
class CbDispatcher {
public:
    CbDispatcher();
    CbDispatcher(CbDispatcher const&) = delete;
    CbDispatcher& operator=(CbDispatcher const&) = delete;

    /// Unsubscribes every handler; calls none.
    virtual ~CbDispatcher();

    /// Subscribes at the end. A handler that is subscribed keeps its place.
    void addHandler(CbHandler<T>* handler);

    /// Subscribes at the front. A handler that is subscribed keeps its place.
    void prependHandler(CbHandler<T>* handler);

    /// Subscribes just before the last handler. A handler that is subscribed keeps its place; on an
    /// empty dispatcher the handler stays unsubscribed, on purpose: there is no last handler to
    /// stand before.
    void insertHandler(CbHandler<T>* handler);

    void removeHandler(CbHandler<T>* handler);
    void removeAllHandlers();

    bool isHandlerSubscribed(CbHandler<T>* handler) const;
    bool isEmpty() const;
    int getNbHandlers() const;

    /// Calls the handlers that are subscribed now, in order, leaving out those that are
    /// unsubscribed before their turn. All get the same `value`. What a handler throws goes to the
    /// event manager's report; the others are called all the same.
    void call(T& value);

    /// The same without a value, through CbHandler::call().
    void call();

private:
    void insertAt(std::size_t position, CbHandler<T>* handler);

    std::vector<CbHandler<T>*> handlers; // in calling order, each at most once
};

// Handlers and dispatchers call each other: whoever includes one gets both.
#include "callbacks/CbHandler.h"

// Not "= default", which could not be instantiated explicitly.
template <typename T>
CbDispatcher<T>::CbDispatcher()
{
}

template <typename T>
CbDispatcher<T>::~CbDispatcher()
{
    removeAllHandlers();
}

template <typename T>
void CbDispatcher<T>::addHandler(CbHandler<T>* handler)
{
    insertAt(handlers.size(), handler);
}

template <typename T>
void CbDispatcher<T>::prependHandler(CbHandler<T>* handler)
{
    insertAt(0, handler);
}

template <typename T>
void CbDispatcher<T>::insertHandler(CbHandler<T>* handler)
{
    if (!handlers.empty()) {
        insertAt(handlers.size() - 1, handler);
    }
}

template <typename T>
void CbDispatcher<T>::removeHandler(CbHandler<T>* handler)
{
    auto const found = std::find(handlers.begin(), handlers.end(), handler);
    if (found != handlers.end()) {
        handler->removeDispatcher(this);
        handlers.erase(found);
    }
}

template <typename T>
void CbDispatcher<T>::removeAllHandlers()
{
    for (auto* const handler : handlers) {
        handler->removeDispatcher(this);
    }
    handlers.clear();
}

template <typename T>
bool CbDispatcher<T>::isHandlerSubscribed(CbHandler<T>* handler) const
{
    return std::find(handlers.begin(), handlers.end(), handler) != handlers.end();
}

template <typename T>
bool CbDispatcher<T>::isEmpty() const
{
    return handlers.empty();
}

template <typename T>
int CbDispatcher<T>::getNbHandlers() const
{
    return static_cast<int>(handlers.size());
}

template <typename T>
void CbDispatcher<T>::call(T& value)
{
    auto const snapshot = handlers;
    for (auto* const handler : snapshot) {
        if (isHandlerSubscribed(handler)) {
            try {
                handler->call(value);
            } catch (...) {
                EvEventManager::getInstance().postCurrentException();
            }
        }
    }
}

template <typename T>
void CbDispatcher<T>::call()
{
    auto const snapshot = handlers;
    for (auto* const handler : snapshot) {
        if (isHandlerSubscribed(handler)) {
            try {
                handler->call();
            } catch (...) {
                EvEventManager::getInstance().postCurrentException();
            }
        }
    }
}

template <typename T>
void CbDispatcher<T>::insertAt(std::size_t position, CbHandler<T>* handler)
{
    if (handler == nullptr || isHandlerSubscribed(handler)) {
        return;
    }
    // Memory is taken before either side changes, so both lists agree even when there is none left.
    handlers.reserve(handlers.size() + 1);
    handler->addDispatcher(this);
    handlers.insert(handlers.begin() + static_cast<std::ptrdiff_t>(position), handler);
}
