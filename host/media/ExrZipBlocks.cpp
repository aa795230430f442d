// Blocks of ZIP and ZIPS pictures.

#include "media/ExrZipBlocks.h"

#include <Iex.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <libdeflate.h>
#include <memory>
#include <new>

namespace {

using Bytes = std::vector<std::byte>;

constexpr unsigned predictorOffset = 128;

/// What a thread needs again and again.
struct Workshop {
    static Workshop& ofThisThread()
    {
        thread_local Workshop workshop;
        return workshop;
    }

    libdeflate_compressor* getCompressor(int level)
    {
        if (compressor == nullptr || compressorLevel != level) {
            compressor.reset(libdeflate_alloc_compressor(level));
            compressorLevel = level;
        }
        if (compressor == nullptr) {
            throw std::bad_alloc();
        }
        return compressor.get();
    }

    libdeflate_decompressor* getDecompressor()
    {
        if (decompressor == nullptr) {
            decompressor.reset(libdeflate_alloc_decompressor());
        }
        if (decompressor == nullptr) {
            throw std::bad_alloc();
        }
        return decompressor.get();
    }

    Bytes rows;      ///< a block's samples
    Bytes predicted; ///< the same before or after deflate

private:
    struct Free {
        void operator()(libdeflate_compressor* c) const { libdeflate_free_compressor(c); }
        void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
    };
    std::unique_ptr<libdeflate_compressor, Free> compressor;
    std::unique_ptr<libdeflate_decompressor, Free> decompressor;
    int compressorLevel = 0;
};

// Samples have an even number of bytes, and a block has at least one of them.

/// First bytes of all pairs, second bytes of all pairs, each as its difference to the one before.
void predict(Bytes const& rows, Bytes& predicted)
{
    std::size_t const size = rows.size();
    std::size_t const nbFirst = size / 2;
    auto const difference = [&](std::size_t index, std::size_t before) {
        return static_cast<std::byte>(static_cast<unsigned>(rows[index]) -
                                      static_cast<unsigned>(rows[before]) + predictorOffset);
    };
    predicted.resize(size);
    predicted[0] = rows[0];
    for (std::size_t pair = 1; pair < nbFirst; ++pair) {
        predicted[pair] = difference(2 * pair, 2 * pair - 2);
    }
    predicted[nbFirst] = difference(1, 2 * nbFirst - 2);
    for (std::size_t pair = 1; pair < size - nbFirst; ++pair) {
        predicted[nbFirst + pair] = difference(2 * pair + 1, 2 * pair - 1);
    }
}

/// The inverse; `predicted` is used up.
void restore(Bytes& predicted, Bytes& rows)
{
    std::size_t const size = predicted.size();
    std::size_t const nbFirst = size / 2;
    auto sum = static_cast<unsigned>(predicted[0]);
    for (std::size_t index = 1; index < size; ++index) {
        sum += static_cast<unsigned>(predicted[index]) - predictorOffset;
        predicted[index] = static_cast<std::byte>(sum);
    }
    rows.resize(size);
    for (std::size_t pair = 0; pair < nbFirst; ++pair) {
        rows[2 * pair] = predicted[pair];
        rows[2 * pair + 1] = predicted[nbFirst + pair];
    }
}

/// Copies samples of a size between two places, each with its own distance between samples.
template <typename Sample>
void copySamples(char const* from, std::size_t fromStride, char* to, std::size_t toStride,
                 int count)
{
    for (int sample = 0; sample < count; ++sample) {
        std::memcpy(to, from, sizeof(Sample));
        from += fromStride;
        to += toStride;
    }
}

void copySamples(std::size_t sampleBytes, char const* from, std::size_t fromStride, char* to,
                 std::size_t toStride, int count)
{
    if (sampleBytes == sizeof(std::uint16_t)) {
        copySamples<std::uint16_t>(from, fromStride, to, toStride, count);
    } else {
        copySamples<std::uint32_t>(from, fromStride, to, toStride, count);
    }
}

char* addressOf(Imf::Slice const& slice, int x, int y)
{
    return slice.base + static_cast<std::ptrdiff_t>(slice.xStride) * x +
           static_cast<std::ptrdiff_t>(slice.yStride) * y;
}

} // namespace

bool ExrZipBlocks::areIn(Imf::Header const& header)
{
    bool const isZip = header.compression() == Imf::ZIP_COMPRESSION ||
                       header.compression() == Imf::ZIPS_COMPRESSION;
    bool isSampled = false;
    for (auto channel = header.channels().begin(); channel != header.channels().end(); ++channel) {
        isSampled |= channel.channel().xSampling != 1 || channel.channel().ySampling != 1;
    }
    return isZip && !isSampled && header.lineOrder() != Imf::RANDOM_Y;
}

ExrZipBlocks::ExrZipBlocks(Imf::Header const& header)
    : left(header.dataWindow().min.x), width(header.dataWindow().max.x - left + 1),
      top(header.dataWindow().min.y), bottom(header.dataWindow().max.y),
      rowsPerBlock(header.compression() == Imf::ZIP_COMPRESSION ? 16 : 1),
      level(header.zipCompressionLevel())
{
    for (auto channel = header.channels().begin(); channel != header.channels().end(); ++channel) {
        Imf::PixelType const type = channel.channel().type;
        channels.push_back({channel.name(), type, type == Imf::HALF ? 2U : 4U});
        rowBytes += channels.back().sampleBytes * static_cast<std::size_t>(width);
    }
}

bool ExrZipBlocks::suit(Imf::FrameBuffer const& frame) const
{
    std::size_t nbFound = 0;
    std::size_t nbSlices = 0;
    for (Channel const& channel : channels) {
        Imf::Slice const* const slice = frame.findSlice(channel.name);
        nbFound += slice != nullptr && slice->type == channel.type ? 1 : 0;
    }
    for (auto slice = frame.begin(); slice != frame.end(); ++slice) {
        ++nbSlices;
    }
    return nbFound == nbSlices;
}

int ExrZipBlocks::countBlocks() const
{
    return (bottom - top) / rowsPerBlock + 1;
}

int ExrZipBlocks::rowsOf(int y) const
{
    return std::min(rowsPerBlock, bottom - y + 1);
}

std::size_t ExrZipBlocks::bytesOf(int y) const
{
    return rowBytes * static_cast<std::size_t>(rowsOf(y));
}

Bytes ExrZipBlocks::pack(Imf::FrameBuffer const& frame, int y) const
{
    Workshop& workshop = Workshop::ofThisThread();
    workshop.rows.resize(bytesOf(y));
    char* to = reinterpret_cast<char*>(workshop.rows.data());
    for (int row = y; row < y + rowsOf(y); ++row) {
        for (Channel const& channel : channels) {
            Imf::Slice const& slice = *frame.findSlice(channel.name);
            copySamples(channel.sampleBytes, addressOf(slice, left, row), slice.xStride, to,
                        channel.sampleBytes, width);
            to += channel.sampleBytes * static_cast<std::size_t>(width);
        }
    }
    predict(workshop.rows, workshop.predicted);
    Bytes packed(workshop.rows.size());
    // Room for less than the rows take: 0 where that is not enough.
    std::size_t const size =
        libdeflate_zlib_compress(workshop.getCompressor(level), workshop.predicted.data(),
                                 workshop.predicted.size(), packed.data(), packed.size() - 1);
    if (size == 0) {
        return workshop.rows;
    }
    packed.resize(size);
    return packed;
}

void ExrZipBlocks::unpack(std::span<std::byte const> packed, int y,
                          Imf::FrameBuffer const& frame) const
{
    Workshop& workshop = Workshop::ofThisThread();
    std::size_t const size = bytesOf(y);
    if (packed.size() < size) {
        workshop.predicted.resize(size);
        libdeflate_result const result =
            libdeflate_zlib_decompress(workshop.getDecompressor(), packed.data(), packed.size(),
                                       workshop.predicted.data(), size, nullptr);
        if (result != LIBDEFLATE_SUCCESS) {
            throw Iex::InputExc("a block of compressed pixels is damaged");
        }
        restore(workshop.predicted, workshop.rows);
    } else {
        workshop.rows.assign(packed.begin(), packed.end());
    }
    char const* from = reinterpret_cast<char const*>(workshop.rows.data());
    for (int row = y; row < y + rowsOf(y); ++row) {
        for (Channel const& channel : channels) {
            if (Imf::Slice const* const slice = frame.findSlice(channel.name)) {
                copySamples(channel.sampleBytes, from, channel.sampleBytes,
                            addressOf(*slice, left, row), slice->xStride, width);
            }
            from += channel.sampleBytes * static_cast<std::size_t>(width);
        }
    }
}
