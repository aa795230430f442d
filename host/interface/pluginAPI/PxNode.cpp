#include "pluginAPI/PxNode.h"

#include "base/Assertions.h"
#include "pluginAPI/PxNodeHandles.h"

#include <algorithm>

namespace {

bool isReachable(PxNode const& from, PxNode const& wanted)
{
    return &from == &wanted ||
           std::any_of(from.getChildren().begin(), from.getChildren().end(),
                       [&](PxNode const* child) { return isReachable(*child, wanted); });
}

} // namespace

void PxNode::destroy()
{
    RCStrongBaseWithDestroy::destroy();
}

void PxNode::init(PxStrongHndl<PxNode> const& node)
{
    node->init();
}

void PxNode::init() {}

void PxNode::propagateAndRemapInvalidation() {}

void PxNode::invalidateAndReinitialize()
{
    propagateAndRemapInvalidation();
}

void PxNode::registerChild(PxNodePtr<PxNode const> const& child)
{
    if (child.isNull()) {
        return;
    }
    Assertions::check(!isReachable(*child, *this), "!isReachable(*child, *this)");
    children.push_back(child.get());
}

void PxNode::unregisterChild(PxNodePtr<PxNode const> const& child)
{
    auto const found = std::find(children.begin(), children.end(), child.get());
    if (found != children.end()) {
        children.erase(found);
    }
}
