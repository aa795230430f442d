#include "pluginAPI/PxImageNode.h"

IxTile PxImageProtocol::allocateImageBuffer(PxImageContext const& context,
                                            GeRectangle<int> const& region) const
{
    IxPixelFormat const format = getImageFormat().getPixelFormat();
    IxTile const& target = context.getTarget();
    bool const fits =
        !target.isNull() && target.getBounds() == region && target.getPixelFormat() == format;
    return fits ? target : IxTile(format, region);
}

PxImageNode::PxImageNode(Init const& init, PxNodePtr<PxImageProtocol const> const& source)
    : PxNode(init), imageSource(source)
{
}

PxImageFormat PxImageNode::getImageFormat() const
{
    return computeImageFormat();
}

GeRectangle<int> PxImageNode::getImageROD(PxTimeContext const& context) const
{
    return imageSource->getImageROD(context);
}

bool PxImageNode::isChainConnected() const
{
    return !imageSource.isNull() && imageSource->isChainConnected();
}

bool PxImageNode::producesFullFrames() const
{
    return false;
}

int PxImageNode::getNbStreams() const
{
    return 1;
}

PxImageFormat PxImageNode::computeImageFormat() const
{
    return imageSource->getImageFormat();
}

IxPixelFormat::Components PxImageNode::computeImageFormatComps() const
{
    return computeImageFormat().getPixelFormat().getComponents();
}

void PxImageNode::init()
{
    PxNode::init();
}
