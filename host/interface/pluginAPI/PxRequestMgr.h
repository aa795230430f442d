#pragma once

#include "base/EvEventManager.h"
#include "base/OPtr.h"
#include "pluginAPI/PxRequest.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

/// Marks the current thread as a worker for as long as the scope lives: node handles must not be
/// made or released there. Scopes nest. A scope ends on the thread that it began on.
class PxWorkerScope {
public:
    PxWorkerScope();
    ~PxWorkerScope();
    PxWorkerScope(PxWorkerScope const&) = delete;
    PxWorkerScope& operator=(PxWorkerScope const&) = delete;
};

/// Runs requests on worker threads of its own.
///
/// Queue: lower priorities run first (0 is interactive), within one priority the oldest first. Up
/// to two workers take from the queue; the first starts with the first submit, the second when
/// there is more to do than the first can take.
///
/// Cancellation: a queued request leaves the queue and never runs. A running one runs on, but once
/// `cancel` has returned it posts no result any more. A finished one is as it was.
///
/// Ownership: the manager owns a request from `submit` on; the submitter may use it until it calls
/// `release`. Requests die on the user-interface thread only: within `release`, or, if it runs at
/// that moment, by an event that is posted when it has finished (whether that event is processed or
/// discarded). What is never released dies with the manager, so that the pointer of a submitter who
/// lives on names the same request, dead or alive, until it is given back.
///
/// Failures: what a request's step throws is kept for PxRequest::getFailure and reported once, by
/// an event, on the user-interface thread: to the submitter in whose scope it was submitted (see
/// PxSubmitter), else to the failure reporter. A submitter also learns of cancelled requests. All
/// events that a request posts come of it.
///
/// All that the manager has for the user-interface thread comes by events, for which the event
/// manager wakes a program's own loop.
///
/// All operations are for the user-interface thread unless they say otherwise; on a worker thread
/// submit, cancel, release, wait and shutDown are assertion failures. A request that the manager
/// does not know (any more) is ignored by cancel, release and wait. No lock is held while a request
/// runs or is destroyed or a reporter is called.
///
/// The destructor, at the end of the process, begins with `shutDown`: it waits for the requests
/// that run then, and only for these.
class PxRequestMgr {
public:
    using FailureReporter = std::function<void(std::string const& text)>;

    /// The process's only manager. Any thread.
    static PxRequestMgr& getInstance();

    PxRequestMgr(PxRequestMgr const&) = delete;
    PxRequestMgr& operator=(PxRequestMgr const&) = delete;

    /// Takes `request` over and queues it. `priority`: 0 is interactive, higher is later. Throws
    /// the null-pointer exception for a null request, the assertion failure for one that was
    /// submitted before, and std::system_error if there is no worker and none can be started; the
    /// request then stays with the caller.
    void submit(PxRequest* request, int priority);

    /// See the class comment. Waits only for a `postResult` that is under way.
    void cancel(PxRequest* request);

    /// Ends the submitter's interest: the request must not be used afterwards. One that is still
    /// queued never runs; one that runs is not cancelled by this.
    void release(PxRequest* request);

    /// Returns when the request has run all its steps, or was cancelled before it ran.
    void wait(PxRequest const* request);

    /// Whether this thread is a worker: one of the manager's own, or inside a PxWorkerScope. Any
    /// thread.
    bool isWorkerThreadCurrent() const;

    /// Waits for the requests that run now, ends the worker threads and cancels what is queued.
    /// Requests stay until they are released; released ones that wait in the event queue go when
    /// that is processed or discarded. A later submit starts anew.
    void shutDown();

    /// From now on failures of requests go to `reporter`; an empty one hands them to the event
    /// manager's reporter, as at the start.
    void setFailureReporter(FailureReporter reporter);

private:
    friend class PxRequest;
    class FailureEvent;
    class CancelEvent;
    class ReleaseEvent;

    enum class State { Queued, Running, Posting, Finished, Cancelled };

    using QueuePlace = std::pair<int, std::uint64_t>; // priority, then number of the submission

    struct Record {
        OPtr<PxRequest> request;
        QueuePlace place;
        EvSource source; // what its events come of
        State state = State::Queued;
        bool isCancelled = false;
        bool hasPosted = false;
        bool isReleased = false;
        std::exception_ptr failure;
    };

    using Step = void (PxRequest::*)();

    PxRequestMgr();
    ~PxRequestMgr();

    void startWorkerIfNeeded();
    void runWorker();
    PxRequest& takeNext();
    void execute(PxRequest& request, EvSource const& source);
    void runStep(PxRequest& request, Step step);
    void keepFailure(PxRequest const& request, std::exception_ptr failure);
    bool beginPosting(PxRequest const& request);
    void finish(PxRequest const& request);
    void setState(PxRequest const& request, State state);
    Record* findRecord(PxRequest const* request);
    OPtr<PxRequest> removeRecord(PxRequest const* request);
    std::exception_ptr getFailure(PxRequest const& request);
    void reportFailure(std::string const& text);

    std::mutex mutex;
    std::condition_variable workAvailable; // told to workers: queue or isStopping changed
    std::condition_variable stateChanged;  // told to waiters: a record's state changed, or it went

    std::unordered_map<PxRequest const*, Record> records; // locked by mutex
    std::map<QueuePlace, PxRequest*> queue; // locked by mutex; the records that are Queued
    std::uint64_t nbSubmitted = 0;          // locked by mutex
    std::size_t nbIdleWorkers = 0;          // locked by mutex
    bool isStopping = false;                // locked by mutex
    std::vector<std::thread> workers;       // of the user-interface thread

    FailureReporter failureReporter; // of the user-interface thread
};
