#pragma once

#include <ImfForward.h>
#include <cstddef>
#include <memory>
#include <span>

/// Packs and unpacks the samples of blocks without the library, where that is faster: no
/// compression at all, RLE, ZIP, ZIPS and PXR24. A block has row after row; each row has channel
/// after channel in the header's order, each channel's samples with the low byte first. A block
/// that does not become smaller is stored as it is, of which its size tells. Immutable after
/// construction; any thread.
class ExrCodec {
public:
    virtual ~ExrCodec() = default;

    /// Packs the block `samples` with rows of `width` pixels into `packed`; returns how many bytes
    /// it took, 0 where there was no room.
    virtual std::size_t pack(std::span<std::byte const> samples, std::size_t width,
                             std::span<std::byte> packed) const = 0;

    /// Whether `packed` becomes exactly the block `samples`, which it fills.
    virtual bool unpack(std::span<std::byte const> packed, std::size_t width,
                        std::span<std::byte> samples) const = 0;

    /// Null where the library is to do it: for other compressions, and for channels of fewer
    /// samples than pixels.
    static std::unique_ptr<ExrCodec const> make(Imf::Header const& header);
};
