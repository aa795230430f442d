#pragma once

#include "pluginAPI/PxTimeContext.h"
#include "primitives/GeRectangle.h"

/// A request for pixels: the moment, and the rectangle in the picture's pixel coordinates.
class PxImageContext : public PxTimeContext {
public:
    PxImageContext(double evaluationTime, GeRectangle<int> const& wantedRegion)
        : PxTimeContext(evaluationTime), region(wantedRegion)
    {
    }
    GeRectangle<int> const& getRegion() const { return region; }

private:
    GeRectangle<int> region;
};
