#include "editor/model/document/NodeCopy.h"

#include <cstddef>

NodeStates::NodeStates(HostNode const& node)
{
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        states.push_back(slot.value->getState());
    }
}

void NodeCopy::take(NodeStates const& newStates)
{
    NodeValues changed;
    taken.states.resize(newStates.states.size());
    for (std::size_t index = 0; index < newStates.states.size(); ++index) {
        if (newStates.states[index] != taken.states[index]) {
            changed.emplace(node->getValues()[index].name, *newStates.states[index]);
        }
    }
    node->setValues(changed);
    taken = newStates;
}
