#pragma once

#include "pluginAPI/PxNodeHandles.h"
#include "primitives/CoColor.h"
#include "runtime/engine/SourceImageNode.h"
#include "runtime/graph/HostNode.h"

#include <span>
#include <vector>

/// A node's chain without a mask, for pixels that belong to no picture. Made and destroyed on the
/// user-interface thread; it reads the node's values whenever it is used.
class PixelChain {
public:
    explicit PixelChain(HostNode& node);

    /// What becomes of the pixels at a time: mute, "Mix" and "Output Depth" included, bit for bit
    /// as in a float picture. Any thread, one at a time.
    std::vector<CoRgbaColorTyped<float>> send(std::span<CoRgbaColorTyped<float> const> pixels,
                                              double time) const;

private:
    PxNodePtr<SourceImageNode> start;
    PxNodePtr<PxImageProtocol const> chain;
};

/// The same, once. User-interface thread.
std::vector<CoRgbaColorTyped<float>>
sendPixels(HostNode& node, std::vector<CoRgbaColorTyped<float>> const& pixels, double time);
