// What a file's chunks hold against what its headers announce.

#include "media/ExrChunks.h"

#include "media/ErrorText.h"
#include "media/ExrPackedSize.h"

#include <Iex.h>
#include <algorithm>
#include <array>
#include <numeric>
#include <string>

namespace {

constexpr std::uint64_t offsetBytes = 8;
constexpr std::uint64_t numberBytes = 4; // of the numbers at a chunk's head
constexpr std::uint64_t deepSizes = 3;   // packed counts, packed samples, samples; 8 bytes each
constexpr std::size_t mostHeadBytes = 5 * numberBytes + deepSizes * offsetBytes;

[[noreturn]] void throwIncomplete(std::filesystem::path const& file)
{
    throwReadError(ImageFailure::File, file,
                   "the file is incomplete: pixels are missing; make or copy it again");
}

} // namespace

std::vector<ExrChunks> ExrChunks::readAll(ExrHeaders const& headers, CheckedInput& stream,
                                          std::filesystem::path const& file)
{
    std::vector<ExrChunks> parts;
    std::uint64_t tablesEnd = headers.tablesStart;
    for (std::size_t part = 0; part < headers.parts.size(); ++part) {
        parts.push_back(ExrChunks(headers, part, stream, file));
        std::uint64_t const entries = parts.back().grid.countChunks();
        if (tablesEnd > stream.getSize() ||
            entries > (stream.getSize() - tablesEnd) / offsetBytes) {
            parts.back().throwTooShort();
        }
        tablesEnd += entries * offsetBytes;
    }
    std::uint64_t start = headers.tablesStart;
    for (ExrChunks& part : parts) {
        part.readTable(start, tablesEnd);
        start += part.chunks.size() * offsetBytes;
    }
    measureRooms(parts, stream.getSize());
    for (ExrChunks const& part : parts) {
        part.checkRooms();
        part.checkBlock(0);
        part.checkBlock(part.listByPlace().back());
    }
    return parts;
}

ExrChunks::ExrChunks(ExrHeaders const& headers, std::size_t part, CheckedInput& input,
                     std::filesystem::path const& wantedFile)
    : stream(&input), file(wantedFile), grid(headers.parts[part]),
      compression(headers.parts[part].header.compression()),
      channels(listChannels(headers.parts[part].header.channels())),
      isDeep(headers.parts[part].isDeep), hasPartNumbers(headers.hasPartNumbers),
      number(static_cast<int>(part))
{
    Imf::Header const& header = headers.parts[part].header;
    bool const isCounted = headers.hasPartNumbers && header.hasChunkCount();
    if (isCounted && static_cast<std::uint64_t>(header.chunkCount()) != grid.countChunks()) {
        throw Iex::InputExc("a part announces another number of blocks than it has");
    }
}

/// All tables together end at `end`.
void ExrChunks::readTable(std::uint64_t start, std::uint64_t end)
{
    std::vector<std::byte> table(grid.countChunks() * offsetBytes);
    stream->readAt(start, table);
    chunks.resize(grid.countChunks());
    for (std::size_t index = 0; index < chunks.size(); ++index) {
        std::uint64_t const offset = readNumber<std::uint64_t>(&table[index * offsetBytes]);
        if (offset == 0 || offset > stream->getSize()) {
            throwIncomplete(file); // a writer that did not end leaves 0
        }
        if (offset < end) {
            throw Iex::InputExc("its blocks of pixels lie where other things are");
        }
        chunks[index].offset = offset;
    }
}

void ExrChunks::measureRooms(std::vector<ExrChunks>& parts, std::uint64_t end)
{
    std::vector<Chunk*> order;
    for (ExrChunks& part : parts) {
        for (Chunk& chunk : part.chunks) {
            order.push_back(&chunk);
        }
    }
    std::sort(order.begin(), order.end(),
              [](Chunk const* a, Chunk const* b) { return a->offset < b->offset; });
    for (auto chunk = order.rbegin(); chunk != order.rend(); ++chunk) {
        (*chunk)->room = end - (*chunk)->offset;
        end = (*chunk)->offset;
    }
}

std::vector<std::uint64_t> ExrChunks::listByPlace() const
{
    std::vector<std::uint64_t> order(chunks.size());
    std::iota(order.begin(), order.end(), std::uint64_t{0});
    std::sort(order.begin(), order.end(), [this](std::uint64_t a, std::uint64_t b) {
        return chunks[a].offset < chunks[b].offset;
    });
    return order;
}

/// That each chunk could become what it stands for.
void ExrChunks::checkRooms() const
{
    for (std::uint64_t index = 0; index < chunks.size(); ++index) {
        std::uint64_t const room = chunks[index].room;
        if (room < headBytes()) {
            throwIncomplete(file);
        }
        if (!isDeep && rawBytesOf(index) > (room - headBytes()) * mostExpansion(compression)) {
            throwTooShort();
        }
    }
}

void ExrChunks::throwTooShort() const
{
    GeRectangle<int> const& window = grid.getLevels().front().window;
    throwReadError(ImageFailure::File, file,
                   "the file is damaged (it announces " + std::to_string(window.getWidth()) +
                       " x " + std::to_string(window.getHeight()) +
                       " pixels but is too short for them)");
}

/// The part's number, where the chunk belongs, and its size.
std::uint64_t ExrChunks::headBytes() const
{
    std::uint64_t const sizes = isDeep ? deepSizes * offsetBytes : numberBytes;
    return ((hasPartNumbers ? 1 : 0) + grid.countCoordinates()) * numberBytes + sizes;
}

std::uint64_t ExrChunks::rawBytesOf(std::uint64_t index) const
{
    return furtherBytesOf(channels, grid.boundsOf(index));
}

/// Returns the bytes that follow the head, which are in the file. `head` are the first bytes of the
/// chunk.
std::uint64_t ExrChunks::readHead(std::uint64_t index, std::span<std::byte const> head) const
{
    std::byte const* next = head.data();
    auto const takeNumber = [&next] {
        auto const value = static_cast<int>(readNumber<std::uint32_t>(next));
        next += numberBytes;
        return value;
    };
    bool isOwn = !hasPartNumbers || takeNumber() == number;
    for (int const coordinate : grid.coordinatesOf(index)) {
        isOwn = takeNumber() == coordinate && isOwn;
    }
    if (!isOwn) {
        throw Iex::InputExc("a block of pixels lies where another one should be");
    }
    std::uint64_t const left = chunks[index].room - headBytes();
    if (!isDeep) {
        std::uint64_t const packed = readNumber<std::uint32_t>(next);
        if (packed > left) {
            throwIncomplete(file);
        }
        return packed;
    }
    std::uint64_t const counts = readNumber<std::uint64_t>(next);
    std::uint64_t const samples = readNumber<std::uint64_t>(next + offsetBytes);
    if (counts > left || samples > left - counts) {
        throwIncomplete(file);
    }
    return counts + samples;
}

/// Returns what readHead does: no more than the samples of the chunk take if it has any.
std::uint64_t ExrChunks::checkHead(std::uint64_t index, std::span<std::byte const> head) const
{
    std::uint64_t const packed = readHead(index, head);
    std::uint64_t const raw = rawBytesOf(index);
    if (isDeep) {
        return packed;
    }
    if (raw == 0) {
        return packed; // rows that no sub-sampled channel has samples in
    }
    if (packed == 0 || packed > raw || raw > packed * mostExpansion(compression)) {
        throwDamagedBlock();
    }
    return packed;
}

std::uint64_t ExrChunks::checkBlock(std::uint64_t index) const
{
    std::array<std::byte, mostHeadBytes> head{};
    stream->readAt(chunks[index].offset, std::span(head).first(headBytes()));
    return checkHead(index, head);
}

/// What of the chunk's room it can need.
std::uint64_t ExrChunks::usefulBytesOf(std::uint64_t index) const
{
    return std::min(chunks[index].room, headBytes() + rawBytesOf(index));
}

void ExrChunks::readBlocks(ExrChunkGrid::Level const& level, int first, int last,
                           PackedBlocks& blocks) const
{
    std::uint64_t const begin = grid.firstInRow(level, first);
    std::vector<std::uint64_t> wanted(grid.firstInRow(level, last) + level.across - begin);
    std::iota(wanted.begin(), wanted.end(), begin);
    std::sort(wanted.begin(), wanted.end(), [this](std::uint64_t a, std::uint64_t b) {
        return chunks[a].offset < chunks[b].offset;
    });
    for (std::size_t next = 0; next < wanted.size();) {
        std::uint64_t const start = chunks[wanted[next]].offset;
        std::size_t const firstOfRun = next;
        std::uint64_t end = start;
        while (next < wanted.size() && chunks[wanted[next]].offset == end) {
            end += usefulBytesOf(wanted[next++]);
        }
        std::size_t const place = blocks.memory.size();
        stream->readAt(start, blocks.memory.grow(end - start));
        for (std::size_t index = firstOfRun; index < next; ++index) {
            std::uint64_t const chunk = wanted[index];
            std::size_t const head = place + (chunks[chunk].offset - start);
            std::uint64_t const packed = checkHead(chunk, blocks.memory.bytes().subspan(head));
            blocks.list.push_back({chunk, head + headBytes(), std::min(packed, rawBytesOf(chunk))});
        }
    }
}

void ExrChunks::checkBlocks() const
{
    ExrChunkGrid::Level const& level = grid.getLevels().front();
    PackedBlocks blocks;
    int const rows = grid.getRowsPerChunk();
    for (int y = level.window.y0; y < level.window.y1; y += rows) {
        blocks.clear();
        readBlocks(level, y, y, blocks);
        for (PackedBlock const& block : blocks.list) {
            checkFills(blocks.bytesOf(block), rawBytesOf(block.number), compression);
        }
    }
}

ExrChunks::Extent ExrChunks::extentOf(std::uint64_t index) const
{
    std::uint64_t const skipped = hasPartNumbers ? numberBytes : 0;
    return {chunks[index].offset + skipped, headBytes() - skipped + checkBlock(index)};
}

std::vector<std::byte> ExrChunks::readRaw(std::uint64_t index) const
{
    Extent const extent = extentOf(index);
    std::vector<std::byte> bytes(extent.size);
    stream->readAt(extent.offset, bytes);
    return bytes;
}

std::vector<ExrChunks::Extent> ExrChunks::listExtents() const
{
    std::vector<Extent> extents;
    for (std::uint64_t index = 0; index < chunks.size(); ++index) {
        extents.push_back(extentOf(index));
    }
    return extents;
}
