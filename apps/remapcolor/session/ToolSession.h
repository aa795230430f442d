#pragma once

#include "controllerLink/ControllerLink.h"
#include "runtime/graph/HostGraph.h"
#include "runtime/loader/ToolLoader.h"

struct NodeRequest;

/// The loaded tool and one node of it. Handles of the node and of its chains are let go before the
/// session ends. One at a time; main thread.
class ToolSession {
public:
    /// A node with the values that are asked for. Throws ToolLoadError, UsageError, ValueError,
    /// SurroundingsError.
    explicit ToolSession(NodeRequest const& request);

    HostNode& getNode() const { return *node; }

    /// Loads the link and gives the node controller's operations. Once. Throws ToolLoadError.
    RCShdPtr<ControllerLink> linkController();

private:
    RCShdPtr<HostNode> prepareNode(PiToolProtocol const& tool, NodeRequest const& request);

    // In this order: the libraries outlive everything that comes from them.
    ToolLoader loader;
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
};
