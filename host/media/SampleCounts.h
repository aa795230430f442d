#pragma once

#include "media/PictureScan.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

/// Counts samples that are no finite numbers, by their bits: the exponent of both is full, and an
/// infinity has no further bits.
template <typename Bits>
void countSpecials(std::byte const* samples, std::size_t count, std::size_t step,
                   ChannelScan& channel)
{
    constexpr Bits magnitude = std::numeric_limits<Bits>::max() >> 1;
    constexpr Bits infinity = sizeof(Bits) == 2 ? Bits{0x7c00} : static_cast<Bits>(0x7f800000);
    for (std::size_t sample = 0; sample < count; ++sample) {
        Bits bits = 0;
        std::memcpy(&bits, samples + sample * step, sizeof(bits));
        bits &= magnitude;
        channel.nbNan += bits > infinity ? 1 : 0;
        channel.nbInfinite += bits == infinity ? 1 : 0;
    }
}
