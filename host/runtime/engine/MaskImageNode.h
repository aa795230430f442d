#pragma once

#include "runtime/engine/SourceImageNode.h"
#include "runtime/graph/MaskUse.h"

#include <atomic>

/// The start of a chain for a mask.
class MaskImageNode : public SourceImageNode, public MaskMeaning {
public:
    MaskImageNode(Init const& init, ImageInfo const& imageInfo, MaskUse maskUse)
        : PxNode(init), SourceImageNode(init, imageInfo), use(maskUse)
    {
    }
    MaskUse getMaskUse() const override { return use; }
    void noteBlended(bool hadEffect) const override
    {
        wasBlended = true;
        isEffective = isEffective || hadEffect;
    }

    /// Whether the mask let nothing through of all that was blended so far.
    bool isInVain() const { return wasBlended && !isEffective; }

private:
    MaskUse use;
    mutable std::atomic<bool> wasBlended = false; // before isEffective
    mutable std::atomic<bool> isEffective = false;
};
