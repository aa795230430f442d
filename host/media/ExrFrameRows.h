#pragma once

#include "primitives/GeRectangle.h"

#include <ImfForward.h>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// The rows of a frame as blocks have them: channel after channel in the header's order, each one's
/// samples one after the other. No channel has fewer samples than pixels. Immutable after
/// construction; any thread.
class ExrFrameRows {
public:
    /// Whether every slice of `frame` is of one of the channels and has its type, so that no sample
    /// is converted or made up.
    static bool suit(Imf::ChannelList const& channels, Imf::FrameBuffer const& frame);

    /// Of a frame that suits. What it names lives longer.
    ExrFrameRows(Imf::ChannelList const& channels, Imf::FrameBuffer const& frame);

    std::size_t getBytesPerPixel() const { return pixelBytes; }

    /// Fills `samples` from the pixels in `bounds`. The frame has all channels.
    void gather(GeRectangle<int> const& bounds, std::span<std::byte> samples) const;

    /// The inverse; channels that the frame does not have are left out.
    void scatter(std::span<std::byte const> samples, GeRectangle<int> const& bounds) const;

private:
    /// Where samples lie in the frame.
    struct Place {
        std::size_t sampleBytes = 0;
        std::uintptr_t origin = 0; ///< of the sample of pixel (0, 0), which may not exist
        std::ptrdiff_t xStride = 0;
        std::ptrdiff_t yStride = 0;

        std::byte* at(int x, int y) const;
    };
    /// A channel of the frame.
    struct Channel {
        Place place;
        std::size_t before = 0; ///< bytes of a pixel that come before it in a block's row
    };
    /// Channels whose samples fill pixels of the frame without gaps, the first of them first.
    using Group = std::vector<Channel>;

    std::optional<Group> takeGroup(std::size_t sampleBytes, std::size_t size);

    std::vector<Group> groups;
    std::vector<Channel> singles; ///< all others
    std::size_t pixelBytes = 0;
};
