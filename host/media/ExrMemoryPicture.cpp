// Blocks through the library by way of memory.
// Source of the file's layout: "OpenEXR File Layout", of the OpenEXR project.

#include "media/ExrMemoryPicture.h"

#include "media/ErrorText.h"
#include "media/ExrHeader.h"
#include "media/ExrStreams.h"
#include "runtime/engine/PackedBlocks.h"

#include <Iex.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfTiledInputFile.h>
#include <ImfTiledOutputFile.h>
#include <ImfVersion.h>
#include <algorithm>
#include <cstring>

namespace {

constexpr char const* streamName = "picture in memory"; // of no interest to anybody
constexpr int noThreads = 0;                            // of the library's own
constexpr std::size_t pictureNumberBytes = 4;

class MemoryOutput : public Imf::OStream {
public:
    MemoryOutput() : Imf::OStream(streamName) {}

    void write(char const* bytes, int count) override
    {
        auto const size = static_cast<std::size_t>(count);
        if (size > memory.size() - position) {
            memory.grow(size - (memory.size() - position));
        }
        std::memcpy(&memory.bytes()[position], bytes, size);
        position += size;
    }
    std::uint64_t tellp() override { return position; }
    void seekp(std::uint64_t wanted) override
    {
        position = std::min<std::size_t>(wanted, memory.size());
    }
    std::span<std::byte const> getBytes() const { return memory.bytes(); }

private:
    ByteStore memory;
    std::size_t position = 0;
};

class MemoryInput : public Imf::IStream {
public:
    explicit MemoryInput(std::span<std::byte const> itsBytes)
        : Imf::IStream(streamName), bytes(itsBytes)
    {
    }

    bool read(char* to, int count) override
    {
        auto const size = static_cast<std::size_t>(count);
        if (size > bytes.size() - position) {
            throw Iex::InputExc("unexpected end of file");
        }
        std::memcpy(to, bytes.data() + position, size);
        position += size;
        return position < bytes.size();
    }
    std::uint64_t tellg() override { return position; }
    void seekg(std::uint64_t wanted) override
    {
        position = std::min<std::size_t>(wanted, bytes.size());
    }

private:
    std::span<std::byte const> bytes;
    std::size_t position = 0;
};

} // namespace

ExrMemoryPicture::ExrMemoryPicture(Imf::Header const& partHeader, bool isTiledPart)
    : isTiled(isTiledPart), blockRows(rowsPerBlockOf({partHeader, isTiledPart}))
{
    header.channels() = partHeader.channels();
    header.compression() = partHeader.compression();
    header.dwaCompressionLevel() = partHeader.dwaCompressionLevel();
    blockColumns = 0;
    if (isTiled) {
        Imf::TileDescription const& tiles = partHeader.tileDescription();
        header.setTileDescription(Imf::TileDescription(tiles.xSize, tiles.ySize, Imf::ONE_LEVEL));
        blockColumns = static_cast<int>(tiles.xSize);
    }
}

Imf::Header ExrMemoryPicture::makeHeader(GeRectangle<int> const& bounds) const
{
    Imf::Header own = header;
    own.dataWindow() = {{bounds.x0, bounds.y0}, {bounds.x1 - 1, bounds.y1 - 1}};
    own.displayWindow() = own.dataWindow();
    return own;
}

/// In a row of them.
int ExrMemoryPicture::countTiles(GeRectangle<int> const& bounds) const
{
    return isTiled ? (bounds.getWidth() - 1) / blockColumns + 1 : 1;
}

void ExrMemoryPicture::unpack(Blocks const& blocks, GeRectangle<int> const& bounds,
                              Imf::FrameBuffer const& frame) const
{
    MemoryOutput file;
    writeNumber(file, Imf::MAGIC);
    writeNumber(file, Imf::EXR_VERSION | Imf::LONG_NAMES_FLAG | (isTiled ? Imf::TILED_FLAG : 0));
    makeHeader(bounds).writeTo(file, isTiled);
    std::size_t const headBytes = (isTiled ? 5 : 2) * pictureNumberBytes;
    std::uint64_t place = file.tellp() + blocks.size() * sizeof(std::uint64_t);
    for (std::span<std::byte const> const block : blocks) {
        writeNumber(file, place);
        place += headBytes + block.size();
    }
    int const across = countTiles(bounds);
    int number = 0;
    for (std::span<std::byte const> const block : blocks) {
        if (isTiled) {
            for (int const coordinate : {number % across, number / across, 0, 0}) {
                writeNumber(file, coordinate);
            }
        } else {
            writeNumber(file, bounds.y0 + number * blockRows);
        }
        writeNumber(file, static_cast<std::uint32_t>(block.size()));
        file.write(reinterpret_cast<char const*>(block.data()), static_cast<int>(block.size()));
        ++number;
    }
    try {
        readAll(file.getBytes(), bounds, frame);
    } catch (Iex::BaseExc const& failure) {
        throw Iex::InputExc(trimLibraryText(failure.what(), streamName));
    }
}

void ExrMemoryPicture::readAll(std::span<std::byte const> file, GeRectangle<int> const& bounds,
                               Imf::FrameBuffer const& frame) const
{
    MemoryInput stream(file);
    if (isTiled) {
        Imf::TiledInputFile input(stream, noThreads);
        input.setFrameBuffer(frame);
        input.readTiles(0, input.numXTiles() - 1, 0, input.numYTiles() - 1);
    } else {
        Imf::InputFile input(stream, noThreads);
        input.setFrameBuffer(frame);
        input.readPixels(bounds.y0, bounds.y1 - 1);
    }
}

void ExrMemoryPicture::pack(Imf::FrameBuffer const& frame, GeRectangle<int> const& bounds,
                            std::function<void(Blocks const&)> const& take) const
{
    MemoryOutput file;
    std::size_t start = 0;
    if (isTiled) {
        Imf::TiledOutputFile output(file, makeHeader(bounds), noThreads);
        start = file.tellp();
        output.setFrameBuffer(frame);
        output.writeTiles(0, output.numXTiles() - 1, 0, output.numYTiles() - 1);
    } else {
        Imf::OutputFile output(file, makeHeader(bounds), noThreads);
        start = file.tellp();
        output.setFrameBuffer(frame);
        output.writePixels(bounds.getHeight());
    }
    std::size_t const coordinateBytes = (isTiled ? 4 : 1) * pictureNumberBytes;
    Blocks blocks;
    for (std::span<std::byte const> rest = file.getBytes().subspan(start); !rest.empty();) {
        std::size_t const size = readNumber<std::uint32_t>(&rest[coordinateBytes]);
        rest = rest.subspan(coordinateBytes + pictureNumberBytes);
        blocks.push_back(rest.first(size));
        rest = rest.subspan(size);
    }
    take(blocks);
}
