#include "session/NodePart.h"

#include "pluginAPI/PiImageModifier.h"
#include "runtime/engine/SentPixels.h"
#include "runtime/graph/ValueNames.h"
#include "session/ToolKeys.h"

NodePart::NodePart(HostNode const& node, NodeValues const& values)
    : graph(makeShared<HostGraph>()), part(graph->createNode(node.getTool()))
{
    part->setValues(values);
}

NodePart NodePart::takeCurves(HostNode const& node)
{
    NodeValues values; // the transfer's defaults change nothing
    for (HostNode::ValueSlot const& slot : findValues(node, ToolKeys::adjustCurve)) {
        values.emplace(slot.name, *slot.value->getState());
    }
    return {node, values};
}

NodePart NodePart::takeTransfer(HostNode const& node, std::string const& clamp)
{
    return {node, makeTransferValues(node, clamp)};
}

NodeValues NodePart::makeTransferValues(HostNode const& node, std::string const& clamp)
{
    NodeValues values;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        values.emplace(slot.name, *slot.value->getState());
    }
    for (std::string const& off :
         {std::string(ToolKeys::adjust), clamp, std::string(PiImageModifier::getMuteValueName())}) {
        values.insert_or_assign(off, Animated<bool>(false));
    }
    values.insert_or_assign(ToolKeys::mix, Animated<double>(1.0));
    values.insert_or_assign(ToolKeys::outputDepth, Animated<int>(ToolKeys::depth32));
    return values;
}

std::vector<CoRgbaColorTyped<float>>
NodePart::send(std::vector<CoRgbaColorTyped<float>> const& pixels, double time) const
{
    return sendPixels(*part, pixels, time);
}
