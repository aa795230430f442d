#pragma once

#include "editor/model/picture/HeldPicture.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

/// Values that lie close together, and how many there are.
struct CountedValues {
    float low;
    float high; ///< `low` for those that are 0, which nothing else is counted as
    double count;
};

/// How often there are which colours, for each channel: of 8-bit and half pictures every value by
/// itself, of float pictures to a thousandth of the value.
struct ValueCounts {
    std::array<std::vector<CountedValues>, 3> channels; ///< finite ones
    double nans = 0;                                    ///< of all channels
    double infinities = 0;

    void add(std::size_t channel, CountedValues const& found);
};

/// Counts a whole picture; null for one without colour, and where it is cancelled meanwhile. Any
/// thread.
std::shared_ptr<ValueCounts const> countValues(HeldPicture const& picture,
                                               std::atomic<bool> const& cancelled);
