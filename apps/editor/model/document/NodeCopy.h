#pragma once

#include "runtime/graph/HostGraph.h"

/// The states of all values of a node.
NodeValues copyValues(HostNode const& node);

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

private:
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
};
