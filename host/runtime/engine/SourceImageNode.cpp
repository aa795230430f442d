#include "runtime/engine/SourceImageNode.h"

#include "base/Assertions.h"

#include <algorithm>

SourceImageNode::SourceImageNode(Init const& init, ImageInfo const& imageInfo)
    : PxNode(init), PxImageNode(init, {}), info(imageInfo)
{
}

PxImageFormat SourceImageNode::getImageFormat() const
{
    return {info.format, info.frameRate};
}

GeRectangle<int> SourceImageNode::getImageROD(PxTimeContext const&) const
{
    return info.dataWindow;
}

PxImageResult SourceImageNode::computeImage(PxImageContext const& context) const
{
    std::lock_guard const lock(mutex);
    auto const found = std::find_if(strips.begin(), strips.end(), [&](IxTile const& strip) {
        return strip.getBounds() == context.getRegion();
    });
    Assertions::check(found != strips.end(), "found != strips.end()");
    return {*found, PxValidityInterval::getFull()};
}

void SourceImageNode::addStrip(IxTile const& strip)
{
    std::lock_guard const lock(mutex);
    strips.push_back(strip);
}

void SourceImageNode::removeStrip(GeRectangle<int> const& bounds)
{
    std::lock_guard const lock(mutex);
    std::erase_if(strips, [&](IxTile const& strip) { return strip.getBounds() == bounds; });
}
