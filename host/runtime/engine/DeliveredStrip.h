#pragma once

#include "runtime/engine/SourceImageNode.h"

/// Makes a strip the start of the chain for a scope, however the scope ends.
class DeliveredStrip {
public:
    DeliveredStrip(SourceImageNode& startNode, IxTile const& tile)
        : sourceNode(startNode), bounds(tile.getBounds())
    {
        sourceNode.addStrip(tile);
    }
    DeliveredStrip(DeliveredStrip const&) = delete;
    DeliveredStrip& operator=(DeliveredStrip const&) = delete;
    ~DeliveredStrip() { sourceNode.removeStrip(bounds); }

private:
    SourceImageNode& sourceNode;
    GeRectangle<int> bounds;
};
