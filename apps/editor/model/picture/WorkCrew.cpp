#include "editor/model/picture/WorkCrew.h"

#include "editor/model/document/UserThread.h"
#include "pluginAPI/PxRequestMgr.h"
#include "runtime/engine/RenderPool.h"

#include <system_error>
#include <utility>

using Clock = std::chrono::steady_clock;

/// A job on its way; all but the constants is locked by the crew's mutex.
struct WorkCrew::Task {
    Task(std::unique_ptr<Job> itsJob, Ended itsEnd, Clock::time_point begin)
        : job(std::move(itsJob)), ended(std::move(itsEnd)), start(begin)
    {
    }

    std::unique_ptr<Job> const job;
    Ended const ended;
    Clock::time_point const start;

    bool hasBegun = false; ///< a worker is at or after begin()
    int nbParts = 0;       ///< from then on
    int nextPart = 0;
    int nbWorking = 0;
    bool isOver = false; ///< its end has been posted
    std::exception_ptr failure{};

    bool hasPart() const { return !failure && (!hasBegun || nextPart < nbParts); }
};

WorkCrew::WorkCrew(int threads)
{
    for (int worker = 0; worker < threads; ++worker) {
        try {
            workers.emplace_back([this] { work(); });
        } catch (std::system_error const&) {
            if (workers.empty()) {
                throw;
            }
            break;
        }
    }
}

WorkCrew::~WorkCrew()
{
    drop();
    {
        std::lock_guard const lock(mutex);
        isStopping = true;
    }
    changed.notify_all();
}

void WorkCrew::start(std::unique_ptr<Job> job, std::chrono::milliseconds delay, Ended const& ended)
{
    auto started = std::make_shared<Task>(std::move(job), ended, Clock::now() + delay);
    {
        std::lock_guard const lock(mutex);
        task = std::move(started);
    }
    changed.notify_all();
}

void WorkCrew::cancel()
{
    std::lock_guard const lock(mutex);
    if (task != nullptr && !task->failure) {
        task->failure = std::make_exception_ptr(RenderCancelled());
        endIfDone();
    }
}

void WorkCrew::drop()
{
    std::shared_ptr<Task> dropped; // goes when the lock has gone
    std::unique_lock lock(mutex);
    dropped = std::exchange(task, nullptr);
    if (dropped != nullptr) {
        dropped->failure = std::make_exception_ptr(RenderCancelled());
        changed.notify_all();
        changed.wait(lock, [&] { return dropped->nbWorking == 0; });
    }
}

void WorkCrew::work()
{
    PxWorkerScope const worker;
    std::unique_lock lock(mutex);
    while (waitForPart(lock)) {
        doNext(lock);
    }
}

/// False when there will be none.
bool WorkCrew::waitForPart(std::unique_lock<std::mutex>& lock)
{
    for (;;) {
        if (isStopping) {
            return false;
        }
        bool const isWaiting = task != nullptr && task->hasPart() && !task->hasBegun;
        if (isWaiting && Clock::now() < task->start) {
            Clock::time_point const start = task->start;
            changed.wait_until(lock, start);
        } else if (task != nullptr && task->hasPart()) {
            return true;
        } else {
            changed.wait(lock);
        }
    }
}

void WorkCrew::doNext(std::unique_lock<std::mutex>& lock)
{
    std::shared_ptr<Task> const taken = task; // the crew may be given another one meanwhile
    bool const isFirst = !std::exchange(taken->hasBegun, true);
    int const part = isFirst ? 0 : taken->nextPart++;
    ++taken->nbWorking;
    lock.unlock();
    std::exception_ptr failure;
    int nbParts = 0;
    try {
        if (isFirst) {
            nbParts = taken->job->begin();
        } else {
            taken->job->doPart(part);
        }
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    taken->nbParts = isFirst ? nbParts : taken->nbParts;
    taken->failure = taken->failure ? taken->failure : failure;
    --taken->nbWorking;
    if (taken == task) {
        endIfDone();
    }
    changed.notify_all();
}

/// Tells the end of a job that nobody works on or will work on.
void WorkCrew::endIfDone()
{
    if (task->nbWorking > 0 || task->hasPart() || std::exchange(task->isOver, true)) {
        return;
    }
    callOnUserThread(task, [this, over = task.get()] {
        std::shared_ptr<Task> ended;
        {
            std::lock_guard const lock(mutex);
            if (task.get() != over) {
                return; // dropped, though a worker has not let go of it yet
            }
            ended = std::exchange(task, nullptr);
        }
        ended->ended(ended->failure);
    });
}
