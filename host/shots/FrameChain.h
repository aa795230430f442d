#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "runtime/engine/MaskImageNode.h"
#include "runtime/graph/HostNode.h"

/// A node's way from a picture to a picture. User-interface thread; lives while workers use it.
struct FrameChain {
    PxNodePtr<SourceImageNode> start;
    PxNodePtr<MaskImageNode> mask; ///< empty for none
    PxNodePtr<PxImageProtocol const> end;

    IxPixelFormat getPixelFormat() const { return end->getImageFormat().getPixelFormat(); }
};

/// The chain of a node for a picture of `info`; `mask` is empty for none.
FrameChain buildFrameChain(HostNode& node, ImageInfo const& info,
                           PxNodePtr<MaskImageNode> const& mask);

/// Depth of what the node makes of a float picture: known before the input is.
IxPixelFormat::Depth foreseeDepth(HostNode& node);
