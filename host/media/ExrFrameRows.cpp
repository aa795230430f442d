// Samples between the pixels of tiles and the rows of blocks.

#include "media/ExrFrameRows.h"

#include "media/ExrChannels.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

/// From samples that lie apart to others.
template <typename Sample>
void copySamples(std::byte const* from, std::ptrdiff_t fromStride, std::byte* to,
                 std::ptrdiff_t toStride, std::size_t count)
{
    for (std::size_t sample = 0; sample < count; ++sample) {
        std::memcpy(to, from, sizeof(Sample));
        from += fromStride;
        to += toStride;
    }
}

void copySamples(std::size_t sampleBytes, std::byte const* from, std::ptrdiff_t fromStride,
                 std::byte* to, std::ptrdiff_t toStride, std::size_t count)
{
    auto const dense = static_cast<std::ptrdiff_t>(sampleBytes);
    if (fromStride == dense && toStride == dense) {
        std::memcpy(to, from, count * sampleBytes);
    } else if (sampleBytes == sizeof(std::uint16_t)) {
        copySamples<std::uint16_t>(from, fromStride, to, toStride, count);
    } else {
        copySamples<std::uint32_t>(from, fromStride, to, toStride, count);
    }
}

constexpr std::size_t mostInterleaved = 4;
using Planes = std::array<std::byte*, mostInterleaved>;

template <typename Sample, std::size_t nbPlanes>
void interleave(Planes const& planes, std::byte* pixels, std::size_t count)
{
    for (std::size_t x = 0; x < count; ++x) {
        std::array<Sample, nbPlanes> pixel;
        for (std::size_t plane = 0; plane < nbPlanes; ++plane) {
            std::memcpy(&pixel[plane], planes[plane] + x * sizeof(Sample), sizeof(Sample));
        }
        std::memcpy(pixels + x * sizeof pixel, pixel.data(), sizeof pixel);
    }
}

template <typename Sample, std::size_t nbPlanes>
void separate(Planes const& planes, std::byte* pixels, std::size_t count)
{
    for (std::size_t x = 0; x < count; ++x) {
        std::array<Sample, nbPlanes> pixel;
        std::memcpy(pixel.data(), pixels + x * sizeof pixel, sizeof pixel);
        for (std::size_t plane = 0; plane < nbPlanes; ++plane) {
            std::memcpy(planes[plane] + x * sizeof(Sample), &pixel[plane], sizeof(Sample));
        }
    }
}

using MovePixels = void (*)(Planes const&, std::byte*, std::size_t);

/// For 3 or 4 samples of 2 or 4 bytes.
MovePixels chooseInterleave(std::size_t sampleBytes, std::size_t nbPlanes)
{
    if (sampleBytes == sizeof(std::uint16_t)) {
        return nbPlanes == 3 ? &interleave<std::uint16_t, 3> : &interleave<std::uint16_t, 4>;
    }
    return nbPlanes == 3 ? &interleave<std::uint32_t, 3> : &interleave<std::uint32_t, 4>;
}

MovePixels chooseSeparate(std::size_t sampleBytes, std::size_t nbPlanes)
{
    if (sampleBytes == sizeof(std::uint16_t)) {
        return nbPlanes == 3 ? &separate<std::uint16_t, 3> : &separate<std::uint16_t, 4>;
    }
    return nbPlanes == 3 ? &separate<std::uint32_t, 3> : &separate<std::uint32_t, 4>;
}

/// Where the channels of a group begin in a block's row.
template <typename Group>
Planes planesOf(Group const& group, std::byte* row, std::size_t width)
{
    Planes planes{};
    for (std::size_t plane = 0; plane < group.size(); ++plane) {
        planes[plane] = row + group[plane].before * width;
    }
    return planes;
}

} // namespace

bool ExrFrameRows::suit(Imf::ChannelList const& channels, Imf::FrameBuffer const& frame)
{
    for (auto slice = frame.begin(); slice != frame.end(); ++slice) {
        Imf::Channel const* const channel = channels.findChannel(slice.name());
        if (channel == nullptr || channel->type != slice.slice().type) {
            return false;
        }
    }
    return true;
}

std::byte* ExrFrameRows::Place::at(int x, int y) const
{
    return reinterpret_cast<std::byte*>(origin +
                                        static_cast<std::uintptr_t>(xStride * x + yStride * y));
}

ExrFrameRows::ExrFrameRows(Imf::ChannelList const& channels, Imf::FrameBuffer const& frame)
{
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        std::size_t const sampleBytes = sampleBytesOf(channel.channel().type);
        if (Imf::Slice const* const slice = frame.findSlice(channel.name())) {
            singles.push_back({{sampleBytes, reinterpret_cast<std::uintptr_t>(slice->base),
                                static_cast<std::ptrdiff_t>(slice->xStride),
                                static_cast<std::ptrdiff_t>(slice->yStride)},
                               pixelBytes});
        }
        pixelBytes += sampleBytes;
    }
    std::sort(singles.begin(), singles.end(),
              [](Channel const& a, Channel const& b) { return a.place.origin < b.place.origin; });
    for (std::size_t const sampleBytes : {sizeof(std::uint16_t), sizeof(std::uint32_t)}) {
        for (std::size_t const size : {std::size_t{4}, std::size_t{3}}) {
            while (std::optional<Group> group = takeGroup(sampleBytes, size)) {
                groups.push_back(std::move(*group));
            }
        }
    }
}

/// Of the singles, which are in the order of memory.
std::optional<ExrFrameRows::Group> ExrFrameRows::takeGroup(std::size_t sampleBytes,
                                                           std::size_t size)
{
    for (std::size_t first = 0; first + size <= singles.size(); ++first) {
        auto const begin = singles.begin() + static_cast<std::ptrdiff_t>(first);
        auto const end = begin + static_cast<std::ptrdiff_t>(size);
        std::uintptr_t next = begin->place.origin;
        bool const isGroup = std::all_of(begin, end, [&](Channel const& channel) {
            Place const& place = channel.place;
            bool const isNext = place.origin == next;
            next += sampleBytes;
            return isNext && place.sampleBytes == sampleBytes &&
                   place.xStride == static_cast<std::ptrdiff_t>(size * sampleBytes) &&
                   place.yStride == begin->place.yStride;
        });
        if (isGroup) {
            Group group(begin, end);
            singles.erase(begin, end);
            return group;
        }
    }
    return {};
}

void ExrFrameRows::gather(GeRectangle<int> const& bounds, std::span<std::byte> samples) const
{
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    std::byte* row = samples.data();
    for (int y = bounds.y0; y < bounds.y1; ++y, row += pixelBytes * width) {
        for (Group const& group : groups) {
            Place const& first = group.front().place;
            chooseSeparate(first.sampleBytes, group.size())(planesOf(group, row, width),
                                                            first.at(bounds.x0, y), width);
        }
        for (auto const& [place, before] : singles) {
            copySamples(place.sampleBytes, place.at(bounds.x0, y), place.xStride,
                        row + before * width, static_cast<std::ptrdiff_t>(place.sampleBytes),
                        width);
        }
    }
}

void ExrFrameRows::scatter(std::span<std::byte const> samples, GeRectangle<int> const& bounds) const
{
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    auto* row = const_cast<std::byte*>(samples.data()); // planes are only read from
    for (int y = bounds.y0; y < bounds.y1; ++y, row += pixelBytes * width) {
        for (Group const& group : groups) {
            Place const& first = group.front().place;
            chooseInterleave(first.sampleBytes, group.size())(planesOf(group, row, width),
                                                              first.at(bounds.x0, y), width);
        }
        for (auto const& [place, before] : singles) {
            copySamples(place.sampleBytes, row + before * width,
                        static_cast<std::ptrdiff_t>(place.sampleBytes), place.at(bounds.x0, y),
                        place.xStride, width);
        }
    }
}
