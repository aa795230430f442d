// Pixels that belong to no picture, through a node's chain.

#include "runtime/engine/SentPixels.h"

#include "pluginAPI/IxSampleConversion.h"
#include "runtime/engine/DeliveredStrip.h"
#include "runtime/engine/SourceImageNode.h"

std::vector<CoRgbaColorTyped<float>>
sendPixels(HostNode& node, std::vector<CoRgbaColorTyped<float>> const& pixels, double time)
{
    ImageInfo info;
    info.format = IxPixelFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, Rational(1, 1), false);
    info.dataWindow = {0, 0, static_cast<int>(pixels.size()), 1};
    info.displayWindow = info.dataWindow;
    auto const start = makeNode<SourceImageNode>(info);
    auto const chain =
        castNode<PxImageProtocol const>(node.buildChain(PxNodePtr<PxImageProtocol const>(start)));
    IxTile const tile(info.format, info.dataWindow);
    writePixelRow(info.format, pixels, IxWriteGuard(tile).getRow(0));
    DeliveredStrip const delivered(*start, tile);
    PxImageResult const result = chain->computeImage(PxImageContext(time, info.dataWindow));
    IxTile const made = result.getTileGuard().getTile();
    std::vector<CoRgbaColorTyped<float>> answer(pixels.size());
    readPixelRow(made.getPixelFormat(), IxReadGuard(made).getRow(0), answer);
    return answer;
}
