#include "FrameNode.h"

#include "pluginAPI/IxSampleConversion.h"

#include <vector>

void FrameNode::setFrame(Frame const& newFrame, IxPixelFormat const& tileFormat)
{
    frame = newFrame;
    format = tileFormat;
    isDirect = frame.findTileFormat() == format;
}

PxImageResult FrameNode::computeImage(PxImageContext const& context) const
{
    GeRectangle<int> const& region = context.getRegion();
    if (isDirect) {
        IxTile const tile(format, region, frame.getPixel(region.x0, region.y0), frame.rowStep);
        return {tile, PxValidityInterval::getFull()};
    }
    IxTile const tile(format, region);
    IxWriteGuard const guard(tile);
    std::vector<CoRgbaColorTyped<float>> row(static_cast<std::size_t>(region.getWidth()));
    for (int y = region.y0; y < region.y1; ++y) {
        readPixels(frame, region.x0, y, row);
        writePixelRow(format, row, guard.getRow(y));
    }
    return {tile, PxValidityInterval::getFull()};
}
