#pragma once

#include "base/OPtr.h"
#include "base/RCExUtil.h"

#include <atomic>
#include <cstddef>
#include <type_traits>
#include <typeinfo>
#include <utility>

/// The strong and weak references of one object. The object goes with its last strong reference,
/// the counts go with the last reference of either kind. Any thread may call these; the object is
/// destroyed on the thread that lets its last strong reference go.
class RCSWCount {
public:
    RCSWCount() = default;
    RCSWCount(RCSWCount const&) = delete;
    RCSWCount& operator=(RCSWCount const&) = delete;

    /// For a caller who holds a strong reference.
    void addStrong() { strong.fetch_add(1, std::memory_order_relaxed); }

    /// For a caller who holds a weak reference: false if the object is gone.
    bool addStrongIfAlive()
    {
        int count = strong.load(std::memory_order_relaxed);
        while (count != 0) {
            if (strong.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel,
                                             std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }

    void removeStrong()
    {
        if (strong.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            // The counts go even if the object's destructor throws.
            struct WeakReference {
                RCSWCount* count;
                ~WeakReference() { count->removeWeak(); }
            } const sharedWeakReference{this};
            destroyObject();
        }
    }

    void addWeak() { weak.fetch_add(1, std::memory_order_relaxed); }
    void removeWeak()
    {
        if (weak.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

    bool isExpired() const { return strong.load(std::memory_order_acquire) == 0; }

protected:
    virtual ~RCSWCount() = default;
    virtual void destroyObject() = 0;

private:
    std::atomic<int> strong = 1;
    std::atomic<int> weak = 1; // one for all strong references together
};

/// The counts of an object that was taken over as a T.
template <typename T>
class RCSWCountOf final : public RCSWCount {
public:
    explicit RCSWCountOf(T* countedObject) : object(countedObject) {}

private:
    void destroyObject() override { delete object; }

    T* object;
};

template <typename T>
class RCWeakPtr;

/// Strong handle of an object that needs no counter of its own: the object lives as long as one of
/// its strong handles. Copies on different threads may be made and released at once; one handle
/// belongs to one thread at a time. Using an empty handle throws the null-pointer exception with
/// the name of T.
template <typename T>
class RCStrongPtr {
public:
    RCStrongPtr() = default;
    RCStrongPtr(std::nullptr_t) {}
    /// Takes the object over; an empty `object` gives an empty handle.
    template <typename U>
    requires std::is_convertible_v<U*, T*> RCStrongPtr(OPtr<U>&& object)
        : count(object ? new RCSWCountOf<U>(object.get()) : nullptr), target(object.release())
    {
    }
    RCStrongPtr(RCStrongPtr const& other) : RCStrongPtr(other, other.target) {}
    RCStrongPtr(RCStrongPtr&& other) noexcept
        : count(std::exchange(other.count, nullptr)), target(std::exchange(other.target, nullptr))
    {
    }
    template <typename U>
    requires std::is_convertible_v<U*, T*> RCStrongPtr(RCStrongPtr<U> const& other)
        : RCStrongPtr(other, other.target)
    {
    }
    /// Another view of the object behind `owner`: `view` is that object or a part of it.
    template <typename U>
    RCStrongPtr(RCStrongPtr<U> const& owner, T* view) : count(owner.count), target(view)
    {
        if (count != nullptr) {
            count->addStrong();
        }
    }
    // The object's own destructor may throw: its members may be node handles.
    ~RCStrongPtr() noexcept(false)
    {
        if (count != nullptr) {
            count->removeStrong();
        }
    }

    /// The new object is referenced before the old one is let go.
    RCStrongPtr& operator=(RCStrongPtr other) noexcept
    {
        std::swap(count, other.count);
        std::swap(target, other.target);
        return *this;
    }

    T* get() const { return target; }
    bool isNull() const { return target == nullptr; }
    explicit operator bool() const { return target != nullptr; }
    bool operator==(RCStrongPtr const& other) const { return target == other.target; }

    T& operator*() const
    {
        if (target == nullptr) {
            RCExUtil::throwExNullPtr(typeid(T));
        }
        return *target;
    }
    T* operator->() const { return &**this; }

private:
    template <typename U>
    friend class RCStrongPtr;
    template <typename U>
    friend class RCWeakPtr;

    struct AlreadyCounted {};
    RCStrongPtr(AlreadyCounted, RCSWCount* countOfObject, T* object)
        : count(countOfObject), target(object)
    {
    }

    RCSWCount* count = nullptr;
    T* target = nullptr;
};

/// Weak handle: observes an object of an RCStrongPtr without keeping it alive. The same threading
/// as RCStrongPtr.
template <typename T>
class RCWeakPtr {
public:
    RCWeakPtr() = default;
    RCWeakPtr(std::nullptr_t) {}
    RCWeakPtr(RCWeakPtr const& other) : RCWeakPtr(other.count, other.target) {}
    RCWeakPtr(RCWeakPtr&& other) noexcept
        : count(std::exchange(other.count, nullptr)), target(std::exchange(other.target, nullptr))
    {
    }
    template <typename U>
    requires std::is_convertible_v<U*, T*> RCWeakPtr(RCStrongPtr<U> const& object)
        : RCWeakPtr(object.count, object.target)
    {
    }
    template <typename U>
    requires(std::is_convertible_v<U*, T*> && !std::is_same_v<U, T>)
        RCWeakPtr(RCWeakPtr<U> const& other)
        : RCWeakPtr(other.count, other.target)
    {
        // Finding a virtual base reads the object, which would have to be held meanwhile and might
        // then be destroyed here, on a thread that only observes it.
        static_assert(
            requires(std::remove_const_t<T> * base) { static_cast<U const*>(base); },
            "weak handles do not convert to virtual bases: convert the strong handle");
    }
    ~RCWeakPtr()
    {
        if (count != nullptr) {
            count->removeWeak();
        }
    }

    RCWeakPtr& operator=(RCWeakPtr other) noexcept
    {
        std::swap(count, other.count);
        std::swap(target, other.target);
        return *this;
    }

    /// A strong handle of the object, empty if it is gone (or if there never was one).
    RCStrongPtr<T> lock() const
    {
        if (count == nullptr || !count->addStrongIfAlive()) {
            return {};
        }
        return RCStrongPtr<T>(typename RCStrongPtr<T>::AlreadyCounted(), count, target);
    }

    /// Whether `lock` would give an empty handle. Once true it stays true.
    bool isExpired() const { return count == nullptr || count->isExpired(); }

private:
    template <typename U>
    friend class RCWeakPtr;

    RCWeakPtr(RCSWCount* countOfObject, T* object) : count(countOfObject), target(object)
    {
        if (count != nullptr) {
            count->addWeak();
        }
    }

    RCSWCount* count = nullptr;
    T* target = nullptr; // not to be followed without a strong reference
};

/// Makes an object and its first strong handle.
template <typename T, typename... Arguments>
RCStrongPtr<T> makeStrong(Arguments&&... arguments)
{
    return makeOwned<T>(std::forward<Arguments>(arguments)...);
}

/// The same object seen as a `Wanted`. An empty handle stays empty; an object of another kind
/// throws the cast failure with both type names.
template <typename Wanted, typename T>
RCStrongPtr<Wanted> castStrong(RCStrongPtr<T> const& handle)
{
    if (handle.isNull()) {
        return {};
    }
    auto* const wanted = dynamic_cast<Wanted*>(handle.get());
    if (wanted == nullptr) {
        RCExUtil::throwExCastFailed(typeid(*handle), typeid(Wanted));
    }
    return RCStrongPtr<Wanted>(handle, wanted);
}
