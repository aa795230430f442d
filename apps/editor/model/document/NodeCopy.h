#pragma once

#include "runtime/graph/HostGraph.h"

#include <memory>
#include <vector>

/// The states of all values of a node at one moment. Cheap to copy and to compare.
class NodeStates {
public:
    NodeStates() = default;
    explicit NodeStates(HostNode const& node);

    bool operator==(NodeStates const&) const = default;

private:
    friend class NodeCopy;

    std::vector<std::shared_ptr<ValueState const>> states; ///< in the node's order of values
};

/// A node of the tool for what is computed aside. It takes the values of the edited one over
/// between two computations: each has the values of one moment, and the edited node waits for
/// nobody. User-interface thread.
class NodeCopy {
public:
    explicit NodeCopy(PiToolProtocol const& tool)
        : graph(makeShared<HostGraph>()), node(graph->createNode(tool))
    {
    }
    HostNode& getNode() const { return *node; }

    /// Takes over what has changed since the last time. `newStates` are of a node of the same tool.
    void take(NodeStates const& newStates);

private:
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
    NodeStates taken;
};
