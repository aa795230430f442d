#pragma once

#include "remapColorRowKernels.h"
#include "support/Frame.h"

#include <array>

/// The works that are measured, as numbers for the row kernels and for the peers.
namespace bench {

struct Work {
    char const* name;
    Content content;
    bool hasGamma;
    bool hasCurves;
};

inline constexpr std::array<Work, 4> works = {{
    {"Linear", Content::Plate, false, false},
    {"Linear + curves", Content::Plate, false, true},
    {"Linear + gamma + curves", Content::Plate, true, true},
    {"EXR display + curves", Content::Scene, true, true},
}};

inline bool isDisplay(Work const& work)
{
    return work.content == Content::Scene;
}

/// One look with numbers of its own in each channel; each work uses a part of it.
struct Look {
    static constexpr int nbEntries = 1024; ///< besides the guard entry

    Look();
    Look(Look const&) = delete;
    Look& operator=(Look const&) = delete;

    RemapColorRowKernels::CurveTable const* getCurves(Work const& work) const
    {
        return work.hasCurves ? curves : nullptr;
    }

    RemapColorRowKernels::Levels levels{};
    RemapColorRowKernels::Display display{};
    float entries[RemapColorRowKernels::nbChannels][nbEntries + 1]; ///< of the curves, over 0 to 1
    RemapColorRowKernels::CurveTable curves[RemapColorRowKernels::nbChannels];
};

} // namespace bench
