#pragma once

#include "pluginAPI/PxImageNode.h"
#include "runtime/engine/ImageSource.h"

#include <mutex>
#include <vector>

/// The start of a chain: delivers the strips that have been read and are on their way. Made on the
/// user-interface thread; strips come and go on any thread.
class SourceImageNode : public PxImageNode {
public:
    SourceImageNode(Init const& init, ImageInfo const& imageInfo);

    PxImageFormat getImageFormat() const override;
    GeRectangle<int> getImageROD(PxTimeContext const& context) const override;
    bool isChainConnected() const override { return true; }

    /// The strip with exactly the context's region. Throws the assertion failure if there is none.
    PxImageResult computeImage(PxImageContext const& context) const override;

    void addStrip(IxTile const& strip);
    void removeStrip(GeRectangle<int> const& bounds);

private:
    ImageInfo info;
    mutable std::mutex mutex;
    std::vector<IxTile> strips; // locked by mutex
};
