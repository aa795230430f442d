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

/// What an event comes of: who asked for something, and for what by their own count. 0 is nobody.
struct EvSource {
    std::uint64_t owner = 0;
    std::uint64_t number = 0;

    /// That of this thread: of the innermost scope, or of the event that runs.
    static EvSource getCurrent();
};

/// While it lives, events that are posted on this thread come of `source`, and so does what they
/// post in turn. A scope ends on the thread that it began on.
class EvSourceScope {
public:
    explicit EvSourceScope(EvSource const& source);
    ~EvSourceScope();
    EvSourceScope(EvSourceScope const&) = delete;
    EvSourceScope& operator=(EvSourceScope const&) = delete;

private:
    EvSource former;
};

/// The queue of work for the user-interface thread. Any thread posts; only the user-interface
/// thread, from its own loop, runs or discards what was posted. No lock is held while an event runs
/// or is destroyed, so events may post, process and discard in turn.
///
/// A program with a loop of its own (a toolkit's) sets a wake-up and calls processEvents when it
/// has been called; one without waits with waitForEvents. Requests tell all that they have to tell
/// by events, so this wakes for them as well.
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

    /// Queues what is being thrown as the failure of an event, for the report. Call from within a
    /// catch clause. Any thread.
    void postCurrentException();

    /// From now on `wakeUp` is called when something waits to be processed: by the thread that
    /// posts it, once until processEvents or discardEvents begin; at once if something waits now.
    /// It passes the word on to the program's own loop and calls nothing here; it must not throw.
    /// Empty for none. When this returns, the former one does not run and never will.
    /// User-interface thread.
    void setWakeUp(std::function<void()> wakeUp);

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
        EvSource source;
        OPtr<EvRequestEvent> event;
    };

    std::uint64_t beginTaking();
    QueuedEvent takeNextUpTo(std::uint64_t number);
    void runAndDestroy(QueuedEvent queued);
    void wake(std::unique_lock<std::mutex>& lock);
    void reportCurrentException();

    std::mutex mutex;
    std::condition_variable eventQueued;
    std::deque<QueuedEvent> queue; // locked by mutex
    std::uint64_t lastNumber = 0;  // locked by mutex

    std::function<void()> wakeUp; // locked by mutex
    bool isAwake = false;         // locked by mutex; called since the last taking began
    int nbWakeUps = 0;            // locked by mutex; how many threads are calling it
    std::condition_variable wakeUpEnded;

    FailureReporter failureReporter;       // of the user-interface thread
    std::vector<std::string> keptFailures; // of the user-interface thread
};
