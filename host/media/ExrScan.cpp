// Reading EXR files to the last sample.

#include "media/ExrScan.h"

#include "media/ErrorText.h"
#include "media/ExrChannels.h"
#include "media/ExrChunks.h"
#include "media/ExrDescription.h"
#include "media/ExrHeader.h"
#include "media/MediaOptions.h"
#include "media/SampleCounts.h"

#include <ImfFrameBuffer.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfThreading.h>
#include <ImfTiledInputPart.h>
#include <algorithm>
#include <functional>
#include <optional>

namespace {

/// Reads the rows `first` to `last` of a level into a frame.
using ReadRows = std::function<void(Imf::FrameBuffer const& frame, ExrChunkGrid::Level const& level,
                                    int first, int last)>;

/// The parts of an open file, one after the other.
class ExrScan {
public:
    explicit ExrScan(std::filesystem::path const& itsFile)
        : file(itsFile), stream(file),
          headers(readExrHeaders(stream, file, ReadOptions().mostBytes)),
          chunks(ExrChunks::readAll(headers, stream, file))
    {
    }

    std::vector<ChannelScan> scan()
    {
        for (std::size_t part = 0; part < headers.parts.size(); ++part) {
            if (headers.parts[part].isDeep) {
                readPacked(chunks[part]);
            } else if (headers.parts[part].isTiled) {
                scanTiles(part);
            } else {
                scanLines(part);
            }
        }
        return channels;
    }

    int getSystemError() const { return stream.getSystemError(); }

private:
    static void readPacked(ExrChunks const& packed)
    {
        for (std::uint64_t chunk = 0; chunk < packed.getGrid().countChunks(); ++chunk) {
            packed.readRaw(chunk);
        }
    }

    Imf::MultiPartInputFile& openLibrary()
    {
        if (!library.has_value()) {
            stream.seekg(0);
            constexpr bool repairsTables = false; // they have been looked at
            library.emplace(stream, Imf::globalThreadCount(), repairsTables);
        }
        return *library;
    }

    void scanLines(std::size_t part)
    {
        Imf::InputPart input(openLibrary(), static_cast<int>(part));
        scanPart(part, [&](Imf::FrameBuffer const& frame, ExrChunkGrid::Level const&, int first,
                           int last) {
            input.setFrameBuffer(frame);
            input.readPixels(first, last);
        });
    }

    void scanTiles(std::size_t part)
    {
        Imf::TiledInputPart input(openLibrary(), static_cast<int>(part));
        int const rows = chunks[part].getGrid().getRowsPerChunk();
        scanPart(part, [&](Imf::FrameBuffer const& frame, ExrChunkGrid::Level const& level,
                           int first, int) {
            int const row = (first - level.window.y0) / rows;
            input.setFrameBuffer(frame);
            input.readTiles(0, static_cast<int>(level.across) - 1, row, row, level.x, level.y);
        });
    }

    /// All levels, as many rows at a time as are packed together.
    void scanPart(std::size_t part, ReadRows const& readRows)
    {
        std::vector<ExrFurtherChannel> const all =
            listChannels(headers.parts[part].header.channels());
        std::size_t const firstChannel = channels.size();
        for (ExrFurtherChannel const& channel : all) {
            channels.push_back({part, channel.name});
        }
        ExrChunkGrid const& grid = chunks[part].getGrid();
        std::vector<std::byte> samples;
        for (ExrChunkGrid::Level const& level : grid.getLevels()) {
            int const rows = grid.getRowsPerChunk();
            for (int first = level.window.y0; first < level.window.y1; first += rows) {
                GeRectangle<int> const bounds{level.window.x0, first, level.window.x1,
                                              std::min(first + rows, level.window.y1)};
                chunks[part].checkRows(level, first, bounds.y1 - 1, ExrChunks::Unpacker::Library);
                samples.resize(furtherBytesOf(all, bounds));
                Imf::FrameBuffer frame;
                insertFurtherChannels(frame, all, bounds, samples.data());
                readRows(frame, level, first, bounds.y1 - 1);
                count(all, bounds, samples, firstChannel);
            }
        }
    }

    void count(std::vector<ExrFurtherChannel> const& all, GeRectangle<int> const& bounds,
               std::vector<std::byte> const& samples, std::size_t firstChannel)
    {
        std::byte const* first = samples.data();
        for (std::size_t index = 0; index < all.size(); ++index) {
            std::size_t const bytes = furtherBytesOf({all[index]}, bounds);
            ChannelScan& channel = channels[firstChannel + index];
            if (all[index].type == Imf::HALF) {
                countSpecials<std::uint16_t>(first, bytes / 2, 2, channel);
            } else if (all[index].type == Imf::FLOAT) {
                countSpecials<std::uint32_t>(first, bytes / 4, 4, channel);
            }
            first += bytes;
        }
    }

    std::filesystem::path file;
    CheckedInput stream;
    ExrHeaders headers;
    std::vector<ExrChunks> chunks;
    std::optional<Imf::MultiPartInputFile> library;
    std::vector<ChannelScan> channels;
};

} // namespace

PictureScan scanExr(std::filesystem::path const& file)
{
    PictureScan result{describeExr(file), {}};
    ExrScan scan(file);
    try {
        result.channels = scan.scan();
    } catch (...) {
        rethrowAsReadError(file, scan.getSystemError());
    }
    return result;
}
