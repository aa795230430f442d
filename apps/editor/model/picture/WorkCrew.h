#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// Workers that stay, for short jobs of many parts, one job at a time. Made, used and destroyed on
/// the user-interface thread.
class WorkCrew {
public:
    /// Work in parts that do not share anything they write.
    class Job {
    public:
        virtual ~Job() = default;

        /// What comes before the parts, on one worker. Returns how many parts there are.
        virtual int begin() = 0;
        /// Any worker, several parts at once.
        virtual void doPart(int part) = 0;
    };

    /// Gets what went wrong, or null; RenderCancelled for a job that was called off.
    using Ended = std::function<void(std::exception_ptr const&)>;

    /// Throws std::system_error if no thread can be started; fewer than asked for will do.
    explicit WorkCrew(int threads);
    /// Calls off what has not ended; nothing is told of it.
    ~WorkCrew();
    WorkCrew(WorkCrew const&) = delete;
    WorkCrew& operator=(WorkCrew const&) = delete;

    bool isBusy() const { return task != nullptr; }

    /// Not while it is busy. Begins after the delay; `ended` is called on the user-interface
    /// thread.
    void start(std::unique_ptr<Job> job, std::chrono::milliseconds delay, Ended const& ended);

    /// Calls the job off; `ended` is still called.
    void cancel();

    /// Calls the job off and waits until no worker has to do with it; nothing is told of it.
    void drop();

private:
    struct Task;

    void work();
    bool waitForPart(std::unique_lock<std::mutex>& lock);
    void doNext(std::unique_lock<std::mutex>& lock);
    void endIfDone();

    std::mutex mutex;
    std::condition_variable changed;
    std::shared_ptr<Task> task; ///< set on the user-interface thread, locked by mutex
    bool isStopping = false;    ///< locked by mutex
    std::vector<std::jthread> workers;
};
