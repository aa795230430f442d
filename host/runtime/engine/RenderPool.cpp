// Workers that render pictures, several at a time.
//
// The workers are plain threads under a lock that the thread sanitizer sees through; a scheduler
// that is not instrumented would hide from it the very hand-overs that matter here.

#include "runtime/engine/RenderPool.h"

#include "pluginAPI/PxRequestMgr.h"
#include "runtime/engine/DeliveredStrip.h"
#include "runtime/engine/HalfTables.h"
#include "runtime/engine/RenderEngine.h"

#include <algorithm>
#include <system_error>

/// Pixels in and out, and both once more as packed blocks.
std::size_t estimateStripBytes(RenderJob const& job)
{
    ImageInfo const& info = job.source.getInfo();
    auto const width = static_cast<std::size_t>(std::max(info.dataWindow.getWidth(), 0));
    std::size_t pixelBytes = info.format.getBytesPerPixel() +
                             job.chain.getImageFormat().getPixelFormat().getBytesPerPixel();
    for (std::size_t layer = 0; layer < job.furtherLayers.size(); ++layer) {
        pixelBytes +=
            job.source.getFurtherLayers()[layer].format.getBytesPerPixel() +
            job.furtherLayers[layer].chain.getImageFormat().getPixelFormat().getBytesPerPixel();
    }
    int const most = std::clamp(info.dataWindow.getHeight(), 0, chooseStripRows(job.source));
    return 2 * static_cast<std::size_t>(most) *
           (width * pixelBytes + job.source.getFurtherBytesPerRow());
}

namespace {

/// Pixels of the picture, a layer's.
std::int64_t countPixels(RenderJob const& job)
{
    GeRectangle<int> const& window = job.source.getInfo().dataWindow;
    return std::int64_t{window.getWidth()} * std::max(window.getHeight(), 0);
}

/// A lane with its tables if they pay: made by the worker that asks first.
class FastLane {
public:
    FastLane(RenderLane const& itsLane, double jobTime, bool isWorthTables)
        : lane(itsLane), time(jobTime), wantsTables(isWorthTables)
    {
    }

    IxTile send(IxTile const& tile)
    {
        if (wantsTables) {
            std::call_once(
                isTried, [this] { tables = HalfTables::make(lane.chain, lane.sourceNode, time); });
        }
        if (tables != nullptr) {
            return tables->apply(tile);
        }
        DeliveredStrip const delivered(lane.sourceNode, tile);
        return lane.chain.computeImage(PxImageContext(time, tile.getBounds()))
            .getTileGuard()
            .getTile();
    }

private:
    RenderLane lane;
    double time;
    bool wantsTables;
    std::once_flag isTried;
    std::unique_ptr<HalfTables const> tables;
};

} // namespace

/// A picture on its way. All but `job`, `lanes` and the constants is locked by the pool's mutex.
struct RenderPool::Picture {
    Picture(Ticket itsTicket, RenderJob const& itsJob)
        : ticket(itsTicket), job(itsJob), stripRows(chooseStripRows(itsJob.source)),
          nbRows(itsJob.source.getInfo().dataWindow.getHeight()),
          stripBytes(estimateStripBytes(itsJob))
    {
        bool const isLarge =
            itsJob.mask == nullptr && countPixels(itsJob) >= HalfTables::leastPixels;
        lanes.emplace_back(RenderLane{itsJob.chain, itsJob.sourceNode}, itsJob.time, isLarge);
        for (RenderLane const& lane : itsJob.furtherLayers) {
            lanes.emplace_back(lane, itsJob.time, isLarge);
        }
    }

    /// Whether there is something to begin that no worker does. A picture without rows is only
    /// finished.
    bool hasWork() const
    {
        return !failure && !isReading && (rowsRead < nbRows || (nbRows == 0 && !isFinished));
    }
    bool hasEnded() const { return nbWorking == 0 && (failure || isFinished); }

    Ticket const ticket;
    RenderJob const job;
    int const stripRows;
    int const nbRows;
    std::size_t const stripBytes;
    std::list<FastLane> lanes; ///< of the layers; any worker

    int nbWorking = 0; ///< workers that have a strip of it
    bool isReading = false;
    int nextStrip = 0;
    int rowsRead = 0;
    int nextToWrite = 0;
    int rowsWritten = 0;
    bool isFinished = false;
    std::exception_ptr failure;
};

/// A strip on its way; its buffers are used again for the next one.
struct RenderPool::Strip {
    Picture* picture = nullptr;
    ImageStrip image;
    IxTile mask; ///< null where there is none
    GeRectangle<int> bounds;
    IxTile result;
    int index = 0;
};

RenderPool::RenderPool(Options const& poolOptions) : options(poolOptions)
{
    for (int worker = 0; worker < options.threads; ++worker) {
        startWorker();
    }
}

RenderPool::~RenderPool()
{
    cancelAll();
    {
        std::lock_guard const lock(mutex);
        isStopping = true;
        changed.notify_all();
    }
    workers.clear();
}

/// One worker is enough to go on when there is no thread for another.
void RenderPool::startWorker()
{
    try {
        workers.emplace_back([this] { work(); });
    } catch (std::system_error const&) {
        if (workers.empty()) {
            throw;
        }
    }
}

RenderPool::Ticket RenderPool::add(RenderJob const& job)
{
    std::list<Picture> added;
    added.emplace_back(nextTicket, job);
    std::lock_guard const lock(mutex);
    pictures.splice(pictures.end(), added);
    changed.notify_all();
    return nextTicket++;
}

std::optional<RenderPool::Ended> RenderPool::waitForEnd(std::chrono::milliseconds longest)
{
    if (options.cancelled != nullptr && *options.cancelled) {
        cancelAll();
    }
    std::unique_lock lock(mutex);
    auto found = pictures.end();
    ended.wait_for(lock, longest, [&] {
        found = std::find_if(pictures.begin(), pictures.end(),
                             [](Picture const& picture) { return picture.hasEnded(); });
        return found != pictures.end();
    });
    if (found == pictures.end()) {
        return {};
    }
    // What was complete before the cancellation came through is complete.
    Ended result{found->ticket, found->isFinished ? nullptr : found->failure};
    pictures.erase(found);
    return result;
}

double RenderPool::getShare(Ticket ticket) const
{
    std::lock_guard const lock(mutex);
    auto const found =
        std::find_if(pictures.begin(), pictures.end(),
                     [ticket](Picture const& picture) { return picture.ticket == ticket; });
    bool const isKnown = found != pictures.end() && found->nbRows > 0;
    return isKnown ? static_cast<double>(found->rowsWritten) / found->nbRows : 1.0;
}

void RenderPool::cancelAll()
{
    std::lock_guard const lock(mutex);
    for (Picture& picture : pictures) {
        if (!picture.failure && !picture.isFinished) {
            picture.failure = std::make_exception_ptr(RenderCancelled());
        }
    }
    changed.notify_all();
    ended.notify_all();
}

void RenderPool::checkCancelled() const
{
    if (options.cancelled != nullptr && *options.cancelled) {
        throw RenderCancelled();
    }
}

void RenderPool::work() noexcept
{
    PxWorkerScope const worker;
    Strip strip;
    while (take(strip)) {
        process(strip);
        leave(strip);
    }
}

/// Waits for a strip to begin with; false when there will be none. The picture's next strip is then
/// this worker's to read.
bool RenderPool::take(Strip& strip)
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] {
        strip.picture = choose();
        return strip.picture != nullptr || isStopping;
    });
    if (strip.picture == nullptr) {
        return false;
    }
    Picture& picture = *strip.picture;
    ++picture.nbWorking;
    bytesOnTheWay += picture.stripBytes;
    picture.isReading = true;
    strip.index = picture.nextStrip++;
    return true;
}

RenderPool::Picture* RenderPool::choose()
{
    Picture* best = nullptr;
    for (Picture& picture : pictures) {
        if (picture.hasWork() && (best == nullptr || picture.nbWorking < best->nbWorking)) {
            best = &picture;
        }
    }
    return best != nullptr && fits(*best) ? best : nullptr;
}

bool RenderPool::fits(Picture const& picture) const
{
    return bytesOnTheWay == 0 || (bytesOnTheWay <= options.memory &&
                                  picture.stripBytes <= options.memory - bytesOnTheWay);
}

void RenderPool::process(Strip& strip) noexcept
{
    try {
        readAndWrite(strip);
    } catch (...) {
        std::lock_guard const lock(mutex);
        if (!strip.picture->failure) {
            strip.picture->failure = std::current_exception();
        }
        changed.notify_all();
    }
}

void RenderPool::readAndWrite(Strip& strip)
{
    Picture& picture = *strip.picture;
    if (picture.nbRows > 0) {
        read(strip);
        compute(strip);
        if (!waitForTurn(strip)) {
            return;
        }
        checkCancelled();
        picture.job.sink.writeStrip(strip.result, strip.image);
    }
    countWritten(strip);
}

void RenderPool::read(Strip& strip)
{
    checkCancelled();
    Picture& picture = *strip.picture;
    ImageSource& source = picture.job.source;
    strip.bounds = source.getStripBounds(strip.index, picture.stripRows);
    // The last picture's blocks are none of this one's.
    strip.image.packed.clear();
    source.fetchStrip(strip.bounds, strip.image);
    strip.mask = picture.job.mask == nullptr ? IxTile() : picture.job.mask->read(strip.bounds);
    endRead(strip);
}

/// The next strip may be read.
void RenderPool::endRead(Strip& strip)
{
    std::lock_guard const lock(mutex);
    strip.picture->rowsRead += strip.bounds.getHeight();
    strip.picture->isReading = false;
    changed.notify_all();
}

void RenderPool::compute(Strip& strip) const
{
    RenderJob const& job = strip.picture->job;
    job.source.unpackStrip(strip.image);
    std::optional<DeliveredStrip> deliveredMask;
    if (!strip.mask.isNull()) {
        deliveredMask.emplace(job.mask->getNode(), strip.mask);
    }
    auto lane = strip.picture->lanes.begin();
    strip.result = lane->send(strip.image.colour);
    for (IxTile& colour : strip.image.furtherColour) {
        colour = (++lane)->send(colour);
    }
    job.sink.packStrip(strip.result, strip.image);
}

/// False when the picture has failed meanwhile: nothing more is written then.
bool RenderPool::waitForTurn(Strip const& strip)
{
    Picture const& picture = *strip.picture;
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return picture.nextToWrite == strip.index || picture.failure; });
    return !picture.failure;
}

/// Lets the next strip be written; after the last one the picture is finished.
void RenderPool::countWritten(Strip const& strip)
{
    Picture& picture = *strip.picture;
    std::unique_lock lock(mutex);
    picture.rowsWritten += strip.bounds.getHeight();
    ++picture.nextToWrite;
    changed.notify_all();
    if (picture.nbRows > 0 && picture.rowsWritten < picture.nbRows) {
        return;
    }
    lock.unlock();
    picture.job.sink.endSection();
    if (!picture.job.source.hasNextSection()) {
        picture.job.sink.finish();
    }
    lock.lock();
    picture.isFinished = true;
}

void RenderPool::leave(Strip& strip)
{
    strip.result = IxTile();
    std::lock_guard const lock(mutex);
    Picture& picture = *strip.picture;
    bytesOnTheWay -= picture.stripBytes;
    --picture.nbWorking;
    strip.picture = nullptr;
    changed.notify_all();
    ended.notify_all();
}
