#include "runtime/graph/InputNodeBuilder.h"

#include "runtime/graph/HostNode.h"
#include "runtime/graph/HostSockets.h"
#include "runtime/values/ValueNodes.h"

PxStrongHndl<> InputNodeBuilder::getInputNode(std::string const& name)
{
    auto const known = made.find(name);
    if (known != made.end()) {
        return known->second;
    }
    RCShdPtr<HostValue> const value = node.getValue(name);
    if (value.isNull()) {
        return {};
    }
    PxStrongHndl<> const valueNode = makeValueNode(value);
    made.emplace(name, valueNode);
    return valueNode;
}

PxStrongHndl<> InputNodeBuilder::getInputNode(RCShdPtr<PiInput const> const& input)
{
    return input.isNull() ? PxStrongHndl<>() : getInputNode(input->getName());
}
