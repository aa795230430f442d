// The tool in the bundle: its packages, its nodes and their chains.

#include "ToolNode.h"

#include "base/Assertions.h"
#include "base/InPackageInit.h"
#include "pluginAPI/PiImageModifier.h"
#include "runtime/graph/MaskNode.h"
#include "runtime/values/ValueNodes.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr char const* toolName = "Remap Color";

PxNodePtr<PxImageProtocol const> asPicture(PxNodePtr<PxNode const> const& node)
{
    return castNode<PxImageProtocol const>(node);
}

/// Equal, also in the sign of a zero.
bool isSame(NodeValues const& some, NodeValues const& others)
{
    return std::equal(
        some.begin(), some.end(), others.begin(), others.end(),
        [](NodeValues::value_type const& one, NodeValues::value_type const& other) {
            auto const* const number = std::get_if<Animated<double>>(&one.second);
            return one == other &&
                   (number == nullptr ||
                    std::signbit(number->getKeys().front().value) ==
                        std::signbit(
                            std::get<Animated<double>>(other.second).getKeys().front().value));
        });
}

} // namespace

void startPackages()
{
    constexpr bool isInteractive = false;
    InPackageRegistry::getInstance().startPackages(isInteractive);
}

void stopPackages()
{
    InPackageRegistry::getInstance().shutDownPackages();
}

std::mutex& uiMutex()
{
    static std::mutex mutex;
    return mutex;
}

PiToolProtocol const& findTool()
{
    PiToolProtocol const* const tool = PiToolRegistry::getInstance().find(toolName);
    Assertions::check(tool != nullptr, "tool != nullptr");
    return *tool;
}

ToolNode::ToolNode()
    : graph(makeShared<HostGraph>()), node(graph->createNode(findTool())),
      mix(makeShared<HostTypedValue<double>>("Mix", 1.0, RCShdPtr<PiInputPolicy const>(), nullptr)),
      premultiplies(makeShared<HostTypedValue<bool>>("Premultiply", false,
                                                     RCShdPtr<PiInputPolicy const>(), nullptr)),
      source(makeNode<FrameNode>()), mask(makeNode<FrameNode>())
{
    PxNodePtr<PxImageProtocol const> const picture(source.get());
    PxStrongHndl<> const mixNode = makeValueNode(mix);
    PxStrongHndl<> const premultNode = makeValueNode(premultiplies);
    plain = asPicture(node->buildChain(picture));
    auto const between =
        addPremultiply(node->buildChain(addUnpremultiply(picture, premultNode)), premultNode);
    mixed = asPicture(addMask(between, mixNode, picture, {}));
    masked =
        asPicture(addMask(between, mixNode, picture, PxNodePtr<PxImageProtocol const>(mask.get())));
}

void ToolNode::setValues(NodeValues const& values)
{
    if (isSame(values, current)) {
        return;
    }
    std::lock_guard const lock(uiMutex());
    current.clear(); // should a value be refused
    node->setValues(values);
    current = values;
}

PxImageProtocol const& ToolNode::prepareChain(ChainUse const& use)
{
    std::lock_guard const lock(uiMutex());
    mix->setState(Animated<double>(use.mix));
    premultiplies->setState(Animated<bool>(use.isUnpremultiplied));
    if (use.isMasked) {
        return *masked;
    }
    return use.isUnpremultiplied || use.mix != 1.0 ? *mixed : *plain;
}

ToolNodePool::Lease::Lease(ToolNodePool& lendingPool, std::unique_ptr<ToolNode> leasedNode)
    : pool(lendingPool), node(std::move(leasedNode))
{
}

ToolNodePool::Lease::~Lease()
{
    std::lock_guard const lock(uiMutex());
    pool.idle.push_back(std::move(node));
}

ToolNodePool::Lease ToolNodePool::take()
{
    std::lock_guard const lock(uiMutex());
    if (idle.empty()) {
        idle.reserve(1);
        return {*this, std::make_unique<ToolNode>()};
    }
    auto node = std::move(idle.back());
    idle.pop_back();
    return {*this, std::move(node)};
}

void ToolNodePool::clear()
{
    std::lock_guard const lock(uiMutex());
    idle.clear();
}
