// Pictures go into memory the way in which they are rendered: strip by strip, by all workers.

#include "editor/model/picture/HeldPicture.h"

#include "editor/model/document/UserThread.h"
#include "media/ImageFiles.h"
#include "pluginAPI/IxSampleConversion.h"
#include "pluginAPI/PxNodeHandles.h"
#include "runtime/engine/RenderEngine.h"

#include <atomic>
#include <cstring>
#include <span>
#include <thread>

namespace {

/// Copies every strip to its place.
class HoldingSink : public ImageSink {
public:
    explicit HoldingSink(IxTile const& whole) : pixels(whole) {}

    void packStrip(IxTile const& result, ImageStrip&) const override
    {
        IxReadGuard const from(result);
        IxWriteGuard const to(pixels);
        GeRectangle<int> const& bounds = result.getBounds();
        std::size_t const rowBytes = static_cast<std::size_t>(bounds.getWidth()) *
                                     result.getPixelFormat().getBytesPerPixel();
        for (int y = bounds.y0; y < bounds.y1; ++y) {
            std::memcpy(to.getRow(y), from.getRow(y), rowBytes);
        }
    }
    void writeStrip(IxTile const&, ImageStrip const&) override {}
    void finish() override {}

private:
    IxTile const& pixels;
};

} // namespace

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

class PictureLoader::Reading {
public:
    explicit Reading(std::filesystem::path const& file)
        : source(openImage(file, {})), start(makeNode<SourceImageNode>(source->getInfo())),
          picture(std::make_shared<HeldPicture>())
    {
        picture->info = source->getInfo();
        if (!picture->info.dataWindow.isEmpty()) {
            picture->pixels = IxTile(picture->info.format, picture->info.dataWindow);
        }
    }

    void begin(std::weak_ptr<void> const& owner, int threads, Ended const& ended)
    {
        thread = std::jthread([this, owner, threads, ended] {
            std::exception_ptr failure;
            try {
                HoldingSink sink(picture->pixels);
                RenderOptions options;
                options.threads = threads;
                options.cancelled = &cancelled;
                renderImage(*start, *start, *source, sink, options);
            } catch (...) {
                failure = std::current_exception();
            }
            callOnUserThread(owner, [this, ended, failure] {
                ended(failure ? nullptr : std::shared_ptr<HeldPicture const>(picture), failure);
            });
        });
    }

    std::atomic<bool> cancelled = false;

private:
    std::unique_ptr<ImageSource> source;
    PxStrongHndl<SourceImageNode> start;
    std::shared_ptr<HeldPicture> picture;
    std::jthread thread; // the others outlive it
};

PictureLoader::PictureLoader(std::filesystem::path const& file, int threads, Ended const& ended)
    : reading(std::make_shared<Reading>(file))
{
    reading->begin(reading, threads, ended);
}

PictureLoader::~PictureLoader()
{
    reading->cancelled = true;
}
