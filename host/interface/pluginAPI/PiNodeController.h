#pragma once

#include "base/RCShdPtr.h"
#include "pluginAPI/PiNode.h"

/// The code behind a node. The node owns it; user-interface thread.
class PiNodeController {
public:
    PiNodeController() = default;
    PiNodeController(PiNodeController const&) = delete;
    PiNodeController& operator=(PiNodeController const&) = delete;
    virtual ~PiNodeController() noexcept(false);

    /// The node was newly made: its values want their defaults.
    virtual void nodeCreated();

    /// The node was restored: its values are those of the project.
    virtual void nodeLoaded();

    /// The controller's node; empty before it is attached and after the node has gone.
    RCShdPtr<PiNode> getNode() const;

    /// The host's side: ties the controller to the node that owns it, until that goes.
    void attach(PiNode& owner) { node = &owner; }
    void detach() { node = nullptr; }

private:
    PiNode* node = nullptr; // The node detaches its controller before it goes.
};
