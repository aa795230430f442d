#pragma once

#include "base/EvRequestEvent.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// The queue of work for the user-interface thread. Any thread posts; only the user-interface
/// thread, from its own loop, runs or discards what was posted. No lock is held while an event runs
/// or is destroyed, so events may post, process and discard in turn.
///
/// Events that are still queued at the end of the process are destroyed without running.
class EvEventManager {
public:
    using FailureReporter = std::function<void(std::string const& text)>;

    /// The process's only manager. Any thread.
    static EvEventManager& getInstance();

    EvEventManager(EvEventManager const&) = delete;
    EvEventManager& operator=(EvEventManager const&) = delete;

    /// Takes `event` over and queues it behind all others. Any thread. An empty event throws the
    /// null-pointer exception.
    void post(OPtr<EvRequestEvent> event);

    /// Runs the events that are queued at this moment, in order, destroying each after its run;
    /// those posted meanwhile wait for the next call. Returns how many this call ran. An event that
    /// throws counts as run: its failure is reported and the rest go on. User-interface thread.
    int processEvents();

    /// Waits until an event is queued, at most for `longest`. Returns whether one is. The user-
    /// interface thread.
    bool waitForEvents(std::chrono::milliseconds longest);

    /// Destroys the events that are queued at this moment without running them. User-interface
    /// thread.
    void discardEvents();

    /// From now on failures of events go to `reporter` as they happen; an empty one keeps them for
    /// takeFailures, as at the start. User-interface thread.
    void setFailureReporter(FailureReporter reporter);

    /// The failures that no reporter took, oldest first; they are forgotten here. User-interface
    /// thread.
    std::vector<std::string> takeFailures();

private:
    EvEventManager() = default;
    ~EvEventManager();

    struct QueuedEvent {
        std::uint64_t number; // rises by one with each post
        OPtr<EvRequestEvent> event;
    };

    std::uint64_t getLastNumber();
    OPtr<EvRequestEvent> takeNextUpTo(std::uint64_t number);
    void runAndDestroy(OPtr<EvRequestEvent> event);
    void reportCurrentException();

    std::mutex mutex;
    std::condition_variable eventQueued;
    std::deque<QueuedEvent> queue; // locked by mutex
    std::uint64_t lastNumber = 0;  // locked by mutex

    FailureReporter failureReporter;       // of the user-interface thread
    std::vector<std::string> keptFailures; // of the user-interface thread
};
