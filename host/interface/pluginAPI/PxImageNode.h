#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "pluginAPI/PxNodeHandles.h"

/// A node that makes pictures from those of a source: everything but the pixels follows the source
/// unless a derived class says otherwise.
class PxImageNode : public PxImageProtocol, public PxImageFormatProtocol {
public:
    /// `source` may be empty for a node without one, which then overrides what asks it; otherwise
    /// the derived class registers it as a child.
    PxImageNode(Init const& init, PxNodePtr<PxImageProtocol const> const& source);

    PxImageFormat getImageFormat() const override;
    GeRectangle<int> getImageROD(PxTimeContext const& context) const override;
    bool isChainConnected() const override;
    bool producesFullFrames() const override;
    int getNbStreams() const override;
    PxImageFormat computeImageFormat() const override;
    IxPixelFormat::Components computeImageFormatComps() const override;

    void init() override;

private:
    PxNodePtr<PxImageProtocol const> imageSource;
};
