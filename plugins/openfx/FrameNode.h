#pragma once

#include "Frame.h"
#include "pluginAPI/PxImageNode.h"

/// The start of a chain: gives parts of a host's image, as they lie there or converted a part at a
/// time. Made and destroyed under uiMutex; evaluated on any number of threads once it has a frame.
class FrameNode : public PxImageNode {
public:
    explicit FrameNode(Init const& init) : PxNode(init), PxImageNode(init, {}) {}

    /// From now on pictures are of this frame and have this format. The frame's memory stays until
    /// the last picture of it is gone.
    void setFrame(Frame const& newFrame, IxPixelFormat const& tileFormat);

    PxImageFormat getImageFormat() const override { return {format, Rational{24, 1}}; }
    GeRectangle<int> getImageROD(PxTimeContext const&) const override { return frame.bounds; }
    bool isChainConnected() const override { return true; }

    /// The context's region, which lies within the frame.
    PxImageResult computeImage(PxImageContext const& context) const override;

private:
    Frame frame;
    IxPixelFormat format;
    bool isDirect = false; // tiles lie in the frame's own memory
};
