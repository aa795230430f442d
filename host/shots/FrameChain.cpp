#include "shots/FrameChain.h"

FrameChain buildFrameChain(HostNode& node, ImageInfo const& info, ImageInfo const* maskInfo,
                           MaskUse maskUse)
{
    FrameChain chain;
    chain.start = makeNode<SourceImageNode>(info);
    if (maskInfo != nullptr) {
        chain.mask = makeNode<MaskImageNode>(*maskInfo, maskUse);
    }
    chain.end = castNode<PxImageProtocol const>(
        node.buildChain(PxNodePtr<PxImageProtocol const>(chain.start),
                        PxNodePtr<PxImageProtocol const>(chain.mask)));
    return chain;
}

IxPixelFormat::Depth foreseeDepth(HostNode& node)
{
    ImageInfo info;
    info.format = IxPixelFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, Rational(1, 1), false);
    return buildFrameChain(node, info, nullptr, MaskUse::AsIs).getPixelFormat().getDepth();
}
