#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "runtime/engine/ImageSink.h"
#include "runtime/engine/ImageSource.h"
#include "runtime/engine/MaskFeed.h"
#include "runtime/engine/SourceImageNode.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <limits>
#include <list>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

/// A chain and its start.
struct RenderLane {
    PxImageProtocol const& chain;
    SourceImageNode& sourceNode;
};

/// A picture's way from a source through a chain to a sink. What it names lives until the picture
/// has ended. `sourceNode` is the start of `chain`.
struct RenderJob {
    PxImageProtocol const& chain;
    SourceImageNode& sourceNode;
    ImageSource& source;
    ImageSink& sink;
    MaskFeed* mask = nullptr; ///< read along with the picture, for chains that evaluate it too
    double time = 0.0;
    std::vector<RenderLane> furtherLayers{}; ///< one for each of the source's
};

/// Bytes that one strip of the picture takes on its way; roughly.
std::size_t estimateStripBytes(RenderJob const& job);

/// A render was asked to stop. Nothing is wrong.
class RenderCancelled {};

/// Workers that send pictures through their chains, strip by strip, several pictures at a time.
///
/// Every worker takes strips all the way: it fetches the next one of a picture when no other worker
/// does so there, unpacks, processes and packs it, and writes it when all before it are written.
/// Who writes a picture's last strip finishes its sink. So there are never more strips on the way
/// than workers, and one picture's end and the next one's beginning are worked on at once. A worker
/// goes where the fewest are, to the oldest picture among these: it waits for no one as long as
/// there are as many pictures as workers.
///
/// A job is one section of its source; the sink is finished with the last one.
///
/// The pixels do not depend on the number of workers, of pictures, or the size of strips.
///
/// The pool is for one thread, which is no worker. Sources, sinks and chains are used on workers.
class RenderPool {
public:
    struct Options {
        int threads = 1; ///< workers, at least 1

        /// Bytes of the strips on the way; one of them may be larger.
        std::size_t memory = std::numeric_limits<std::size_t>::max();

        /// When it becomes true every picture ends with RenderCancelled. May be null.
        std::atomic<bool> const* cancelled = nullptr;
    };

    using Ticket = std::size_t;

    /// A picture that nothing is done for any more.
    struct Ended {
        Ticket ticket;
        std::exception_ptr failure; ///< null for a picture that is complete
    };

    /// Throws std::system_error if no thread can be started; fewer than asked for will do.
    explicit RenderPool(Options const& poolOptions);
    /// Cancels what has not ended.
    ~RenderPool();
    RenderPool(RenderPool const&) = delete;
    RenderPool& operator=(RenderPool const&) = delete;

    /// Adds a picture. Throws what its chain throws when asked for its format.
    Ticket add(RenderJob const& job);

    /// The next picture that has ended, or nothing after `longest`.
    std::optional<Ended> waitForEnd(std::chrono::milliseconds longest);

    /// The written share of a picture that has not been returned by waitForEnd, 0 to 1.
    double getShare(Ticket ticket) const;

private:
    struct Picture;
    struct Strip;

    void startWorker();
    void work() noexcept;
    bool take(Strip& strip);
    Picture* choose();
    bool fits(Picture const& picture) const;
    void process(Strip& strip) noexcept;
    void readAndWrite(Strip& strip);
    void read(Strip& strip);
    void endRead(Strip& strip);
    void compute(Strip& strip) const;
    bool waitForTurn(Strip const& strip);
    void countWritten(Strip const& strip);
    void leave(Strip& strip);
    void cancelAll();
    void checkCancelled() const;

    Options const options;

    mutable std::mutex mutex;
    std::condition_variable changed;   // for workers: anything below
    std::condition_variable ended;     // for the owner: a picture has ended
    std::list<Picture> pictures;       // locked by mutex; oldest first
    Ticket nextTicket = 0;             // locked by mutex
    std::size_t bytesOnTheWay = 0;     // locked by mutex
    bool isStopping = false;           // locked by mutex
    std::vector<std::jthread> workers; // of the owner
};
