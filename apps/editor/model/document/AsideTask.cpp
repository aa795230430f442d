#include "editor/model/document/AsideTask.h"

#include "editor/model/document/UserThread.h"

#include <thread>
#include <utility>

struct AsideTask::State {
    std::atomic<bool> cancelled = false;
    Work work;
    Ended ended;
    std::jthread thread; // the others outlive it
};

AsideTask::AsideTask(Work work, Ended ended) : state(std::make_shared<State>())
{
    state->work = std::move(work);
    state->ended = std::move(ended);
    state->thread = std::jthread([&task = *state, owner = std::weak_ptr<State>(state)] {
        std::exception_ptr failure;
        try {
            task.work(task.cancelled);
        } catch (...) {
            failure = std::current_exception();
        }
        // What is called may destroy the task.
        callOnUserThread(owner, [&task, failure] { std::exchange(task.ended, {})(failure); });
    });
}

AsideTask::~AsideTask()
{
    cancel();
}

void AsideTask::cancel()
{
    state->cancelled = true;
}
