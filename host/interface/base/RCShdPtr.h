#pragma once

#include "base/RCExUtil.h"

#include <type_traits>
#include <typeinfo>
#include <utility>

/// Shared handle of an object that counts its own references (RCBase). Copies on different threads
/// may be made and released at once; one handle belongs to one thread at a time.
/// Using an empty handle throws the null-pointer exception with the name of T.
template <typename T>
class RCShdPtr {
public:
    RCShdPtr() = default;
    RCShdPtr(std::nullptr_t) {}
    explicit RCShdPtr(T* object) : target(object) { acquire(); }
    RCShdPtr(RCShdPtr const& other) : target(other.target) { acquire(); }
    RCShdPtr(RCShdPtr&& other) noexcept : target(std::exchange(other.target, nullptr)) {}
    template <typename U>
    requires std::is_convertible_v<U*, T*> RCShdPtr(RCShdPtr<U> const& other) : target(other.get())
    {
        acquire();
    }
    ~RCShdPtr() { release(); }

    /// The new object is referenced before the old one is let go.
    RCShdPtr& operator=(RCShdPtr other) noexcept
    {
        std::swap(target, other.target);
        return *this;
    }

    T* get() const { return target; }
    bool isNull() const { return target == nullptr; }
    explicit operator bool() const { return target != nullptr; }
    bool operator==(RCShdPtr const& other) const { return target == other.target; }

    T& operator*() const
    {
        if (target == nullptr) {
            RCExUtil::throwExNullPtr(typeid(T));
        }
        return *target;
    }
    T* operator->() const { return &**this; }

private:
    void acquire() const
    {
        if (target != nullptr) {
            target->addReference();
        }
    }
    void release() const
    {
        if (target != nullptr) {
            target->removeReference();
        }
    }

    T* target = nullptr;
};

/// Handle of an object that the host's evaluation delivers; the same sharing as RCShdPtr.
template <typename T>
using RCPvtEngPtr = RCShdPtr<T>;

/// Makes an object and its first handle.
template <typename T, typename... Arguments>
RCShdPtr<T> makeShared(Arguments&&... arguments)
{
    return RCShdPtr<T>(new T(std::forward<Arguments>(arguments)...));
}

/// The same object seen as a `Wanted`. An empty handle stays empty; an object of another kind
/// throws the cast failure with both type names.
template <typename Wanted, typename T>
RCShdPtr<Wanted> castShared(RCShdPtr<T> const& handle)
{
    if (handle.isNull()) {
        return {};
    }
    auto* const wanted = dynamic_cast<Wanted*>(handle.get());
    if (wanted == nullptr) {
        RCExUtil::throwExCastFailed(typeid(*handle), typeid(Wanted));
    }
    return RCShdPtr<Wanted>(wanted);
}
