// Reading EXR files to the last sample.

#include "media/ExrScan.h"

#include "media/ErrorText.h"
#include "media/ExrBlocks.h"
#include "media/ExrChannels.h"
#include "media/ExrChunks.h"
#include "media/ExrDescription.h"
#include "media/ExrHeader.h"
#include "media/MediaOptions.h"
#include "media/SampleCounts.h"

#include <ImfFrameBuffer.h>
#include <algorithm>

namespace {

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
            } else {
                scanPart(part);
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

    /// All levels, as many rows at a time as are packed together.
    void scanPart(std::size_t part)
    {
        std::vector<ExrFurtherChannel> const all =
            listChannels(headers.parts[part].header.channels());
        std::size_t const firstChannel = channels.size();
        for (ExrFurtherChannel const& channel : all) {
            channels.push_back({part, channel.name});
        }
        ExrBlocks const blocks(headers.parts[part]);
        std::vector<std::byte> samples;
        PackedBlocks packed;
        for (ExrChunkGrid::Level const& level : blocks.getGrid().getLevels()) {
            int const rows = blocks.getRowsPerRun(level.window.getHeight());
            for (int first = level.window.y0; first < level.window.y1; first += rows) {
                GeRectangle<int> const bounds{level.window.x0, first, level.window.x1,
                                              std::min(first + rows, level.window.y1)};
                packed.clear();
                chunks[part].readBlocks(level, first, bounds.y1 - 1, packed);
                samples.resize(furtherBytesOf(all, bounds));
                Imf::FrameBuffer frame;
                insertFurtherChannels(frame, all, bounds, samples.data());
                blocks.unpack(packed, bounds, frame);
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
