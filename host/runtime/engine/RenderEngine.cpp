// The way of a picture: read, process, write, all at once.

#include "runtime/engine/RenderEngine.h"

#include "pluginAPI/PxRequestMgr.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/parallel_pipeline.h>
#include <oneapi/tbb/task_arena.h>

namespace {

/// Setting a chain up costs some tens of microseconds: what a few thousand pixels cost.
constexpr int wantedStripPixels = 1 << 18;
/// Strips beyond those being processed: one being read and one being written.
constexpr int stripsUnderTransport = 2;
constexpr std::chrono::milliseconds longestWait{50};

/// Makes what one thread wrote visible to the next one. The scheduler does that too; this says it
/// where the thread sanitizer, which cannot see into the scheduler, can see it.
class Handover {
public:
    Handover() { counter().load(std::memory_order_acquire); }
    ~Handover() { counter().fetch_add(1, std::memory_order_release); }
    Handover(Handover const&) = delete;
    Handover& operator=(Handover const&) = delete;

private:
    static std::atomic<unsigned>& counter()
    {
        static std::atomic<unsigned> handovers = 0;
        return handovers;
    }
};

/// Offers a strip to the chain for a scope: also when the chain throws, so that the next render
/// through the same chain does not meet this one's pixels.
class OfferedStrip {
public:
    OfferedStrip(SourceImageNode& startNode, IxTile const& strip)
        : sourceNode(startNode), bounds(strip.getBounds())
    {
        sourceNode.addStrip(strip);
    }
    ~OfferedStrip() { sourceNode.removeStrip(bounds); }
    OfferedStrip(OfferedStrip const&) = delete;
    OfferedStrip& operator=(OfferedStrip const&) = delete;

private:
    SourceImageNode& sourceNode;
    GeRectangle<int> bounds;
};

/// A strip on its way; used again for later ones.
struct Strip {
    ImageStrip image;
    GeRectangle<int> bounds;
    IxTile result;
};

/// One picture's run through the pipeline. The caller makes it and waits; workers do the rest.
class Render {
public:
    Render(PxImageProtocol const& outputNode, SourceImageNode& startNode, ImageSource& imageSource,
           ImageSink& imageSink, RenderOptions const& renderOptions)
        : chain(outputNode), sourceNode(startNode), source(imageSource), sink(imageSink),
          options(renderOptions), stripRows(chooseStripRows(imageSource)),
          nbRows(imageSource.getInfo().dataWindow.getHeight()),
          strips(static_cast<std::size_t>(renderOptions.threads + stripsUnderTransport))
    {
        for (Strip& strip : strips) {
            freeStrips.push_back(&strip);
        }
    }

    /// On a worker.
    void run() noexcept
    {
        try {
            using oneapi::tbb::filter_mode;
            oneapi::tbb::parallel_pipeline(
                strips.size(),
                oneapi::tbb::make_filter<void, Strip*>(
                    filter_mode::serial_in_order,
                    [this](oneapi::tbb::flow_control& flow) { return read(flow); }) &
                    oneapi::tbb::make_filter<Strip*, Strip*>(
                        filter_mode::parallel, [this](Strip* strip) { return process(strip); }) &
                    oneapi::tbb::make_filter<Strip*, void>(filter_mode::serial_in_order,
                                                           [this](Strip* strip) { write(strip); }));
        } catch (...) {
            failure = std::current_exception();
        }
        std::lock_guard const lock(mutex);
        isFinished = true;
        finished.notify_all();
    }

    /// On the caller's thread: until everything is written or something has failed.
    void wait()
    {
        std::unique_lock lock(mutex);
        while (!isFinished) {
            finished.wait_for(lock, longestWait, [this] { return isFinished; });
            if (options.progress) {
                lock.unlock();
                options.progress(nbRows == 0 ? 1.0 : static_cast<double>(rowsWritten) / nbRows);
                lock.lock();
            }
        }
        if (failure) {
            std::rethrow_exception(failure);
        }
    }

private:
    void checkCancelled() const
    {
        if (options.cancelled != nullptr && *options.cancelled) {
            throw RenderCancelled();
        }
    }

    Strip* read(oneapi::tbb::flow_control& flow)
    {
        Handover const handover;
        checkCancelled();
        if (rowsRead == nbRows) {
            flow.stop();
            return nullptr;
        }
        Strip* const strip = takeFreeStrip();
        strip->bounds = source.getStripBounds(nextStrip++, stripRows);
        rowsRead += strip->bounds.getHeight();
        source.readStrip(strip->bounds, strip->image);
        return strip;
    }

    Strip* process(Strip* strip)
    {
        Handover const handover;
        PxWorkerScope const worker;
        OfferedStrip const offered(sourceNode, strip->image.colour);
        PxImageContext const context(options.time, strip->bounds);
        strip->result = chain.computeImage(context).getTileGuard().getTile();
        return strip;
    }

    void write(Strip* strip)
    {
        Handover const handover;
        checkCancelled();
        sink.writeStrip(strip->result, strip->image);
        rowsWritten += strip->bounds.getHeight();
        strip->result = IxTile();
        std::lock_guard const lock(mutex);
        freeStrips.push_back(strip);
    }

    /// The pipeline lets no more strips in than there are.
    Strip* takeFreeStrip()
    {
        std::lock_guard const lock(mutex);
        Strip* const strip = freeStrips.back();
        freeStrips.pop_back();
        return strip;
    }

    PxImageProtocol const& chain;
    SourceImageNode& sourceNode;
    ImageSource& source;
    ImageSink& sink;
    RenderOptions const& options;
    int const stripRows;
    int const nbRows;
    int nextStrip = 0; // of the reading stage
    int rowsRead = 0;  // of the reading stage
    std::atomic<int> rowsWritten = 0;
    std::exception_ptr failure; // written before isFinished

    std::vector<Strip> strips;
    std::mutex mutex;
    std::vector<Strip*> freeStrips; // locked by mutex
    bool isFinished = false;        // locked by mutex
    std::condition_variable finished;
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
    // The caller's thread is no worker, so the scheduler needs one thread more.
    oneapi::tbb::global_control const limit(oneapi::tbb::global_control::max_allowed_parallelism,
                                            static_cast<std::size_t>(options.threads) + 1);
    oneapi::tbb::task_arena arena(options.threads, 0);
    Render render(chain, sourceNode, source, sink, options);
    {
        Handover const handover;
    }
    arena.enqueue([&render] {
        Handover const handover;
        render.run();
    });
    render.wait();
    sink.finish();
}
