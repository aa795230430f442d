#pragma once

#include "pluginAPI/IxTile.h"
#include "pluginAPI/PxTimeContext.h"
#include "primitives/GeRectangle.h"

#include <utility>

/// A request for pixels: the moment, and the rectangle in the picture's pixel coordinates.
class PxImageContext : public PxTimeContext {
public:
    PxImageContext(double evaluationTime, GeRectangle<int> const& wantedRegion)
        : PxTimeContext(evaluationTime), region(wantedRegion)
    {
    }

    /// Asks for the pixels in `resultTarget`, to spare a copy. Whoever finds it of another format
    /// or region than its result leaves it alone.
    PxImageContext(double evaluationTime, IxTile resultTarget)
        : PxTimeContext(evaluationTime), region(resultTarget.getBounds()),
          target(std::move(resultTarget))
    {
    }
    GeRectangle<int> const& getRegion() const { return region; }

    /// Where the pixels are wanted; a null tile if anywhere.
    IxTile const& getTarget() const { return target; }

private:
    GeRectangle<int> region;
    IxTile target;
};
