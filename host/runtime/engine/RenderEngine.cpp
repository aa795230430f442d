// The way of a picture: read, process, write, all at once.
//
// The workers are plain threads under locks that the thread sanitizer sees through; a scheduler
// that is not instrumented would hide from it the very hand-overs that matter here.

#include "runtime/engine/RenderEngine.h"

#include "pluginAPI/PxRequestMgr.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

namespace {

/// Setting a chain up costs some tens of microseconds: what a few thousand pixels cost.
constexpr int wantedStripPixels = 1 << 18;
constexpr std::chrono::milliseconds longestWait{50};

/// A strip on its way; its buffers are used again for the next one.
struct Strip {
    ImageStrip image;
    IxTile mask; // null where there is none
    GeRectangle<int> bounds;
    IxTile result;
    int index = 0;
};

/// Makes a strip the start of the chain for a scope, however the scope ends.
class DeliveredStrip {
public:
    DeliveredStrip(SourceImageNode& startNode, IxTile const& tile)
        : sourceNode(startNode), bounds(tile.getBounds())
    {
        sourceNode.addStrip(tile);
    }
    DeliveredStrip(DeliveredStrip const&) = delete;
    DeliveredStrip& operator=(DeliveredStrip const&) = delete;
    ~DeliveredStrip() { sourceNode.removeStrip(bounds); }

private:
    SourceImageNode& sourceNode;
    GeRectangle<int> bounds;
};

/// One picture's run. Every worker takes strips all the way: it fetches the next one when no other
/// worker does, unpacks, processes and packs it, and writes it when all before it are written. So
/// workers are at different stages at the same time, and there are never more strips on the way
/// than workers.
class Render {
public:
    Render(PxImageProtocol const& outputNode, SourceImageNode& startNode, ImageSource& imageSource,
           ImageSink& imageSink, RenderOptions const& renderOptions)
        : chain(outputNode), sourceNode(startNode), source(imageSource), sink(imageSink),
          options(renderOptions), stripRows(chooseStripRows(imageSource)),
          nbRows(imageSource.getInfo().dataWindow.getHeight())
    {
    }

    /// On the caller's thread: until everything is written or something has failed.
    void run()
    {
        std::vector<std::jthread> workers;
        nbWorking = options.threads;
        for (int worker = 0; worker < options.threads; ++worker) {
            startWorker(workers);
        }
        waitForWorkers();
        workers.clear();
        if (failure) {
            std::rethrow_exception(failure);
        }
    }

private:
    /// One worker is enough to go on when there is no thread for another.
    void startWorker(std::vector<std::jthread>& workers)
    {
        try {
            workers.emplace_back([this] { work(); });
        } catch (std::system_error const&) {
            if (workers.empty()) {
                throw;
            }
            finishWorker();
        }
    }

    void waitForWorkers()
    {
        std::unique_lock lock(writeMutex);
        while (nbWorking > 0) {
            written.wait_for(lock, longestWait, [this] { return nbWorking == 0; });
            if (options.progress) {
                double const share = nbRows == 0 ? 1.0 : static_cast<double>(rowsWritten) / nbRows;
                lock.unlock();
                options.progress(share);
                lock.lock();
            }
        }
    }

    void work() noexcept
    {
        PxWorkerScope const worker;
        try {
            Strip strip;
            while (read(strip)) {
                process(strip);
                write(strip);
            }
        } catch (...) {
            fail();
        }
        finishWorker();
    }

    void fail()
    {
        std::lock_guard const lock(writeMutex);
        if (!failure) {
            failure = std::current_exception();
        }
        written.notify_all();
    }

    void finishWorker()
    {
        std::lock_guard const lock(writeMutex);
        --nbWorking;
        written.notify_all();
    }

    bool hasFailed()
    {
        std::lock_guard const lock(writeMutex);
        return failure != nullptr;
    }

    void checkCancelled() const
    {
        if (options.cancelled != nullptr && *options.cancelled) {
            throw RenderCancelled();
        }
    }

    /// The next strip of the picture; false when there is none or another worker has failed.
    bool read(Strip& strip)
    {
        std::lock_guard const lock(readMutex);
        checkCancelled();
        if (rowsRead == nbRows || hasFailed()) {
            return false;
        }
        strip.index = nextStrip++;
        strip.bounds = source.getStripBounds(strip.index, stripRows);
        rowsRead += strip.bounds.getHeight();
        source.fetchStrip(strip.bounds, strip.image);
        if (options.mask != nullptr) {
            strip.mask = options.mask->read(strip.bounds);
        }
        return true;
    }

    void process(Strip& strip)
    {
        source.unpackStrip(strip.image);
        DeliveredStrip const delivered(sourceNode, strip.image.colour);
        std::optional<DeliveredStrip> deliveredMask;
        if (!strip.mask.isNull()) {
            deliveredMask.emplace(options.mask->getNode(), strip.mask);
        }
        PxImageContext const context(options.time, strip.bounds);
        strip.result = chain.computeImage(context).getTileGuard().getTile();
        sink.packStrip(strip.result, strip.image);
    }

    /// Waits for the strip's turn. Nothing is written after a failure.
    void write(Strip& strip)
    {
        std::unique_lock lock(writeMutex);
        written.wait(lock, [&] { return nextToWrite == strip.index || failure != nullptr; });
        if (failure) {
            return;
        }
        lock.unlock();
        // Only the worker whose turn it is gets here.
        checkCancelled();
        sink.writeStrip(strip.result, strip.image);
        strip.result = IxTile();
        lock.lock();
        rowsWritten += strip.bounds.getHeight();
        ++nextToWrite;
        written.notify_all();
    }

    PxImageProtocol const& chain;
    SourceImageNode& sourceNode;
    ImageSource& source;
    ImageSink& sink;
    RenderOptions const& options;
    int const stripRows;
    int const nbRows;

    std::mutex readMutex;
    int nextStrip = 0; // locked by readMutex
    int rowsRead = 0;  // locked by readMutex

    std::mutex writeMutex; // taken after readMutex, if both
    std::condition_variable written;
    int nextToWrite = 0;        // locked by writeMutex
    int rowsWritten = 0;        // locked by writeMutex
    int nbWorking = 0;          // locked by writeMutex once workers run
    std::exception_ptr failure; // locked by writeMutex while workers run
};

} // namespace

int chooseStripRows(ImageSource const& source)
{
    GeRectangle<int> const& window = source.getInfo().dataWindow;
    int const rowsPerBlock = std::max(source.getRowsPerBlock(), 1);
    int const width = std::max(window.getWidth(), 1);
    int const wantedRows = std::max(wantedStripPixels / width, 1);
    return std::max((wantedRows + rowsPerBlock - 1) / rowsPerBlock, 1) * rowsPerBlock;
}

void renderImage(PxImageProtocol const& chain, SourceImageNode& sourceNode, ImageSource& source,
                 ImageSink& sink, RenderOptions const& options)
{
    Render(chain, sourceNode, source, sink, options).run();
    sink.finish();
}
