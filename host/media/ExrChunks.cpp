// What a file's chunks hold against what its header announces.

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
constexpr std::uint64_t numberBytes = 4;     // of the numbers at a chunk's head
constexpr std::uint64_t scanLineNumbers = 2; // row, size
constexpr std::uint64_t tileNumbers = 5;     // column, row, both levels, size

[[noreturn]] void throwDamagedBlock()
{
    throw Iex::InputExc("a block of pixels does not hold what the header announces");
}

/// Tiles of one level, or of all of a file with several.
std::uint64_t countTiles(Imf::TileDescription const& tiles, GeRectangle<int> const& window)
{
    auto const isUp = tiles.roundingMode == Imf::ROUND_UP;
    auto const sizeAt = [isUp](int size, unsigned level) {
        std::uint64_t const rounding = isUp ? (1ULL << level) - 1 : 0;
        return std::max<std::uint64_t>((static_cast<std::uint64_t>(size) + rounding) >> level, 1);
    };
    auto const countLevels = [&sizeAt](int size) {
        unsigned levels = 1;
        while (sizeAt(size, levels - 1) > 1) {
            ++levels;
        }
        return levels;
    };
    auto const tilesOf = [](std::uint64_t size, unsigned tile) { return (size + tile - 1) / tile; };
    int const width = window.getWidth();
    int const height = window.getHeight();
    auto const tilesAt = [&](unsigned levelX, unsigned levelY) {
        return tilesOf(sizeAt(width, levelX), tiles.xSize) *
               tilesOf(sizeAt(height, levelY), tiles.ySize);
    };
    std::uint64_t count = 0;
    switch (tiles.mode) {
    case Imf::MIPMAP_LEVELS:
        for (unsigned level = 0; level < countLevels(std::max(width, height)); ++level) {
            count += tilesAt(level, level);
        }
        return count;
    case Imf::RIPMAP_LEVELS:
        for (unsigned down = 0; down < countLevels(height); ++down) {
            for (unsigned across = 0; across < countLevels(width); ++across) {
                count += tilesAt(across, down);
            }
        }
        return count;
    case Imf::ONE_LEVEL:
    case Imf::NUM_LEVELMODES: break;
    }
    return tilesAt(0, 0);
}

[[noreturn]] void throwIncomplete(std::filesystem::path const& file)
{
    throwReadError(ImageFailure::File, file,
                   "the file is incomplete: pixels are missing; make or copy it again");
}

} // namespace

ExrChunks::ExrChunks(ExrHeader const& header, CheckedInput& input,
                     std::filesystem::path const& wantedFile)
    : stream(input), file(wantedFile), compression(header.header.compression()),
      channels(listChannels(header.header.channels())), isTiled(header.isTiled),
      hasPartNumbers(header.hasPartNumbers), rowsPerChunk(rowsPerBlockOf(header))
{
    Imath::Box2i const& box = header.header.dataWindow();
    window = {box.min.x, box.min.y, box.max.x + 1, box.max.y + 1};
    columnsPerChunk =
        isTiled ? static_cast<int>(header.header.tileDescription().xSize) : window.getWidth();
    auto const rows = static_cast<std::uint64_t>(rowsPerChunk);
    readTable(header.tableStart,
              isTiled ? countTiles(header.header.tileDescription(), window)
                      : (static_cast<std::uint64_t>(window.getHeight()) + rows - 1) / rows);
    std::size_t const last = measureRooms();
    checkRooms();
    checkBlock(0, Unpacker::Own);
    if (isOfFullResolution(last)) {
        checkBlock(last, Unpacker::Own);
    }
}

void ExrChunks::readTable(std::uint64_t start, std::uint64_t entries)
{
    std::uint64_t const left = stream.getSize() - start;
    if (entries > left / offsetBytes) {
        throwTooShort();
    }
    std::vector<std::byte> table(entries * offsetBytes);
    stream.readAt(start, table);
    std::uint64_t const end = start + table.size();
    chunks.resize(entries);
    for (std::size_t index = 0; index < chunks.size(); ++index) {
        std::uint64_t const offset = readNumber<std::uint64_t>(&table[index * offsetBytes]);
        if (offset == 0 || offset > stream.getSize()) {
            throwIncomplete(file); // a writer that did not end leaves 0
        }
        if (offset < end) {
            throw Iex::InputExc("its blocks of pixels lie where other things are");
        }
        chunks[index].offset = offset;
    }
}

/// Returns the chunk that comes last in the file.
std::size_t ExrChunks::measureRooms()
{
    std::vector<std::size_t> order(chunks.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [this](std::size_t a, std::size_t b) { return chunks[a].offset < chunks[b].offset; });
    std::uint64_t end = stream.getSize();
    for (auto index = order.rbegin(); index != order.rend(); ++index) {
        chunks[*index].room = end - chunks[*index].offset;
        end = chunks[*index].offset;
    }
    return order.back();
}

/// That each chunk of full resolution could become what it stands for.
void ExrChunks::checkRooms() const
{
    std::uint64_t const expansion = mostExpansion(compression);
    for (std::size_t index = 0; index < chunks.size(); ++index) {
        std::uint64_t const room = chunks[index].room;
        if (room < headBytes()) {
            throwIncomplete(file);
        }
        if (isOfFullResolution(index) && rawBytesOf(index) > (room - headBytes()) * expansion) {
            throwTooShort();
        }
    }
}

void ExrChunks::throwTooShort() const
{
    throwReadError(ImageFailure::File, file,
                   "the file is damaged (it announces " + std::to_string(window.getWidth()) +
                       " x " + std::to_string(window.getHeight()) +
                       " pixels but is too short for them)");
}

std::uint64_t ExrChunks::headBytes() const
{
    return ((isTiled ? tileNumbers : scanLineNumbers) + (hasPartNumbers ? 1 : 0)) * numberBytes;
}

std::size_t ExrChunks::chunksAcross() const
{
    return static_cast<std::size_t>((window.getWidth() - 1) / columnsPerChunk + 1);
}

bool ExrChunks::isOfFullResolution(std::size_t index) const
{
    return index / chunksAcross() <=
           static_cast<std::size_t>((window.getHeight() - 1) / rowsPerChunk);
}

/// Of a chunk of full resolution.
std::uint64_t ExrChunks::rawBytesOf(std::size_t index) const
{
    int const left = window.x0 + static_cast<int>(index % chunksAcross()) * columnsPerChunk;
    int const top = window.y0 + static_cast<int>(index / chunksAcross()) * rowsPerChunk;
    int const width = std::min(columnsPerChunk, window.x1 - left);
    int const height = std::min(rowsPerChunk, window.y1 - top);
    return furtherBytesOf(channels, {left, top, left + width, top + height});
}

void ExrChunks::checkRows(int first, int last, Unpacker unpacker) const
{
    std::size_t const begin =
        static_cast<std::size_t>((first - window.y0) / rowsPerChunk) * chunksAcross();
    std::size_t const end =
        static_cast<std::size_t>((last - window.y0) / rowsPerChunk + 1) * chunksAcross();
    for (std::size_t index = begin; index < end; ++index) {
        checkBlock(index, unpacker);
    }
}

void ExrChunks::checkBlock(std::size_t index, Unpacker unpacker) const
{
    Chunk const& chunk = chunks[index];
    std::array<std::byte, (tileNumbers + 1) * numberBytes> head{};
    stream.readAt(chunk.offset, std::span(head).first(headBytes()));
    std::byte const* const size = &head[headBytes() - numberBytes];
    std::uint64_t const packed = readNumber<std::uint32_t>(size);
    std::uint64_t const raw = rawBytesOf(index);
    if (packed > chunk.room - headBytes()) {
        throwIncomplete(file);
    }
    if (raw == 0) {
        return; // rows that no sub-sampled channel has samples in
    }
    if (packed == 0 || packed > raw || raw > packed * mostExpansion(compression)) {
        throwDamagedBlock();
    }
    if (unpacker == Unpacker::Own || isCheckedByLibrary(compression)) {
        return;
    }
    std::vector<std::byte> bytes(packed);
    stream.readAt(chunk.offset + headBytes(), bytes);
    if (!fills(bytes, raw, compression)) {
        throwDamagedBlock();
    }
}
