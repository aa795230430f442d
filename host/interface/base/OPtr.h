#pragma once

#include "base/RCExUtil.h"

#include <cstddef>
#include <type_traits>
#include <typeinfo>
#include <utility>

/// Owning pointer of an object that is handed to the host or received from it: there is exactly one
/// owner, and passing the pointer on passes the object on. Belongs to one thread at a time. Using
/// an empty one throws the null-pointer exception with the name of T.
template <typename T>
class OPtr {
public:
    OPtr() = default;
    OPtr(std::nullptr_t) {}
    explicit OPtr(T* object) noexcept : target(object) {}
    OPtr(OPtr&& other) noexcept : target(other.release()) {}
    template <typename U>
    requires std::is_convertible_v<U*, T*> OPtr(OPtr<U>&& other)
    noexcept : target(other.release()) {}
    // The object's own destructor may throw: its members may be node handles.
    ~OPtr() noexcept(false) { delete target; }

    /// The object owned before is deleted after the new one is in place.
    OPtr& operator=(OPtr other) noexcept
    {
        std::swap(target, other.target);
        return *this;
    }

    T* get() const { return target; }
    bool isNull() const { return target == nullptr; }
    explicit operator bool() const { return target != nullptr; }

    /// Empties the pointer; the caller owns the object from then on.
    [[nodiscard]] T* release() noexcept { return std::exchange(target, nullptr); }

    T& operator*() const
    {
        if (target == nullptr) {
            RCExUtil::throwExNullPtr(typeid(T));
        }
        return *target;
    }
    T* operator->() const { return &**this; }

private:
    T* target = nullptr;
};

/// What a function returns when its caller becomes the owner; turns into an OPtr of the same type
/// or of a base.
template <typename T>
class OPtrRet : public OPtr<T> {
public:
    using OPtr<T>::OPtr;
    template <typename U>
    requires std::is_convertible_v<U*, T*> OPtrRet(OPtr<U>&& object)
    noexcept : OPtr<T>(std::move(object)) {}
};

/// Makes an object and its owner.
template <typename T, typename... Arguments>
OPtr<T> makeOwned(Arguments&&... arguments)
{
    return OPtr<T>(new T(std::forward<Arguments>(arguments)...));
}
