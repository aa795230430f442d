// Images on loan from the host.

#include "Image.h"

#include "HostAccess.h"

#include <cstdint>
#include <cstdlib>

namespace Prop = OfxText::Prop;

Image::Image(OfxImageClip* clip, OfxTime time)
{
    if (clip == nullptr) {
        return;
    }
    OfxStatus const status = HostAccess::get().effects->clipGetImage(clip, time, nullptr, &handle);
    if (status != OfxStat::ok || handle == nullptr) {
        handle = nullptr;
        state = status == OfxStat::memory ? State::OutOfMemory : State::Missing;
        return;
    }
    state = readFrame();
}

Image::~Image()
{
    if (handle != nullptr) {
        HostAccess::get().effects->clipReleaseImage(handle);
    }
}

Image::State Image::readFrame()
{
    Properties const image(handle);
    auto const bounds = image.getRectangle(Prop::imageBounds);
    auto const depth = findDepth(image.getString(Prop::pixelDepth).value_or(""));
    auto const components = findComponents(image.getString(Prop::components).value_or(""));
    if (bounds) {
        frame.bounds = {bounds->x1, bounds->y1, bounds->x2, bounds->y2};
    }
    bool const isEmpty = bounds && frame.bounds.isEmpty();
    frame.firstRow = static_cast<std::byte*>(image.getPointer(Prop::imageData));
    if (frame.firstRow == nullptr && !isEmpty) {
        return State::Missing;
    }
    if (!bounds || !depth || !components) {
        return State::Unusable;
    }
    frame.depth = *depth;
    frame.components = *components;
    if (isEmpty) {
        return State::Present; // a tile beyond what the clip covers
    }
    std::int64_t const width = std::int64_t{bounds->x2} - bounds->x1;
    std::int64_t const packed = width * static_cast<std::int64_t>(frame.getBytesPerPixel());
    frame.rowStep = image.getInt(Prop::imageRowBytes).value_or(static_cast<int>(packed));
    bool const isOneRow = std::int64_t{bounds->y2} - bounds->y1 == 1;
    return std::abs(static_cast<std::int64_t>(frame.rowStep)) >= packed || isOneRow
               ? State::Present
               : State::Unusable;
}
