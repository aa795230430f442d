#include "editor/model/picture/HeldPicture.h"

#include "pluginAPI/IxSampleConversion.h"

#include <algorithm>
#include <new>
#include <span>

namespace {

constexpr std::size_t rowAlignment = 64;

std::size_t countRowBytes(ImageInfo const& info)
{
    auto const width = static_cast<std::size_t>(std::max(info.dataWindow.getWidth(), 0));
    std::size_t const bytes = width * info.format.getBytesPerPixel();
    return (bytes + rowAlignment - 1) / rowAlignment * rowAlignment;
}

} // namespace

void HeldPicture::Release::operator()(std::byte* memory) const
{
    ::operator delete (memory, std::align_val_t{rowAlignment});
}

std::size_t HeldPicture::countBytes(ImageInfo const& info)
{
    return countRowBytes(info) * static_cast<std::size_t>(std::max(info.dataWindow.getHeight(), 0));
}

HeldPicture::HeldPicture(ImageInfo const& itsInfo) : info(itsInfo), bytes(countBytes(info))
{
    if (bytes > 0) {
        memory.reset(
            static_cast<std::byte*>(::operator new (bytes, std::align_val_t{rowAlignment})));
        pixels = IxTile(info.format, info.dataWindow, memory.get(),
                        static_cast<std::ptrdiff_t>(countRowBytes(info)));
    }
}

CoRgbaColorTyped<float> HeldPicture::getPixel(int x, int y) const
{
    IxReadGuard const guard(pixels);
    CoRgbaColorTyped<float> pixel{};
    std::size_t const skipped =
        static_cast<std::size_t>(x - info.dataWindow.x0) * info.format.getBytesPerPixel();
    readPixelRow(info.format, guard.getRow(y) + skipped, std::span(&pixel, 1));
    return pixel;
}

IxTile viewOf(IxTile const& whole, GeRectangle<int> const& part)
{
    std::size_t const skipped = static_cast<std::size_t>(part.x0 - whole.getBounds().x0) *
                                whole.getPixelFormat().getBytesPerPixel();
    // The type of its memory is that of tiles that are written, too.
    auto* const first = const_cast<std::byte*>(IxReadGuard(whole).getRow(part.y0) + skipped);
    return {whole.getPixelFormat(), part, first, whole.getRowBytes()};
}
