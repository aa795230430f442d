#pragma once

#include "pluginAPI/IxTile.h"
#include "pluginAPI/PiImageModifierTypes.h"
#include "primitives/CoColor.h"

#include <span>

/// Runs a per-row operation over a tile whose pixels come from one source of the same bounds and
/// components. The operation sees float RGBA rows whatever the tiles hold:
/// - 8 bit is v / 255; back, NaN gives 0, values are limited to 0 to 1 and rounded to nearest;
/// - half is widened exactly; back, it is rounded to nearest even, beyond 65504 to infinity;
/// - RGB comes with alpha 1, which is dropped again; ALPHA comes with black.
/// A float RGBA row is handed over where it lies. Channels that the affect type leaves out keep the
/// source's bits when both tiles have the same depth.
class PiPixelLoopOneSource {
public:
    using Row = std::span<CoRgbaColorTyped<float>>;
    using SourceRow = std::span<CoRgbaColorTyped<float> const>;

    /// The guard must outlive the loop.
    PiPixelLoopOneSource(IxWriteGuard& destination, PiImageModifierTypes::AffectType affectType);
    PiPixelLoopOneSource(PiPixelLoopOneSource const&) = delete;
    PiPixelLoopOneSource& operator=(PiPixelLoopOneSource const&) = delete;
    virtual ~PiPixelLoopOneSource();

    /// Calls processRow for every row of the destination, top to bottom, on the calling thread.
    /// Throws the assertion failure if the source lacks pixels of the destination or has other
    /// components.
    void process(IxReadGuard const& source);

    /// Fills `destination` from `source`, which has as many pixels.
    virtual void processRow(Row destination, SourceRow source) = 0;

    virtual CoRgbaColorTyped<float> processPixel(CoRgbaColorTyped<float> const& in) = 0;

private:
    IxWriteGuard& writeGuard;
    PiImageModifierTypes::AffectType affect;
};
