#include "base/EvEventManager.h"

#include "base/HostException.h"

#include <exception>
#include <typeinfo>
#include <utility>

namespace {

std::string describeCurrentException()
{
    try {
        throw;
    } catch (std::exception const& failure) {
        return failure.what();
    } catch (...) {
        return "Failure of an unknown kind";
    }
}

/// Fails with a text that was made where the failure happened.
class FailedEvent : public EvRequestEvent {
public:
    explicit FailedEvent(std::string failureText) : text(std::move(failureText)) {}
    void execute() override { throw HostException(text); }

private:
    std::string text;
};

thread_local EvSource currentSource;

} // namespace

EvSource EvSource::getCurrent()
{
    return currentSource;
}

EvSourceScope::EvSourceScope(EvSource const& source) : former(std::exchange(currentSource, source))
{
}

EvSourceScope::~EvSourceScope()
{
    currentSource = former;
}

EvEventManager& EvEventManager::getInstance()
{
    static EvEventManager manager;
    return manager;
}

EvEventManager::~EvEventManager()
{
    discardEvents();
}

void EvEventManager::post(OPtr<EvRequestEvent> event)
{
    if (event.isNull()) {
        RCExUtil::throwExNullPtr(typeid(EvRequestEvent));
    }
    QueuedEvent queued{0, currentSource, std::move(event)};
    std::unique_lock lock(mutex);
    queued.number = ++lastNumber;
    queue.push_back(std::move(queued));
    eventQueued.notify_all();
    wake(lock);
}

void EvEventManager::postCurrentException()
{
    post(makeOwned<FailedEvent>(describeCurrentException()));
}

void EvEventManager::setWakeUp(std::function<void()> newWakeUp)
{
    std::unique_lock lock(mutex);
    wakeUp.swap(newWakeUp);
    wakeUpEnded.wait(lock, [this] { return nbWakeUps == 0; });
    isAwake = false;
    if (!queue.empty()) {
        wake(lock);
    }
}

int EvEventManager::processEvents()
{
    auto const last = beginTaking();
    int nbProcessed = 0;
    for (auto next = takeNextUpTo(last); next.event; next = takeNextUpTo(last)) {
        runAndDestroy(std::move(next));
        ++nbProcessed;
    }
    return nbProcessed;
}

bool EvEventManager::waitForEvents(std::chrono::milliseconds longest)
{
    std::unique_lock lock(mutex);
    return eventQueued.wait_for(lock, longest, [this] { return !queue.empty(); });
}

void EvEventManager::discardEvents()
{
    auto const last = beginTaking();
    for (auto next = takeNextUpTo(last); next.event; next = takeNextUpTo(last)) {
        try {
            next.event = nullptr;
        } catch (...) {
            reportCurrentException();
        }
    }
}

void EvEventManager::setFailureReporter(FailureReporter reporter)
{
    failureReporter = std::move(reporter);
}

std::vector<std::string> EvEventManager::takeFailures()
{
    return std::exchange(keptFailures, {});
}

std::uint64_t EvEventManager::beginTaking()
{
    std::lock_guard const lock(mutex);
    isAwake = false;
    return lastNumber;
}

EvEventManager::QueuedEvent EvEventManager::takeNextUpTo(std::uint64_t number)
{
    std::lock_guard const lock(mutex);
    if (queue.empty() || queue.front().number > number) {
        return {};
    }
    auto next = std::move(queue.front());
    queue.pop_front();
    return next;
}

void EvEventManager::runAndDestroy(QueuedEvent queued)
{
    EvSourceScope const source(queued.source);
    try {
        queued.event->execute();
    } catch (...) {
        reportCurrentException();
    }
    try {
        queued.event = nullptr;
    } catch (...) {
        reportCurrentException();
    }
}

// Called with the lock, which is open while the wake-up runs.
void EvEventManager::wake(std::unique_lock<std::mutex>& lock)
{
    if (!wakeUp || isAwake) {
        return;
    }
    {
        auto const called = wakeUp;
        isAwake = true;
        ++nbWakeUps;
        lock.unlock();
        [&]() noexcept { called(); }();
    }
    lock.lock();
    --nbWakeUps;
    wakeUpEnded.notify_all();
}

// Call from within a catch clause. A reporter that throws does not stop the queue: both texts are
// kept instead.
void EvEventManager::reportCurrentException()
{
    auto const text = describeCurrentException();
    if (!failureReporter) {
        keptFailures.push_back(text);
        return;
    }
    try {
        auto const reporter = failureReporter; // it may exchange itself while it runs
        reporter(text);
    } catch (...) {
        keptFailures.push_back(text);
        keptFailures.push_back(describeCurrentException());
    }
}
