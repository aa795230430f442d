#pragma once

#include <ImfForward.h>
#include <ImfPixelType.h>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

/// Packs and unpacks the blocks of ZIP and ZIPS scan-line pictures with a faster deflate than the
/// EXR library's own, so that several threads can do it at once. Immutable after construction; any
/// thread.
///
/// A block holds its rows from the top; each row channel after channel in the header's order, each
/// channel's samples one after the other with the low byte first. Packed, the first bytes of all
/// pairs come before the second ones, each byte is the difference to the one before it plus 128,
/// and all is deflated; a block that does not become smaller is stored as it is.
/// Source: "OpenEXR File Layout", of the OpenEXR project.
class ExrZipBlocks {
public:
    /// Whether a picture of scan lines with such a header has blocks of this kind, without channels
    /// of fewer samples than pixels.
    static bool areIn(Imf::Header const& header);

    explicit ExrZipBlocks(Imf::Header const& header);

    /// Whether every slice of `frame` has the type of its channel, so that no sample is converted.
    bool suit(Imf::FrameBuffer const& frame) const;

    int getRowsPerBlock() const { return rowsPerBlock; }
    int countBlocks() const;
    /// The number of the block, from the top, that has row `y`.
    int indexOf(int y) const { return (y - top) / rowsPerBlock; }

    /// The block that begins with row `y`. `frame` has a slice for every channel.
    std::vector<std::byte> pack(Imf::FrameBuffer const& frame, int y) const;

    /// Fills the slices of `frame` from the block that begins with row `y`; channels without a
    /// slice are left out. Throws Iex::InputExc for a damaged block.
    void unpack(std::span<std::byte const> packed, int y, Imf::FrameBuffer const& frame) const;

private:
    struct Channel {
        std::string name;
        Imf::PixelType type;
        std::size_t sampleBytes;
    };

    int rowsOf(int y) const;
    std::size_t bytesOf(int y) const;

    std::vector<Channel> channels;
    std::size_t rowBytes = 0;
    int left;
    int width;
    int top;
    int bottom; ///< last row
    int rowsPerBlock;
    int level;
};
