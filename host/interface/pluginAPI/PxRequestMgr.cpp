// The request manager: its queue, its workers and the life of a request.

#include "pluginAPI/PxRequestMgr.h"

#include "base/Assertions.h"
#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "pluginAPI/PxSubmitter.h"

#include <system_error>
#include <typeinfo>

namespace {

/// Two, so that a pick does not wait behind a long request; pictures have the engine's threads.
constexpr std::size_t maxWorkers = 2;

thread_local int nbWorkerScopes = 0;

std::string describeFailure(PxRequest const& request, std::exception_ptr const& failure)
{
    std::string const type = request.getRequestType();
    try {
        std::rethrow_exception(failure);
    } catch (std::exception const& exception) {
        return type + ": " + exception.what();
    } catch (...) {
        return type + ": failure of an unknown kind";
    }
}

} // namespace

PxWorkerScope::PxWorkerScope()
{
    ++nbWorkerScopes;
}

PxWorkerScope::~PxWorkerScope()
{
    --nbWorkerScopes;
}

/// Brings a failure's text to the user-interface thread.
class PxRequestMgr::FailureEvent : public EvRequestEvent {
public:
    explicit FailureEvent(std::string failureText) : text(std::move(failureText)) {}
    void execute() override { PxRequestMgr::getInstance().reportFailure(text); }

private:
    std::string text;
};

/// Tells a submitter that a request was cancelled.
class PxRequestMgr::CancelEvent : public EvRequestEvent {
public:
    void execute() override
    {
        constexpr bool isCancelled = true;
        PxSubmitter::tellLoss(isCancelled, "");
    }
};

/// Brings a request that was released while it ran to the user-interface thread, to die there with
/// the event.
class PxRequestMgr::ReleaseEvent : public EvRequestEvent {
public:
    explicit ReleaseEvent(OPtr<PxRequest> released) : request(std::move(released)) {}
    ~ReleaseEvent() noexcept(false) override = default;
    void execute() override {}

private:
    OPtr<PxRequest> request;
};

PxRequestMgr& PxRequestMgr::getInstance()
{
    static PxRequestMgr manager;
    return manager;
}

PxRequestMgr::PxRequestMgr()
{
    EvEventManager::getInstance(); // so that it outlives the workers, which post to it
}

PxRequestMgr::~PxRequestMgr()
{
    shutDown();
    records.clear();
}

bool PxRequestMgr::isWorkerThreadCurrent() const
{
    return nbWorkerScopes > 0;
}

void PxRequestMgr::submit(PxRequest* request, int priority)
{
    Assertions::check(!isWorkerThreadCurrent(), "!isWorkerThreadCurrent()");
    if (request == nullptr) {
        RCExUtil::throwExNullPtr(typeid(PxRequest));
    }
    std::lock_guard const lock(mutex);
    Assertions::check(findRecord(request) == nullptr, "findRecord(request) == nullptr");
    QueuePlace const place(priority, ++nbSubmitted);
    EvSource const source = PxSubmitter::describeNext(nbSubmitted);
    records.try_emplace(request);
    try {
        queue.emplace(place, request);
        startWorkerIfNeeded();
    } catch (...) {
        queue.erase(place);
        records.erase(request);
        throw;
    }
    // Nothing below throws: the manager is the owner from here on.
    Record& record = records.at(request);
    record.place = place;
    record.source = source;
    record.request = OPtr<PxRequest>(request);
    PxSubmitter::keepNewest(source);
    workAvailable.notify_one();
}

void PxRequestMgr::cancel(PxRequest* request)
{
    Assertions::check(!isWorkerThreadCurrent(), "!isWorkerThreadCurrent()");
    std::unique_lock lock(mutex);
    stateChanged.wait(lock, [&] {
        auto const* const record = findRecord(request);
        return record == nullptr || record->state != State::Posting;
    });
    auto* const record = findRecord(request);
    if (record == nullptr) {
        return;
    }
    bool const isOpen =
        record->state == State::Queued || (record->state == State::Running && !record->hasPosted);
    // A failure has been told, or will be.
    bool const isLoss =
        isOpen && !std::exchange(record->isCancelled, true) && record->failure == nullptr;
    EvSource const source = record->source;
    if (record->state == State::Queued) {
        queue.erase(record->place);
        setState(*request, State::Cancelled);
    }
    lock.unlock();
    if (isLoss && source.owner != 0) {
        EvSourceScope const comesOf(source);
        EvEventManager::getInstance().post(makeOwned<CancelEvent>());
    }
}

void PxRequestMgr::release(PxRequest* request)
{
    Assertions::check(!isWorkerThreadCurrent(), "!isWorkerThreadCurrent()");
    OPtr<PxRequest> released; // dies after the lock has gone
    std::lock_guard const lock(mutex);
    auto* const record = findRecord(request);
    if (record == nullptr) {
        return;
    }
    if (record->state == State::Running || record->state == State::Posting) {
        record->isReleased = true; // finish() passes it on
        return;
    }
    queue.erase(record->place);
    released = removeRecord(request);
}

void PxRequestMgr::wait(PxRequest const* request)
{
    Assertions::check(!isWorkerThreadCurrent(), "!isWorkerThreadCurrent()");
    std::unique_lock lock(mutex);
    stateChanged.wait(lock, [&] {
        auto const* const record = findRecord(request);
        return record == nullptr || record->state == State::Finished ||
               record->state == State::Cancelled;
    });
}

void PxRequestMgr::shutDown()
{
    Assertions::check(!isWorkerThreadCurrent(), "!isWorkerThreadCurrent()");
    {
        std::lock_guard const lock(mutex);
        isStopping = true;
    }
    workAvailable.notify_all();
    for (auto& worker : workers) {
        worker.join();
    }
    workers.clear();

    std::lock_guard const lock(mutex);
    isStopping = false;
    for (auto const& [place, request] : queue) {
        setState(*request, State::Cancelled);
    }
    queue.clear();
}

void PxRequestMgr::setFailureReporter(FailureReporter reporter)
{
    failureReporter = std::move(reporter);
}

// Locked by the caller. Failing to start a second worker is no failure: the first does the work.
void PxRequestMgr::startWorkerIfNeeded()
{
    if (nbIdleWorkers >= queue.size() || workers.size() == maxWorkers) {
        return;
    }
    try {
        workers.reserve(maxWorkers);
        workers.emplace_back([this] { runWorker(); });
    } catch (std::system_error const&) {
        if (workers.empty()) {
            throw;
        }
    }
}

void PxRequestMgr::runWorker()
{
    PxWorkerScope const scope;
    std::unique_lock lock(mutex);
    while (true) {
        ++nbIdleWorkers;
        workAvailable.wait(lock, [this] { return isStopping || !queue.empty(); });
        --nbIdleWorkers;
        if (isStopping) {
            return;
        }
        PxRequest& request = takeNext();
        EvSource const source = findRecord(&request)->source;
        lock.unlock();
        execute(request, source);
        lock.lock();
    }
}

// Locked by the caller; the queue is not empty.
PxRequest& PxRequestMgr::takeNext()
{
    PxRequest& request = *queue.begin()->second;
    queue.erase(queue.begin());
    setState(request, State::Running);
    return request;
}

void PxRequestMgr::execute(PxRequest& request, EvSource const& source)
{
    EvSourceScope const comesOf(source);
    runStep(request, &PxRequest::performExecute);
    runStep(request, &PxRequest::completeExecution);
    if (beginPosting(request)) {
        runStep(request, &PxRequest::postResult);
        std::lock_guard const lock(mutex);
        findRecord(&request)->hasPosted = true;
        setState(request, State::Running);
    }
    runStep(request, &PxRequest::performCleanUp);
    finish(request);
}

void PxRequestMgr::runStep(PxRequest& request, Step step)
{
    try {
        (request.*step)();
    } catch (...) {
        keepFailure(request, std::current_exception());
    }
}

// The text is made here, on the worker, so that the exception itself has one thread at a time.
void PxRequestMgr::keepFailure(PxRequest const& request, std::exception_ptr failure)
{
    auto event = makeOwned<FailureEvent>(describeFailure(request, failure));
    {
        std::lock_guard const lock(mutex);
        auto& record = *findRecord(&request);
        if (record.failure == nullptr) {
            record.failure = std::move(failure);
        }
    }
    EvEventManager::getInstance().post(std::move(event));
}

// Whether the result may be posted. If so, cancel() waits until the state is another one.
bool PxRequestMgr::beginPosting(PxRequest const& request)
{
    std::lock_guard const lock(mutex);
    if (findRecord(&request)->isCancelled) {
        return false;
    }
    setState(request, State::Posting);
    return true;
}

void PxRequestMgr::finish(PxRequest const& request)
{
    OPtr<PxRequest> released;
    {
        std::lock_guard const lock(mutex);
        setState(request, State::Finished);
        if (findRecord(&request)->isReleased) {
            released = removeRecord(&request);
        }
    }
    if (released) {
        EvEventManager::getInstance().post(makeOwned<ReleaseEvent>(std::move(released)));
    }
}

// Locked by the caller; the request is known.
void PxRequestMgr::setState(PxRequest const& request, State state)
{
    findRecord(&request)->state = state;
    stateChanged.notify_all();
}

// Locked by the caller. The record stays in place while others come and go.
PxRequestMgr::Record* PxRequestMgr::findRecord(PxRequest const* request)
{
    auto const found = records.find(request);
    return found == records.end() ? nullptr : &found->second;
}

// Locked by the caller; the request is known. Wakes those who wait for it.
OPtr<PxRequest> PxRequestMgr::removeRecord(PxRequest const* request)
{
    auto const found = records.find(request);
    auto removed = std::move(found->second.request);
    records.erase(found);
    stateChanged.notify_all();
    return removed;
}

std::exception_ptr PxRequestMgr::getFailure(PxRequest const& request)
{
    std::lock_guard const lock(mutex);
    auto const* const record = findRecord(&request);
    return record == nullptr ? nullptr : record->failure;
}

// On the user-interface thread. Without a reporter the failure becomes the event's own.
void PxRequestMgr::reportFailure(std::string const& text)
{
    constexpr bool isCancelled = false;
    if (PxSubmitter::tellLoss(isCancelled, text)) {
        return;
    }
    if (!failureReporter) {
        throw HostException(text);
    }
    auto const reporter = failureReporter; // it may exchange itself while it runs
    reporter(text);
}
