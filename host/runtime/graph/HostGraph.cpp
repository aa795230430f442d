#include "runtime/graph/HostGraph.h"

#include <algorithm>

HostGraph::HostGraph() : commandStack(makeShared<HostCommandStack>()) {}

HostGraph::~HostGraph() noexcept(false)
{
    for (RCShdPtr<HostNode> const& node : nodes) {
        node->leaveGraph();
    }
}

RCShdPtr<HostNode> HostGraph::createNode(PiToolProtocol const& tool)
{
    auto const node = makeShared<HostNode>(tool, *this);
    node->notifyCreated();
    nodes.push_back(node);
    return node;
}

RCShdPtr<HostNode> HostGraph::loadNode(PiToolProtocol const& tool, NodeValues const& saved)
{
    auto const node = makeShared<HostNode>(tool, *this);
    node->setValues(getDefaultValues(tool));
    node->setValues(saved);
    node->notifyLoaded();
    nodes.push_back(node);
    return node;
}

void HostGraph::removeNode(RCShdPtr<HostNode> const& node)
{
    auto const found = std::find(nodes.begin(), nodes.end(), node);
    if (found != nodes.end()) {
        node->leaveGraph();
        nodes.erase(found);
    }
}

NodeValues getDefaultValues(PiToolProtocol const& tool)
{
    // Only a new node knows the tool's own defaults: the description gives some values none.
    auto const graph = makeShared<HostGraph>();
    NodeValues defaults;
    for (HostNode::ValueSlot const& slot : graph->createNode(tool)->getValues()) {
        defaults.emplace(slot.name, *slot.value->getState());
    }
    return defaults;
}
