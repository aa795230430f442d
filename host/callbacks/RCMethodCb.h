#pragma once

#include "callbacks/CbHandler.h"

#include <utility>

/// Handler that forwards each value to a member function of an owner whom it does not keep alive.
/// `Ptr<Owner>` is a weak handle with a `lock` that gives a strong one, empty when the owner is
/// gone. Called on the user-interface thread; weak handles of this object may travel through other
/// threads.
template <class Owner, template <class> class Ptr, class T>
class RCMethodCb : public CbHandler<T> {
public:
    using Method = void (Owner::*)(T const&);

    RCMethodCb(Ptr<Owner> owner, Method method) : target(std::move(owner)), targetMethod(method) {}
    ~RCMethodCb() override = default;

    using CbHandler<T>::call;
    /// Does nothing when the owner is gone or there is no member function. The owner stays alive
    /// until its member function has returned.
    void call(T& value) override
    {
        auto const owner = target.lock();
        if (!owner.isNull() && targetMethod != nullptr) {
            ((*owner).*targetMethod)(value);
        }
    }

private:
    Ptr<Owner> target;
    Method targetMethod;
};
