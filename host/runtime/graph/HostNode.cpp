// A node built from its tool's description.

#include "runtime/graph/HostNode.h"

#include "base/Assertions.h"
#include "base/EvEventManager.h"
#include "internalAPI/PiValueChangeInterface.h"
#include "pluginAPI/PiImageModifier.h"
#include "runtime/graph/CurveNode.h"
#include "runtime/graph/FinishedPixel.h"
#include "runtime/graph/HostGraph.h"
#include "runtime/graph/HostSockets.h"
#include "runtime/graph/InputNodeBuilder.h"
#include "runtime/graph/MaskNode.h"
#include "runtime/graph/MuteNode.h"

#include <utility>

namespace {

/// The value behind an input of a plain type, at the default that its policy gives.
RCShdPtr<HostValue> makeInputValue(std::string const& name, PiSocketType const& type,
                                   RCShdPtr<PiInputPolicy const> const& policy, ValueOwner* owner)
{
    switch (type.getCode()) {
    case PiSocketType::Switch: {
        auto const* const given = dynamic_cast<PiSwitchInputPolicy const*>(policy.get());
        bool const isOn = given != nullptr && given->isOnByDefault();
        return makeShared<HostTypedValue<bool>>(name, isOn, policy, owner);
    }
    case PiSocketType::Double: {
        auto const* const given = dynamic_cast<PiRangeInputPolicy<double> const*>(policy.get());
        double const number = given != nullptr ? given->getDefault() : 0.0;
        return makeShared<HostTypedValue<double>>(name, number, policy, owner);
    }
    case PiSocketType::IntegerEnumeration: {
        auto const* const given = dynamic_cast<PiEnumPolicy const*>(policy.get());
        int const choice = given != nullptr ? given->getDefault() : 0;
        return makeShared<HostTypedValue<int>>(name, choice, policy, owner);
    }
    case PiSocketType::Curve:
        return makeShared<HostValue>(name, Animated<CurvePoints>(CurvePoints()), policy, owner);
    case PiSocketType::Image: return {};
    }
    Assertions::throwProgramAborted(__FILE__, __LINE__, "type.getCode()");
}

RCShdPtr<HostValue> makeStoredValue(std::string const& name, PiValueType const& type,
                                    ValueOwner* owner)
{
    using Policy = RCShdPtr<PiInputPolicy const>;
    switch (type.getCode()) {
    case PiValueType::Boolean:
        return makeShared<HostTypedValue<bool>>(name, false, Policy(), owner);
    case PiValueType::Double: return makeShared<HostTypedValue<double>>(name, 0.0, Policy(), owner);
    case PiValueType::Integer: return makeShared<HostTypedValue<int>>(name, 0, Policy(), owner);
    case PiValueType::DoubleArray: return makeShared<HostArrayValue>(name, owner);
    }
    Assertions::throwProgramAborted(__FILE__, __LINE__, "type.getCode()");
}

/// The most that the tool may change of a pixel; 0 for a tool that makes no pictures.
int findWidestAffect(PiToolProtocol const& tool)
{
    auto const* const modifier = dynamic_cast<PiImageModifierProtocol const*>(&tool);
    if (modifier == nullptr) {
        return 0;
    }
    if (modifier->canAffectColourAndAlpha()) {
        return PiImageModifierTypes::AffectColourAndAlpha;
    }
    return modifier->canAffectColour() ? PiImageModifierTypes::AffectColour
                                       : PiImageModifierTypes::AffectAlpha;
}

bool isMaskedTool(PiToolProtocol const& tool)
{
    auto const* const modifier = dynamic_cast<PiImageModifierProtocol const*>(&tool);
    return modifier != nullptr &&
           modifier->getMaskingMode() == PiImageModifierTypes::MaskAfterChain;
}

template <typename T>
T evaluate(HostNode const& node, std::string const& name, double time)
{
    auto const state = node.getValue(name)->getState();
    return std::get<Animated<T>>(*state).evaluate(time).getValue();
}

} // namespace

HostNode::HostNode(PiToolProtocol const& nodeTool, HostGraph& hostGraph)
    : tool(nodeTool), graph(&hostGraph)
{
    PiToolDescriptor descriptor;
    tool.describe(descriptor);
    declarations = descriptor.getDeclarations();
    controller = RCStrongPtr<PiNodeController>(tool.createController());
    controller->attach(*this);
    for (PiDeclaration const& declaration : declarations) {
        switch (declaration.kind) {
        case PiDeclaration::Requires:
            inputs[declaration.input.name] = addInput("", declaration.input);
            break;
        case PiDeclaration::Stores: addStoredValue(declaration); break;
        case PiDeclaration::Produces: break;
        }
    }
    for (ValueSlot const& slot : values) {
        bool const isCurve = std::holds_alternative<Animated<CurvePoints>>(*slot.value->getState());
        bool const isHostsOwn = slot.name == PiImageModifier::getMuteValueName() ||
                                slot.name == PiImageModifier::getAffectValueName();
        if ((!slot.isStored && !isCurve) || isHostsOwn) {
            inputDefaults.emplace(slot.name, *slot.value->getState());
        }
    }
}

HostNode::~HostNode() noexcept(false)
{
    // Whoever calls the controller may keep it for a moment longer, and curve nodes have handles.
    controller->detach();
    leaveGraph();
    // The undo history and value nodes may keep the values.
    for (ValueSlot const& slot : values) {
        slot.value->forgetOwner();
    }
}

RCShdPtr<PiInput> HostNode::findInput(std::string const& name, bool mustExist) const
{
    auto const found = inputs.find(name);
    if (found != inputs.end()) {
        return found->second;
    }
    if (mustExist) {
        throw UnknownNameError("the tool has no input \"" + name + "\"");
    }
    return {};
}

// The caller's own check names the type of what it misses.
RCShdPtr<PiValue> HostNode::findValue(std::string const& name, bool) const
{
    return getValue(name);
}

void HostNode::resetInputs()
{
    setValues(inputDefaults);
}

RCShdPtr<PiGraph> HostNode::getGraph() const
{
    return RCShdPtr<PiGraph>(graph);
}

RCShdPtr<HostValue> HostNode::getValue(std::string const& name) const
{
    for (ValueSlot const& slot : values) {
        if (slot.name == name) {
            return slot.value;
        }
    }
    return {};
}

void HostNode::notifyCreated()
{
    constexpr bool keepsRedo = true;
    PiUndoGuardNoLog const creation(keepsRedo);
    isAlive = true;
    controller->nodeCreated();
}

void HostNode::notifyLoaded()
{
    isAlive = true;
    controller->nodeLoaded();
}

void HostNode::setValues(NodeValues const& states)
{
    setValues(states, ChangeCause::Edit);
}

void HostNode::load(NodeValues const& saved)
{
    NodeValues states = saved;
    states.merge(getDefaultValues(tool)); // keeps what is saved
    setValues(states, ChangeCause::Load);
}

PxStrongHndl<PxNode const> HostNode::buildChain(PxNodePtr<PxImageProtocol const> const& source,
                                                PxNodePtr<PxImageProtocol const> const& mask)
{
    InputNodeBuilder builder(*this);
    PxStrongHndl<PxNode const> chain;
    getToolInterface().createModifierProcNode(chain, builder, source);
    if (isMasked()) {
        chain =
            addMask(chain, builder.getInputNode(PiImageModifier::getMixInputName()), source, mask);
    }
    return addMute(chain, builder.getInputNode(PiImageModifier::getMuteValueName()), source);
}

CoRgbaColorTyped<float> HostNode::finishPixel(PxTimeContext const& time,
                                              CoRgbaColorTyped<float> const& source,
                                              CoRgbaColorTyped<float> const& processed) const
{
    constexpr float withoutMask = 1.0F;
    return finishMaskedPixel(*this, time, source, processed, withoutMask);
}

CoRgbaColorTyped<float> finishMaskedPixel(HostNode const& node, PxTimeContext const& time,
                                          CoRgbaColorTyped<float> const& source,
                                          CoRgbaColorTyped<float> const& processed, float maskShare)
{
    if (evaluate<bool>(node, PiImageModifier::getMuteValueName(), timeOfMute)) {
        return source;
    }
    if (!isMaskedTool(node.getTool())) {
        return processed;
    }
    double const mix = evaluate<double>(node, PiImageModifier::getMixInputName(), time.getTime());
    return blendPixel(source, processed, maskShare * static_cast<float>(mix));
}

void HostNode::leaveGraph()
{
    graph = nullptr;
    for (RCShdPtr<CurveNode> const& curveNode : curveNodes) {
        curveNode->leaveGraph();
    }
}

bool HostNode::recordChange(HostValue& value, std::shared_ptr<ValueState const> const& before)
{
    if (isAlive && graph != nullptr) {
        graph->getHistory().record(value, before);
    }
    return isAlive;
}

void HostNode::tellChange(ValueChange const& change)
{
    RCShdPtr<HostNode> const self(this); // whoever is told of the change may let the node go
    auto* const listener = dynamic_cast<PiValueChangeInterface*>(controller.get());
    if (listener != nullptr) {
        try {
            listener->valueChanged(change.value);
        } catch (...) {
            EvEventManager::getInstance().postCurrentException();
        }
    }
    handlers.call(change);
}

void HostNode::setValues(NodeValues const& states, ChangeCause cause)
{
    for (auto const& [name, state] : states) {
        RCShdPtr<HostValue> const value = getValue(name);
        if (value.isNull()) {
            throw ValueError("the tool has no value \"" + name + "\"");
        }
        value->check(state);
    }
    RCShdPtr<HostNode> const self(this); // whoever is told of a change may let the node go
    ChangeBatch const batch(cause);
    for (ValueSlot const& slot : values) {
        auto const found = states.find(slot.name);
        if (found != states.end()) {
            slot.value->setState(found->second);
        }
    }
}

bool HostNode::isMasked() const
{
    return isMaskedTool(tool);
}

PiToolInterface& HostNode::getToolInterface() const
{
    return *castStrong<PiToolInterface>(controller);
}

RCShdPtr<PiInput> HostNode::addInput(std::string const& prefix,
                                     PiStructuredPolicyDescriptor::Member const& input)
{
    std::string const fullName = prefix + input.name;
    if (!input.type) {
        std::vector<HostStructuredInput::Member> members;
        for (PiStructuredPolicyDescriptor::Member const& member : input.structure.getMembers()) {
            members.emplace_back(member.name, addInput(fullName + ".", member));
        }
        return makeShared<HostStructuredInput>(fullName, std::move(members));
    }
    RCShdPtr<HostValue> const value =
        makeInputValue(fullName, *input.type, getToolInterface().getInputPolicy(fullName), this);
    if (!value.isNull()) {
        addValue(fullName, false, value);
    }
    RCShdPtr<PiOutput> connection;
    if (input.type->getCode() == PiSocketType::Curve) {
        curveNodes.push_back(makeShared<CurveNode>(value, *graph));
        connection = makeShared<CurveOutput>(curveNodes.back());
    }
    return makeShared<HostInput>(fullName, value, connection);
}

void HostNode::addStoredValue(PiDeclaration const& declaration)
{
    std::string const& name = declaration.input.name;
    RCShdPtr<HostValue> const value = makeStoredValue(name, *declaration.valueType, this);
    if (name == PiImageModifier::getAffectValueName()) {
        value->setState(Animated<int>(findWidestAffect(tool)));
    }
    value->forbidKeyframes();
    addValue(name, true, value);
}

RCShdPtr<HostValue> HostNode::addValue(std::string const& name, bool isStored,
                                       RCShdPtr<HostValue> value)
{
    values.push_back({name, isStored, value});
    return value;
}
