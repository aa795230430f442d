#pragma once

#include "base/RCBase.h"

#include <vector>

template <typename T>
class PxNodePtr;
class PxNode;
template <typename T = PxNode>
class PxStrongHndl;

/// A node of the processing graph. Made, initialised and destroyed on the user-interface thread;
/// evaluated on worker threads, which only read it.
class PxNode : public virtual RCStrongBaseWithDestroy {
public:
    /// What a node is constructed from; carries nothing but the host's permission.
    class Init {};

    explicit PxNode(Init const&) {}
    ~PxNode() noexcept(false) override = default;

    void destroy() override;

    /// Initialises a new node: lets it register its inputs as children. Throws the null-pointer
    /// exception for an empty handle and what the node's own `init` throws.
    static void init(PxStrongHndl<PxNode> const& node);

    /// Registers the node's inputs. Overrides call their base's version first.
    virtual void init();

    /// Tells that something below changed: everything above is told in turn. Our engine keeps no
    /// results, so this does nothing.
    virtual void propagateAndRemapInvalidation();

    /// As propagateAndRemapInvalidation, when the inputs themselves were exchanged.
    virtual void invalidateAndReinitialize();

    /// The registered inputs in the order of registration.
    std::vector<PxNode const*> const& getChildren() const { return children; }

protected:
    /// Makes `child` an input of this node. The node keeps a handle of its own for as long as the
    /// child is registered; a child may be registered more than once. An empty handle is not
    /// registered. Throws the assertion failure if this node is among what the child evaluates (a
    /// cycle).
    void registerChild(PxNodePtr<PxNode const> const& child);

    /// Ends one registration; an empty handle or a child that is not registered changes nothing.
    void unregisterChild(PxNodePtr<PxNode const> const& child);

private:
    std::vector<PxNode const*> children;
};
