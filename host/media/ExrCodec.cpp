// Compressions that need no library of EXR's.

#include "media/ExrCodec.h"

#include "media/Deflate.h"
#include "media/ExrChannels.h"
#include "media/ExrPredictor.h"
#include "media/ExrPxr24.h"
#include "media/ExrRle.h"
#include "runtime/engine/PackedBlocks.h"

#include <ImfChannelList.h>
#include <ImfHeader.h>
#include <vector>

namespace {

/// Bytes of this thread between the steps of packing.
std::span<std::byte> takeScratch(std::size_t size)
{
    thread_local ByteStore scratch;
    return scratch.resize(size);
}

class NoCodec : public ExrCodec {
public:
    std::size_t pack(std::span<std::byte const>, std::size_t, std::span<std::byte>) const override
    {
        return 0;
    }
    bool unpack(std::span<std::byte const>, std::size_t, std::span<std::byte>) const override
    {
        return false;
    }
};

class RleCodec : public ExrCodec {
public:
    std::size_t pack(std::span<std::byte const> samples, std::size_t,
                     std::span<std::byte> packed) const override
    {
        std::span<std::byte> const predicted = takeScratch(samples.size());
        predictBytes(samples, predicted);
        return packRuns(predicted, packed);
    }
    bool unpack(std::span<std::byte const> packed, std::size_t,
                std::span<std::byte> samples) const override
    {
        std::span<std::byte> const predicted = takeScratch(samples.size());
        if (!unpackRuns(packed, predicted)) {
            return false;
        }
        restoreBytes(predicted, samples);
        return true;
    }
};

class ZipCodec : public ExrCodec {
public:
    explicit ZipCodec(int zipLevel) : level(zipLevel) {}

    std::size_t pack(std::span<std::byte const> samples, std::size_t,
                     std::span<std::byte> packed) const override
    {
        std::span<std::byte> const predicted = takeScratch(samples.size());
        predictBytes(samples, predicted);
        return deflateBytes(predicted, packed, level);
    }
    bool unpack(std::span<std::byte const> packed, std::size_t,
                std::span<std::byte> samples) const override
    {
        std::span<std::byte> const predicted = takeScratch(samples.size());
        if (!inflateBytes(packed, predicted)) {
            return false;
        }
        restoreBytes(predicted, samples);
        return true;
    }

private:
    int level;
};

class Pxr24Codec : public ExrCodec {
public:
    explicit Pxr24Codec(Imf::ChannelList const& channels)
    {
        for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
            types.push_back(channel.channel().type);
            pixelBytes += sampleBytesOf(types.back());
        }
    }

    std::size_t pack(std::span<std::byte const> samples, std::size_t width,
                     std::span<std::byte> packed) const override
    {
        constexpr int level = 4; // smaller files by about the hundredth than with the library's
        std::span<std::byte> const planes = takePlanes(samples.size(), width);
        toPxr24(types, width, samples, planes);
        return deflateBytes(planes, packed, level);
    }
    bool unpack(std::span<std::byte const> packed, std::size_t width,
                std::span<std::byte> samples) const override
    {
        std::span<std::byte> const planes = takePlanes(samples.size(), width);
        if (!inflateBytes(packed, planes)) {
            return false;
        }
        fromPxr24(types, width, planes, samples);
        return true;
    }

private:
    std::span<std::byte> takePlanes(std::size_t sampleBytes, std::size_t width) const
    {
        std::size_t const rows = sampleBytes / (pixelBytes * width);
        return takeScratch(rows * pxr24BytesPerRow(types, width));
    }

    std::vector<Imf::PixelType> types;
    std::size_t pixelBytes = 0;
};

bool isSampled(Imf::ChannelList const& channels)
{
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        if (channel.channel().xSampling != 1 || channel.channel().ySampling != 1) {
            return true;
        }
    }
    return false;
}

} // namespace

std::unique_ptr<ExrCodec const> ExrCodec::make(Imf::Header const& header)
{
    if (isSampled(header.channels())) {
        return nullptr;
    }
    switch (header.compression()) {
    case Imf::NO_COMPRESSION: return std::make_unique<NoCodec>();
    case Imf::RLE_COMPRESSION: return std::make_unique<RleCodec>();
    case Imf::ZIPS_COMPRESSION:
    case Imf::ZIP_COMPRESSION: return std::make_unique<ZipCodec>(header.zipCompressionLevel());
    case Imf::PXR24_COMPRESSION: return std::make_unique<Pxr24Codec>(header.channels());
    default: return nullptr;
    }
}
