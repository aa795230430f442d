#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <memory>

/// Work on a thread of its own. Made, used and destroyed on the user-interface thread.
class AsideTask {
public:
    /// Gets a flag that says when nobody wants the result any more. Throws RenderCancelled or
    /// anything else.
    using Work = std::function<void(std::atomic<bool> const& cancelled)>;
    /// Gets what was thrown, or null.
    using Ended = std::function<void(std::exception_ptr const& failure)>;

    /// `ended` is called on the user-interface thread, later on, unless the task is destroyed
    /// before. Throws std::system_error where there is no thread to be had.
    AsideTask(Work work, Ended ended);

    /// Cancels and waits for the work to come to its end.
    ~AsideTask();
    AsideTask(AsideTask const&) = delete;
    AsideTask& operator=(AsideTask const&) = delete;

    /// `ended` is still called.
    void cancel();

private:
    struct State;
    std::shared_ptr<State> state;
};
