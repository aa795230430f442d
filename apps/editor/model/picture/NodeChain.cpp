#include "editor/model/picture/NodeChain.h"

#include "runtime/engine/DeliveredStrip.h"

NodeChain::NodeChain(HostNode& node, ImageInfo const& info)
    : start(makeNode<SourceImageNode>(info)),
      chain(
          castNode<PxImageProtocol const>(node.buildChain(PxNodePtr<PxImageProtocol const>(start))))
{
}

IxTile NodeChain::send(IxTile const& tile, double time) const
{
    DeliveredStrip const delivered(*start, tile);
    return chain->computeImage(PxImageContext(time, tile.getBounds())).getTileGuard().getTile();
}
