#pragma once

#include <atomic>

/// A counter that several threads may change at once.
template <typename Integer>
class LkCounter {
public:
    void increment() { value.fetch_add(1, std::memory_order_relaxed); }

    /// Returns the value after the decrement; everything done before it on other threads is
    /// visible to the caller that reaches 0.
    Integer decrement() { return value.fetch_sub(1, std::memory_order_acq_rel) - 1; }

    Integer get() const { return value.load(std::memory_order_acquire); }

private:
    std::atomic<Integer> value = 0;
};

/// Base of objects that count their own references. Starts with none; RCShdPtr and the node
/// handles count. The last one to let go destroys the object.
template <typename Counter>
class RCBase {
public:
    RCBase() = default;
    RCBase(RCBase const&) = delete;
    RCBase& operator=(RCBase const&) = delete;
    // Members of derived classes may be node handles, whose release can throw.
    virtual ~RCBase() noexcept(false) = default;

    void addReference() const { references.increment(); }
    void removeReference() const
    {
        if (references.decrement() == 0) {
            lastReferenceRemoved();
        }
    }
    int getNbReferences() const { return references.get(); }

protected:
    virtual void lastReferenceRemoved() const { delete this; }

private:
    mutable Counter references;
};

/// Base of objects that are told before they go: when the last reference is let go, `destroy` runs.
class RCStrongBaseWithDestroy : public virtual RCBase<LkCounter<int>> {
public:
    /// Ends the object's life. Overrides call the base's version last.
    virtual void destroy() { delete this; }

protected:
    void lastReferenceRemoved() const override
    {
        const_cast<RCStrongBaseWithDestroy*>(this)->destroy();
    }
};
