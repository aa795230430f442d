#include "shots/FrameChain.h"

FrameChain buildFrameChain(HostNode& node, ImageInfo const& info,
                           PxNodePtr<MaskImageNode> const& mask)
{
    FrameChain chain;
    chain.start = makeNode<SourceImageNode>(info);
    chain.mask = mask;
    chain.end = castNode<PxImageProtocol const>(
        node.buildChain(PxNodePtr<PxImageProtocol const>(chain.start),
                        PxNodePtr<PxImageProtocol const>(chain.mask)));
    return chain;
}

IxPixelFormat::Depth foreseeDepth(HostNode& node)
{
    ImageInfo info;
    info.format = IxPixelFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, Rational(1, 1), false);
    return buildFrameChain(node, info, {}).getPixelFormat().getDepth();
}
