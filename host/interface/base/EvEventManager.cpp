#include "base/EvEventManager.h"

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

} // namespace

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
    QueuedEvent queued{0, std::move(event)};
    {
        std::lock_guard const lock(mutex);
        queued.number = ++lastNumber;
        queue.push_back(std::move(queued));
    }
    eventQueued.notify_all();
}

int EvEventManager::processEvents()
{
    auto const last = getLastNumber();
    int nbProcessed = 0;
    while (auto event = takeNextUpTo(last)) {
        runAndDestroy(std::move(event));
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
    auto const last = getLastNumber();
    while (auto event = takeNextUpTo(last)) {
        try {
            event = nullptr;
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

std::uint64_t EvEventManager::getLastNumber()
{
    std::lock_guard const lock(mutex);
    return lastNumber;
}

OPtr<EvRequestEvent> EvEventManager::takeNextUpTo(std::uint64_t number)
{
    std::lock_guard const lock(mutex);
    if (queue.empty() || queue.front().number > number) {
        return {};
    }
    auto event = std::move(queue.front().event);
    queue.pop_front();
    return event;
}

void EvEventManager::runAndDestroy(OPtr<EvRequestEvent> event)
{
    try {
        event->execute();
    } catch (...) {
        reportCurrentException();
    }
    try {
        event = nullptr;
    } catch (...) {
        reportCurrentException();
    }
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
