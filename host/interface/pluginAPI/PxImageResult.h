#pragma once

#include "pluginAPI/IxTile.h"
#include "pluginAPI/PxResult.h"

/// Computed pixels.
class PxImageResult : public PxBaseResult {
public:
    PxImageResult(IxTile const& resultTile, PxValidityInterval const& resultValidity)
        : PxBaseResult(resultValidity), guard(resultTile)
    {
    }

    /// The pixels that the result holds, in the picture's coordinates.
    GeRectangle<int> const& getPixelRegion() const { return guard.getTile().getBounds(); }

    /// Reading access; valid as long as any copy of the guard or of the result lives.
    IxReadGuard const& getTileGuard() const { return guard; }

private:
    IxReadGuard guard;
};
