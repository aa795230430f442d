#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "runtime/engine/SourceImageNode.h"
#include "runtime/graph/HostNode.h"

/// A chain of a node for the pixels of one picture. Made and let go of on the user-interface
/// thread; tiles are sent on any, several at once, while the node does not change.
class NodeChain {
public:
    NodeChain(HostNode& node, ImageInfo const& info);

    /// What becomes of a tile in the picture's format, within its data window. No two tiles that
    /// are on their way have the same bounds.
    IxTile send(IxTile const& tile, double time) const;

private:
    PxNodePtr<SourceImageNode> start;
    PxNodePtr<PxImageProtocol const> chain;
};
