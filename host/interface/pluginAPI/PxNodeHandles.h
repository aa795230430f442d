#pragma once

#include "base/Assertions.h"
#include "base/RCExUtil.h"
#include "pluginAPI/PxNode.h"
#include "pluginAPI/PxRequestMgr.h"

#include <cstddef>
#include <type_traits>
#include <typeinfo>
#include <utility>

/// Throws the assertion failure "!PxRequestMgr::getInstance().isWorkerThreadCurrent()" on a worker
/// thread: handles belong to the user-interface thread.
inline void assertNodeHandleThread()
{
    Assertions::check(!PxRequestMgr::getInstance().isWorkerThreadCurrent(),
                      "!PxRequestMgr::getInstance().isWorkerThreadCurrent()");
}

/// Shared handle of a processing node. Workers use the node through a handle that already exists;
/// making, copying, setting or releasing one there is an assertion failure (a handle that goes out
/// of scope on a worker keeps its reference and throws). Using an empty handle throws the
/// null-pointer exception with the name of T.
template <typename T>
class PxNodePtr {
public:
    PxNodePtr() = default;
    PxNodePtr(std::nullptr_t) {}
    explicit PxNodePtr(T* targetNode) { set(targetNode); }
    PxNodePtr(PxNodePtr const& other) { set(other.node); }
    template <typename U>
    requires std::is_convertible_v<U*, T*> PxNodePtr(PxNodePtr<U> const& other)
    {
        set(other.get());
    }
    ~PxNodePtr() noexcept(false) { reset(); }

    /// The new node is referenced before the old one is let go.
    PxNodePtr& operator=(PxNodePtr const& other)
    {
        if (this != &other && node != other.node) {
            assertNodeHandleThread();
            PxNodePtr copy(other);
            std::swap(node, copy.node);
        }
        return *this;
    }

    void reset()
    {
        if (node != nullptr) {
            assertNodeHandleThread();
            std::exchange(node, nullptr)->removeReference();
        }
    }

    T* get() const { return node; }
    bool isNull() const { return node == nullptr; }
    explicit operator bool() const { return node != nullptr; }

    T& operator*() const
    {
        if (node == nullptr) {
            RCExUtil::throwExNullPtr(typeid(T));
        }
        return *node;
    }
    T* operator->() const { return &**this; }

private:
    void set(T* targetNode)
    {
        if (targetNode != nullptr) {
            assertNodeHandleThread();
            targetNode->addReference();
            node = targetNode;
        }
    }

    T* node = nullptr;
};

/// The handle that a node's maker hands out.
template <typename T>
class PxStrongHndl : public PxNodePtr<T> {
public:
    using PxNodePtr<T>::PxNodePtr;
};

/// The handle by which a controller or a request keeps a chain's output node.
template <typename T>
class PxUPtr : public PxNodePtr<T> {
public:
    using PxNodePtr<T>::PxNodePtr;
};

/// The same node seen as a `Wanted`. An empty handle stays empty; a node of another kind throws the
/// cast failure with both type names.
template <typename Wanted, typename T>
PxNodePtr<Wanted> castNode(PxNodePtr<T> const& handle)
{
    if (handle.isNull()) {
        return {};
    }
    auto* const wanted = dynamic_cast<Wanted*>(handle.get());
    if (wanted == nullptr) {
        RCExUtil::throwExCastFailed(typeid(*handle), typeid(Wanted));
    }
    return PxNodePtr<Wanted>(wanted);
}

/// Makes a node, wraps it in its first handle and initialises it.
template <typename T, typename... Arguments>
PxStrongHndl<T> makeNode(Arguments&&... arguments)
{
    assertNodeHandleThread(); // before there is a node that nobody would own
    PxStrongHndl<T> const node(new T(PxNode::Init(), std::forward<Arguments>(arguments)...));
    PxNode::init(PxStrongHndl<PxNode>(node.get()));
    return node;
}
