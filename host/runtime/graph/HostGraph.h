#pragma once

#include "pluginAPI/PiToolProtocol.h"
#include "pluginAPI/PiUndo.h"
#include "runtime/graph/HostNode.h"
#include "runtime/undo/HostCommandStack.h"

#include <vector>

/// Nodes and their undo history. User-interface thread.
class HostGraph : public PiGraph {
public:
    HostGraph();
    ~HostGraph() noexcept(false) override;

    RCShdPtr<PiCommandStack> getCommandStack() const override { return commandStack; }
    HostCommandStack& getHistory() const { return *commandStack; }

    /// A new node of the tool, with all values at their defaults.
    RCShdPtr<HostNode> createNode(PiToolProtocol const& tool);

    /// A restored node: values that `saved` does not name are at their defaults. Throws ValueError
    /// for a value that the tool does not have or accept; there is no node then.
    RCShdPtr<HostNode> loadNode(PiToolProtocol const& tool, NodeValues const& saved);

    /// Takes the node out; it dies with its last handle.
    void removeNode(RCShdPtr<HostNode> const& node);

    std::vector<RCShdPtr<HostNode>> const& getNodes() const { return nodes; }

private:
    RCShdPtr<HostCommandStack> commandStack;
    std::vector<RCShdPtr<HostNode>> nodes;
};

/// The values of a new node of the tool: what a project may leave out.
NodeValues getDefaultValues(PiToolProtocol const& tool);
