// Pictures go into memory strip by strip, as they are rendered; there is no chain for them.

#include "editor/model/picture/PictureLoader.h"

#include "editor/model/document/UserThread.h"
#include "media/ImageFiles.h"
#include "media/MediaSource.h"
#include "runtime/engine/RenderEngine.h"
#include "shots/MachineLimits.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

/// Of this thread and those that it starts.
void giveWay()
{
    constexpr int politeness = 10;
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), politeness);
}

/// Several threads take strip after strip of one source.
class StripReading {
public:
    StripReading(ImageSource& readSource, HeldPicture const& target,
                 std::atomic<bool> const& cancelFlag, std::function<void(double)> tellShare)
        : source(readSource), picture(target), cancelled(cancelFlag), tell(std::move(tellShare)),
          rows(chooseStripRows(readSource))
    {
    }

    void run(int threads)
    {
        {
            std::vector<std::jthread> helpers;
            try {
                for (int helper = 1; helper < threads; ++helper) {
                    helpers.emplace_back([this] { work(); });
                }
            } catch (std::system_error const&) { // fewer will do
            }
            work();
        }
        if (failure) {
            std::rethrow_exception(failure);
        }
    }

private:
    void work() noexcept
    {
        try {
            ImageStrip strip;
            while (fetch(strip)) {
                source.unpackStrip(strip);
                keep(strip.colour);
                tellProgress(strip.colour.getBounds().getHeight());
            }
        } catch (...) {
            std::lock_guard const lock(mutex);
            failure = failure ? failure : std::current_exception();
        }
    }

    bool fetch(ImageStrip& strip)
    {
        std::lock_guard const lock(mutex);
        if (failure || fetchedRows >= picture.info.dataWindow.getHeight()) {
            return false;
        }
        if (cancelled) {
            throw RenderCancelled();
        }
        GeRectangle<int> const bounds = source.getStripBounds(nextStrip++, rows);
        fetchedRows += bounds.getHeight();
        strip.packed.clear();
        source.fetchStrip(bounds, strip);
        return true;
    }

    void keep(IxTile const& strip) const
    {
        IxReadGuard const from(strip);
        IxWriteGuard const to(picture.pixels);
        GeRectangle<int> const& bounds = strip.getBounds();
        std::size_t const rowBytes =
            static_cast<std::size_t>(bounds.getWidth()) * strip.getPixelFormat().getBytesPerPixel();
        for (int y = bounds.y0; y < bounds.y1; ++y) {
            std::memcpy(to.getRow(y), from.getRow(y), rowBytes);
        }
    }

    /// Whole hundredths only.
    void tellProgress(int newRows)
    {
        constexpr int parts = 100;
        std::int64_t const height = picture.info.dataWindow.getHeight();
        std::int64_t const after = keptRows += newRows;
        if (after * parts / height > (after - newRows) * parts / height) {
            tell(static_cast<double>(after) / static_cast<double>(height));
        }
    }

    ImageSource& source;
    HeldPicture const& picture;
    std::atomic<bool> const& cancelled;
    std::function<void(double)> const tell;
    int const rows;
    std::atomic<std::int64_t> keptRows = 0;
    std::mutex mutex;
    int nextStrip = 0;          // locked by mutex, as is the source while it is fetched from
    int fetchedRows = 0;        // locked by mutex
    std::exception_ptr failure; // locked by mutex
};

} // namespace

struct PictureLoader::Reading : std::enable_shared_from_this<PictureLoader::Reading> {
    explicit Reading(Wish itsWish) : wish(std::move(itsWish)) {}

    Wish wish;
    std::shared_ptr<HeldPicture const> picture;
    std::size_t neededBytes = 0;

    void read(std::atomic<bool> const& cancelled)
    {
        if (wish.isAhead) {
            giveWay();
        }
        wish.replaced.reset();
        auto const source = wish.open(wish.file);
        if (cancelled) {
            throw RenderCancelled();
        }
        ImageInfo const& info = source->getInfo();
        std::size_t const bytes = HeldPicture::countBytes(info);
        if (bytes > wish.mostBytes) {
            neededBytes = bytes;
            return;
        }
        auto const whole = std::make_shared<HeldPicture>(info);
        StripReading(*source, *whole, cancelled, [this](double share) {
            tellShare(share);
        }).run(wish.threads);
        picture = whole;
    }

    void tellShare(double share)
    {
        if (wish.progressed) {
            callOnUserThread(weak_from_this(), [this, share] { wish.progressed(share); });
        }
    }
};

std::unique_ptr<ImageSource> PictureLoader::openPlainly(std::filesystem::path const& file)
{
    ReadOptions options;
    options.mostBytes = std::min(options.mostBytes, findUsableMemory());
    auto source = openImage(file, options);
    if (auto* const media = dynamic_cast<MediaSource*>(source.get())) {
        media->takePlainStrips();
    }
    return source;
}

PictureLoader::PictureLoader(Wish wish, Ended ended)
    : reading(std::make_shared<Reading>(std::move(wish)))
{
    task = std::make_unique<AsideTask>(
        [&read = *reading](std::atomic<bool> const& cancelled) { read.read(cancelled); },
        [done = reading, ended = std::move(ended)](std::exception_ptr const& failure) {
            ended({failure ? nullptr : std::move(done->picture), failure, done->neededBytes});
        });
}
