#pragma once

#include "runtime/engine/MaskFeed.h"
#include "runtime/engine/MaskImageNode.h"
#include "runtime/graph/HostNode.h"

#include <array>
#include <cstdint>
#include <functional>

/// What one channel holds in an area. NaN and infinities are counted apart: mean, least and
/// greatest are those of the other values, and 0 where there are none.
struct ChannelSummary {
    double mean = 0.0; ///< summed in double, row after row
    float least = 0.0F;
    float greatest = 0.0F;
    std::uint64_t values = 0; ///< finite ones
    std::uint64_t nans = 0;
    std::uint64_t infinities = 0;
};

/// Red, green, blue and alpha before and after the tool.
struct AreaSummary {
    std::array<ChannelSummary, 4> in;
    std::array<ChannelSummary, 4> out;
};

/// A mask on its way into a chain.
struct ChainMask {
    PxNodePtr<MaskImageNode> node; ///< empty for none
    MaskFeed* feed = nullptr;
};

/// The strip of a source that the row lies in; strips come in the picture's own order.
GeRectangle<int> findStrip(ImageSource const& source, int row);

/// A chain of its own for areas of a picture. Made and destroyed on the user-interface thread; what
/// it names lives longer. The node's output depth is 32 bit.
class AreaPicker {
public:
    AreaPicker(HostNode& node, ImageSource& imageSource, ChainMask const& chainMask = {});

    /// Sends the pixels of `area`, which lies within the data window, through the chain as float,
    /// strip by strip, on the calling thread: any one at a time, while the node does not change.
    /// `beforeStrip` may throw to end it. Throws ImageFileError.
    AreaSummary pick(GeRectangle<int> const& area, double time,
                     std::function<void()> const& beforeStrip);

private:
    ImageSource& source;
    ChainMask mask;
    PxNodePtr<SourceImageNode> start;
    PxNodePtr<PxImageProtocol const> chain;
};
