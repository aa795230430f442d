#pragma once

#include "base/InInstructionSet.h"

#include <cstddef>
#include <cstdint>

/// Conversions of runs of samples, one source compiled for several instruction sets; every set
/// gives the same bits. Pure functions; any thread.
struct IxSampleKernels {
    /// The value of each half, exactly; a NaN becomes quiet and keeps its payload.
    void (*halvesToFloats)(std::uint16_t const* halves, float* floats, std::size_t count);

    /// The nearest half of each float, ties to even; beyond 65504 and a rounding step, infinity; a
    /// NaN becomes quiet and keeps the upper bits of its payload.
    void (*floatsToHalves)(float const* floats, std::uint16_t* halves, std::size_t count);

    /// value / 255
    void (*bytesToFloats)(std::uint8_t const* bytes, float* floats, std::size_t count);

    /// NaN gives 0; below 0 and above 1 are limited; value * 255 is rounded to the nearest integer.
    void (*floatsToBytes)(float const* floats, std::uint8_t* bytes, std::size_t count);

    /// Those of a set that is available.
    static IxSampleKernels const& of(InInstructionSet set);

    /// Those of the chosen set.
    static IxSampleKernels const& chosen();
};
