#include "editor/model/document/NodeCopy.h"

NodeValues copyValues(HostNode const& node)
{
    NodeValues values;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        values.emplace(slot.name, *slot.value->getState());
    }
    return values;
}
