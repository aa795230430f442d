// Pixels that belong to no picture, through a node's chain.

#include "runtime/engine/SentPixels.h"

#include "pluginAPI/IxSampleConversion.h"
#include "runtime/engine/DeliveredStrip.h"

#include <limits>

namespace {

ImageInfo describePixels()
{
    ImageInfo info;
    info.format = IxPixelFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, Rational(1, 1), false);
    info.dataWindow = {0, 0, std::numeric_limits<int>::max(), 1}; // as many as there may be
    info.displayWindow = info.dataWindow;
    return info;
}

} // namespace

PixelChain::PixelChain(HostNode& node)
    : start(makeNode<SourceImageNode>(describePixels())),
      chain(
          castNode<PxImageProtocol const>(node.buildChain(PxNodePtr<PxImageProtocol const>(start))))
{
}

std::vector<CoRgbaColorTyped<float>>
PixelChain::send(std::span<CoRgbaColorTyped<float> const> pixels, double time) const
{
    ImageInfo const info = describePixels();
    IxTile const tile(info.format, {0, 0, static_cast<int>(pixels.size()), 1});
    writePixelRow(info.format, pixels, IxWriteGuard(tile).getRow(0));
    DeliveredStrip const delivered(*start, tile);
    PxImageResult const result = chain->computeImage(PxImageContext(time, tile.getBounds()));
    IxTile const made = result.getTileGuard().getTile();
    std::vector<CoRgbaColorTyped<float>> answer(pixels.size());
    readPixelRow(made.getPixelFormat(), IxReadGuard(made).getRow(0), answer);
    return answer;
}

std::vector<CoRgbaColorTyped<float>>
sendPixels(HostNode& node, std::vector<CoRgbaColorTyped<float>> const& pixels, double time)
{
    return PixelChain(node).send(pixels, time);
}
