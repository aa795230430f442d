#pragma once

// The arithmetic of a row of pixels: transfer, adjusted curves, clamp, as remapColorSteps.h gives
// them for a value. One source, compiled for several instruction sets; the fastest that the
// processor has is chosen once for the process. Every set gives the same bits for the same pixel,
// wherever it stands in a row.
//
// Red, green and blue have index 0, 1 and 2. Rows may have any length and alignment; source and
// destination are the same row or do not overlap. Any thread.

#include "base/InInstructionSet.h"
#include "primitives/CoColor.h"
#include "remapColorPower.h"
#include "remapColorSteps.h"

#include <cstddef>

namespace RemapColorRowKernels {

inline constexpr int nbChannels = 3;
using Pixel = CoRgbaColorTyped<float>;

using RemapColorSteps::CurveTable;
using RemapColorSteps::EndLine;

/// The working values of the Linear mode's steps.
struct Levels {
    struct Range {
        float low;
        float high;
    };

    float scale[nbChannels];
    float offset[nbChannels];
    RemapColorPower::PreparedPower invGamma[nbChannels];
    Range clampRange[nbChannels];
};

/// The working values of the EXR display mode's steps.
struct Display {
    float defog[nbChannels];
    float exposureFactor[nbChannels];
    float kneeLow[nbChannels];
    float kneeFactor[nbChannels];
    RemapColorPower::PreparedPower invGamma[nbChannels];
};

/// Where a row goes.
struct RowTarget {
    Pixel* pixels;
    /// Past the caches: for a destination that is not read again soon.
    bool isStreamed = false;
};

/// The kernels of one instruction set. `curves` is null where no curve is applied, else it points
/// to the tables of the three channels.
struct KernelSet {
    using LevelsKernel = void (*)(Levels const& levels, CurveTable const* curves,
                                  Pixel const* source, RowTarget destination, std::size_t nbPixels);
    LevelsKernel line;
    LevelsKernel linePower;
    LevelsKernel lineClamp;
    LevelsKernel linePowerClamp;

    void (*display)(Display const& display, CurveTable const* curves, Pixel const* source,
                    RowTarget destination, std::size_t nbPixels);
};

/// The kernels of a set that is available.
KernelSet const& kernelsOf(InInstructionSet set);

/// Those of the chosen set.
KernelSet const& chosenKernels();

} // namespace RemapColorRowKernels
