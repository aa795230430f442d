// Blocks of rows and tiles, packed and unpacked.

#include "media/ExrBlocks.h"

#include "media/ExrChannels.h"
#include "media/ExrFrameRows.h"
#include "media/ExrPackedSize.h"

#include <ImfChannelList.h>
#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

/// A block's samples, of this thread.
std::span<std::byte> takeSamples(std::size_t size)
{
    thread_local ByteStore samples;
    return samples.resize(size);
}

std::size_t countPixels(GeRectangle<int> const& bounds)
{
    return static_cast<std::size_t>(bounds.getWidth()) *
           static_cast<std::size_t>(bounds.getHeight());
}

/// Adds a block of at most `most` bytes that `fill` makes of the room, returning how many it took.
template <typename Fill>
void addBlock(PackedBlocks& blocks, std::uint64_t number, std::size_t roomBefore, std::size_t most,
              Fill const& fill)
{
    blocks.memory.grow(roomBefore);
    std::size_t const begin = blocks.memory.size();
    std::size_t const size = fill(blocks.memory.grow(most));
    blocks.memory.shrink(most - size);
    blocks.list.push_back({number, begin, size});
}

} // namespace

ExrBlocks::ExrBlocks(ExrHeader const& partHeader)
    : header(partHeader.header), grid(partHeader), codec(ExrCodec::make(header)),
      memoryPicture(header, partHeader.isTiled)
{
}

int ExrBlocks::getRowsPerRun(int height) const
{
    int rows = grid.getRowsPerChunk();
    for (ExrFurtherChannel const& channel : listChannels(header.channels())) {
        rows = static_cast<int>(
            std::min<std::int64_t>(std::lcm<std::int64_t>(rows, channel.ySampling), height));
    }
    return rows;
}

/// Of the rows in `bounds`, as the file has them: rows of blocks from the top or the bottom, each
/// from the left.
std::vector<std::uint64_t> ExrBlocks::listBlocks(ExrChunkGrid::Level const& level,
                                                 GeRectangle<int> const& bounds) const
{
    std::uint64_t const first = grid.firstInRow(level, bounds.y0);
    std::uint64_t const last = grid.firstInRow(level, bounds.y1 - 1);
    std::vector<std::uint64_t> numbers;
    for (std::uint64_t row = first; row <= last; row += level.across) {
        bool const isReversed = header.lineOrder() == Imf::DECREASING_Y;
        std::uint64_t const begin = isReversed ? first + last - row : row;
        for (std::uint64_t column = 0; column < level.across; ++column) {
            numbers.push_back(begin + column);
        }
    }
    return numbers;
}

void ExrBlocks::unpack(PackedBlocks const& blocks, GeRectangle<int> const& bounds,
                       Imf::FrameBuffer const& frame) const
{
    if (codec == nullptr || !ExrFrameRows::suit(header.channels(), frame)) {
        unpackByLibrary(blocks, bounds, frame);
        return;
    }
    ExrFrameRows const rows(header.channels(), frame);
    for (PackedBlock const& block : blocks.list) {
        GeRectangle<int> const area = grid.boundsOf(block.number);
        std::span<std::byte const> const packed = blocks.bytesOf(block);
        std::size_t const size = countPixels(area) * rows.getBytesPerPixel();
        if (packed.size() == size) {
            rows.scatter(packed, area); // stored as it is
            continue;
        }
        std::span<std::byte> const samples = takeSamples(size);
        if (!codec->unpack(packed, static_cast<std::size_t>(area.getWidth()), samples)) {
            throwDamagedBlock();
        }
        rows.scatter(samples, area);
    }
}

/// The library takes less than a block should be for all of it.
void ExrBlocks::unpackByLibrary(PackedBlocks const& blocks, GeRectangle<int> const& bounds,
                                Imf::FrameBuffer const& frame) const
{
    std::vector<ExrFurtherChannel> const channels = listChannels(header.channels());
    std::vector<PackedBlock> ordered = blocks.list;
    std::sort(ordered.begin(), ordered.end(),
              [](PackedBlock const& a, PackedBlock const& b) { return a.number < b.number; });
    std::vector<std::span<std::byte const>> packed;
    for (PackedBlock const& block : ordered) {
        packed.push_back(blocks.bytesOf(block));
        checkFills(packed.back(), furtherBytesOf(channels, grid.boundsOf(block.number)),
                   header.compression());
    }
    memoryPicture.unpack(packed, bounds, frame);
}

void ExrBlocks::pack(Imf::FrameBuffer const& frame, ExrChunkGrid::Level const& level,
                     GeRectangle<int> const& bounds, std::size_t roomBefore,
                     PackedBlocks& blocks) const
{
    std::vector<std::uint64_t> const numbers = listBlocks(level, bounds);
    if (codec == nullptr) {
        std::uint64_t const first = grid.firstInRow(level, bounds.y0);
        memoryPicture.pack(frame, bounds, [&](ExrMemoryPicture::Blocks const& packed) {
            for (std::uint64_t const number : numbers) {
                std::span<std::byte const> const block = packed.at(number - first);
                addBlock(blocks, number, roomBefore, block.size(), [&](std::span<std::byte> room) {
                    std::copy(block.begin(), block.end(), room.begin());
                    return block.size();
                });
            }
        });
        return;
    }
    ExrFrameRows const rows(header.channels(), frame);
    for (std::uint64_t const number : numbers) {
        GeRectangle<int> const area = grid.boundsOf(number);
        std::size_t const size = countPixels(area) * rows.getBytesPerPixel();
        addBlock(blocks, number, roomBefore, size,
                 [&](std::span<std::byte> room) { return packOwn(rows, area, room); });
    }
}

/// Returns the block's bytes, for which there is room if it does not become smaller.
std::size_t ExrBlocks::packOwn(ExrFrameRows const& rows, GeRectangle<int> const& area,
                               std::span<std::byte> room) const
{
    if (header.compression() == Imf::NO_COMPRESSION) {
        rows.gather(area, room);
        return room.size();
    }
    std::span<std::byte> const samples = takeSamples(room.size());
    rows.gather(area, samples);
    std::size_t const packed = codec->pack(samples, static_cast<std::size_t>(area.getWidth()),
                                           room.first(room.size() - 1));
    if (packed != 0) {
        return packed;
    }
    std::copy(samples.begin(), samples.end(), room.begin());
    return room.size();
}
