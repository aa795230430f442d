// The request manager: order, cancellation, failures, waiting, and who dies where.

#include "pluginAPI/PxRequestMgr.h"

#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "support/Failures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <semaphore>
#include <stdexcept>
#include <thread>

namespace {

using namespace std::chrono_literals;

std::atomic<int> nbRequests = 0;
std::atomic<int> nbDestroyedOnWorkers = 0;

PxRequestMgr& manager()
{
    return PxRequestMgr::getInstance();
}

EvEventManager& events()
{
    return EvEventManager::getInstance();
}

/// Each step does what the test gave it; the names of the steps that ran gather in `steps`.
class TestRequest : public PxRequest {
public:
    explicit TestRequest(std::function<void()> requestWork = {}) : work(std::move(requestWork))
    {
        ++nbRequests;
    }
    ~TestRequest() noexcept(false) override
    {
        nbDestroyedOnWorkers += manager().isWorkerThreadCurrent() ? 1 : 0;
        --nbRequests;
    }
    void performExecute() override { run('e', work); }
    void completeExecution() override { run('c', completeWork); }
    void postResult() override { run('p', postWork); }
    void performCleanUp() override { run('u', {}); }

    std::function<void()> completeWork;
    std::function<void()> postWork;
    std::string steps; // written by the worker, read after wait()

private:
    void run(char step, std::function<void()> const& stepWork)
    {
        EXPECT_TRUE(manager().isWorkerThreadCurrent());
        steps += step;
        if (stepWork) {
            stepWork();
        }
    }

    std::function<void()> work;
};

std::vector<PxRequest*> toRelease; // at the end of a test; releasing twice does nothing

TestRequest* submit(OPtr<TestRequest> request, int priority = 0)
{
    manager().submit(request.get(), priority);
    toRelease.push_back(request.get());
    return request.release();
}

TestRequest* submitNew(std::function<void()> work, int priority = 0)
{
    return submit(makeOwned<TestRequest>(std::move(work)), priority);
}

/// Keeps one worker busy until it is let through.
struct Halt {
    void operator()()
    {
        started.release();
        mayFinish.acquire();
    }
    std::counting_semaphore<> started{0};
    std::counting_semaphore<> mayFinish{0};
};

/// Keeps both workers busy until `open`, so that what is submitted meanwhile stays in the queue.
class Blockade {
public:
    Blockade()
    {
        for (auto*& request : blockers) {
            request = submitNew([this] { halt(); });
            halt.started.acquire();
        }
    }
    ~Blockade()
    {
        open(2);
        for (auto* const request : blockers) {
            manager().wait(request);
            manager().release(request);
        }
    }
    void open(int nbWorkers) { halt.mayFinish.release(nbWorkers); }

private:
    Halt halt;
    TestRequest* blockers[2] = {};
};

struct PxRequestMgrTest : ::testing::Test {
    PxRequestMgrTest() { nbDestroyedOnWorkers = 0; }
    ~PxRequestMgrTest() override
    {
        manager().shutDown();
        for (auto* const request : std::exchange(toRelease, {})) {
            manager().release(request);
        }
        events().discardEvents();
        events().takeFailures();
        manager().setFailureReporter({});
        EXPECT_EQ(0, nbRequests);
        EXPECT_EQ(0, nbDestroyedOnWorkers);
    }
};

TEST_F(PxRequestMgrTest, LowerPrioritiesFirstThenTheOldest)
{
    std::string order; // only one worker is let through
    std::vector<TestRequest*> requests;
    Blockade blockade;
    std::pair<int, char> const cases[] = {{5, 'd'}, {0, 'a'}, {5, 'e'}, {0, 'b'}, {1, 'c'}};
    for (auto const& [priority, name] : cases) {
        requests.push_back(submitNew([&order, name = name] { order += name; }, priority));
    }
    blockade.open(1);
    for (auto* const request : requests) {
        manager().wait(request);
    }
    EXPECT_EQ("abcde", order);
}

TEST_F(PxRequestMgrTest, QueuedRequestThatIsCancelledOrReleasedNeverRuns)
{
    TestRequest* request = nullptr;
    {
        Blockade const blockade;
        request = submitNew({});
        EXPECT_THROW(manager().submit(request, 0), AssertionFailure);
        manager().cancel(request);
        manager().wait(request);
        manager().release(submitNew({}));
        EXPECT_EQ(3, nbRequests); // with the blockade's own
    }
    manager().wait(request);
    EXPECT_EQ("", request->steps);
}

/// Runs `call`, which must not return before `letThrough` has run; on another thread that runs as
/// soon as the call has had time to return too early.
void expectToWait(std::function<void()> const& call, std::function<void()> const& letThrough)
{
    std::binary_semaphore hasReturned{0};
    bool isTooEarly = false;
    {
        std::jthread const opener([&] {
            isTooEarly = hasReturned.try_acquire_for(30ms);
            letThrough();
        });
        call();
        hasReturned.release();
    }
    EXPECT_FALSE(isTooEarly);
}

TEST_F(PxRequestMgrTest, CancelWaitsForAResultThatIsBeingPosted)
{
    std::binary_semaphore isPosting{0};
    std::binary_semaphore mayPost{0};
    auto request = makeOwned<TestRequest>();
    request->postWork = [&] {
        isPosting.release();
        mayPost.acquire();
    };
    auto* const posting = submit(std::move(request));
    isPosting.acquire();
    expectToWait([&] { manager().cancel(posting); }, [&] { mayPost.release(); });
    manager().wait(posting);
    EXPECT_EQ("ecpu", posting->steps);
}

TEST_F(PxRequestMgrTest, WaitLastsToTheEndOfARunningRequestAndACancelledOnePostsNothing)
{
    for (bool const isCancelled : {false, true}) {
        Halt halt;
        auto* const running = submitNew([&] { halt(); });
        halt.started.acquire();
        if (isCancelled) {
            manager().cancel(running);
            manager().cancel(running); // twice is once
        }
        expectToWait([&] { manager().wait(running); }, [&] { halt.mayFinish.release(); });
        EXPECT_EQ(isCancelled ? "ecu" : "ecpu", running->steps);
        manager().cancel(running); // too late: nothing
        manager().wait(running);
        EXPECT_EQ(nullptr, running->getFailure());
    }
}

TEST_F(PxRequestMgrTest, WorkersMayNotUseTheManager)
{
    std::atomic<int> nbRefused = 0;
    TestRequest other;
    manager().wait(submitNew([&] {
        std::function<void()> const uses[] = {
            [&] { manager().submit(&other, 0); }, [&] { manager().cancel(&other); },
            [&] { manager().release(&other); }, [&] { manager().wait(&other); },
            [&] { manager().shutDown(); }};
        for (auto const& use : uses) {
            try {
                use();
            } catch (AssertionFailure const&) {
                ++nbRefused;
            }
        }
    }));
    EXPECT_EQ(5, nbRefused);
    EXPECT_THROW(manager().submit(nullptr, 0), NullPointerException);
}

TEST_F(PxRequestMgrTest, AReleasedRequestRunsToItsEndAndDiesWithAnEvent)
{
    Halt halt;
    std::string steps;
    auto request = makeOwned<TestRequest>([&] { halt(); });
    request->postWork = [&] { steps += 'p'; };
    auto* const running = submit(std::move(request));
    halt.started.acquire();
    manager().release(running);
    EXPECT_EQ(1, nbRequests);
    halt.mayFinish.release();
    ASSERT_TRUE(events().waitForEvents(30s));
    EXPECT_EQ(1, nbRequests);
    events().processEvents();
    EXPECT_EQ(0, nbRequests);
    EXPECT_EQ("p", steps);
}

TEST_F(PxRequestMgrTest, FailuresAreKeptAndEachIsReportedOnceToTheReporterOrTheEventManager)
{
    for (bool const hasReporter : {true, false}) {
        std::vector<std::string> reports;
        manager().setFailureReporter({});
        if (hasReporter) {
            manager().setFailureReporter([&](std::string const& text) { reports.push_back(text); });
        }
        auto request = makeOwned<TestRequest>([] { throw std::runtime_error("first"); });
        request->completeWork = [] { throw 2; };
        auto* const submitted = submit(std::move(request));
        manager().wait(submitted);
        EXPECT_EQ("ecpu", submitted->steps); // each step has its turn whatever fails
        EXPECT_THROW(std::rethrow_exception(submitted->getFailure()), std::runtime_error);
        EXPECT_TRUE(reports.empty());
        EXPECT_EQ(2, events().processEvents());
        auto const kept = events().takeFailures();
        EXPECT_EQ(hasReporter, kept.empty());
        auto const& told = hasReporter ? reports : kept;
        ASSERT_EQ(2U, told.size());
        expectLineWith("TestRequest: first", told[0]);
        expectLineWith("TestRequest: failure of an unknown kind", told[1]);
    }
}

TEST_F(PxRequestMgrTest, ShutDownLetsRunningRequestsFinishAndCancelsTheRest)
{
    Halt halt;
    std::vector<TestRequest*> running;
    for (int number = 0; number < 2; ++number) {
        running.push_back(submitNew([&] { halt(); }));
        halt.started.acquire();
    }
    auto* const queued = submitNew({}, 1);
    expectToWait([&] { manager().shutDown(); }, [&] { halt.mayFinish.release(2); });
    manager().wait(queued);
    EXPECT_EQ(3, nbRequests); // whoever submitted them may still use them
    EXPECT_EQ("ecpu", running[0]->steps);
    EXPECT_EQ("ecpu", running[1]->steps);
    EXPECT_EQ("", queued->steps);

    auto* const later = submitNew({});
    manager().wait(later);
    EXPECT_EQ("ecpu", later->steps);
    EXPECT_EQ("", queued->steps);
}

} // namespace
