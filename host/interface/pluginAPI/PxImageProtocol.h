#pragma once

#include "pluginAPI/PxImageContext.h"
#include "pluginAPI/PxImageFormat.h"
#include "pluginAPI/PxImageResult.h"
#include "pluginAPI/PxNode.h"

/// What delivers pictures. Evaluated on worker threads, several at once.
class PxImageProtocol : public virtual PxNode {
public:
    /// The format of the pictures; the same at every time.
    virtual PxImageFormat getImageFormat() const = 0;

    /// Where the picture has pixels at a time.
    virtual GeRectangle<int> getImageROD(PxTimeContext const& context) const = 0;

    /// The pixels of the context's region, or of the part of it that has any.
    virtual PxImageResult computeImage(PxImageContext const& context) const = 0;

    /// Whether there is a picture at the far end of the chain.
    virtual bool isChainConnected() const = 0;

    /// Whether the node can only compute whole pictures.
    virtual bool producesFullFrames() const = 0;

    /// The number of pictures delivered for one time (1; stereo would be 2).
    virtual int getNbStreams() const = 0;

protected:
    PxImageProtocol() : PxNode(Init()) {}

    /// A tile for the region in this node's format: the context's target if that fits, else a
    /// fresh one. Its pixels are not cleared.
    IxTile allocateImageBuffer(PxImageContext const& context, GeRectangle<int> const& region) const;
};

/// What decides the format of the pictures that a node makes.
class PxImageFormatProtocol : public virtual PxNode {
public:
    virtual PxImageFormat computeImageFormat() const = 0;

    /// The components of computeImageFormat, without its depth.
    virtual IxPixelFormat::Components computeImageFormatComps() const = 0;

protected:
    PxImageFormatProtocol() : PxNode(Init()) {}
};
