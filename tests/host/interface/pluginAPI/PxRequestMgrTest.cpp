// The request manager: order, cancellation, failures, waiting, and who dies where.

#include "pluginAPI/PxRequestMgr.h"

#include "base/EvEventManager.h"
#include "base/HostException.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <semaphore>
#include <stdexcept>
#include <thread>

namespace {

using namespace std::chrono_literals;

std::atomic<int> nbAlive = 0;
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
        ++nbAlive;
    }
    ~TestRequest() noexcept(false) override
    {
        nbDestroyedOnWorkers += manager().isWorkerThreadCurrent() ? 1 : 0;
        --nbAlive;
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

std::vector<PxRequest*> toRelease; // at the end of a test, unless the test itself does

TestRequest* submitNew(std::function<void()> work, int priority = 0)
{
    auto request = makeOwned<TestRequest>(std::move(work));
    manager().submit(request.get(), priority);
    toRelease.push_back(request.get());
    return static_cast<TestRequest*>(request.release());
}

/// Keeps all workers busy until `open`, so that what is submitted meanwhile stays in the queue.
class Blockade {
public:
    Blockade()
    {
        for (auto*& request : blockers) {
            request = submitNew([this] {
                arrived.release();
                gate.acquire();
            });
        }
        for (int blocker = 0; blocker < 2; ++blocker) {
            arrived.acquire();
        }
    }
    ~Blockade()
    {
        if (!isOpen) {
            open(2);
        }
        for (auto* const request : blockers) {
            manager().wait(request);
            manager().release(request);
        }
    }
    void open(int nbWorkers)
    {
        isOpen = true;
        gate.release(nbWorkers);
    }
    void openRest() { gate.release(1); }

private:
    std::counting_semaphore<> arrived{0};
    std::counting_semaphore<> gate{0};
    TestRequest* blockers[2] = {};
    bool isOpen = false;
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
        EXPECT_EQ(0, nbAlive);
        EXPECT_EQ(0, nbDestroyedOnWorkers);
    }
};

TEST_F(PxRequestMgrTest, StepsRunInOrderOnAWorker)
{
    auto* const request = submitNew({});
    manager().wait(request);
    EXPECT_EQ("ecpu", request->steps);
    EXPECT_EQ(nullptr, request->getFailure());
    EXPECT_FALSE(manager().isWorkerThreadCurrent());
    manager().release(request);
    EXPECT_EQ(0, nbAlive);
}

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
    blockade.openRest();
    EXPECT_EQ("abcde", order);
}

TEST_F(PxRequestMgrTest, QueuedRequestThatIsCancelledNeverRuns)
{
    TestRequest* request = nullptr;
    {
        Blockade const blockade;
        request = submitNew({});
        manager().cancel(request);
        manager().wait(request);
    }
    manager().wait(request);
    EXPECT_EQ("", request->steps);
}

TEST_F(PxRequestMgrTest, QueuedRequestThatIsReleasedDiesAtOnce)
{
    Blockade const blockade;
    auto* const request = submitNew({});
    manager().release(request);
    EXPECT_EQ(2, nbAlive); // the blockade's own
}

TEST_F(PxRequestMgrTest, RunningRequestThatIsCancelledPostsNothing)
{
    std::binary_semaphore started{0};
    std::binary_semaphore mayFinish{0};
    auto* const request = submitNew([&] {
        started.release();
        mayFinish.acquire();
    });
    started.acquire();
    manager().cancel(request);
    mayFinish.release();
    manager().wait(request);
    EXPECT_EQ("ecu", request->steps);
}

TEST_F(PxRequestMgrTest, CancelWaitsForAResultThatIsBeingPosted)
{
    std::binary_semaphore posting{0};
    std::atomic<bool> isPosted = false;
    auto request = makeOwned<TestRequest>();
    request->postWork = [&] {
        posting.release();
        std::this_thread::sleep_for(20ms);
        isPosted = true;
    };
    manager().submit(request.get(), 0);
    auto* const submitted = request.release();
    toRelease.push_back(submitted);
    posting.acquire();
    manager().cancel(submitted);
    EXPECT_TRUE(isPosted);
}

TEST_F(PxRequestMgrTest, RunningRequestThatIsReleasedDiesWithItsEvent)
{
    for (bool const isProcessed : {true, false}) {
        std::binary_semaphore started{0};
        std::binary_semaphore mayFinish{0};
        auto* const request = submitNew([&] {
            started.release();
            mayFinish.acquire();
        });
        started.acquire();
        manager().release(request);
        mayFinish.release();
        ASSERT_TRUE(events().waitForEvents(30s));
        EXPECT_EQ(1, nbAlive);
        if (isProcessed) {
            EXPECT_EQ(1, events().processEvents());
        } else {
            events().discardEvents();
        }
        EXPECT_EQ(0, nbAlive);
    }
}

TEST_F(PxRequestMgrTest, FailuresAreKeptAndEachIsReportedOnce)
{
    std::vector<std::string> reports;
    manager().setFailureReporter([&](std::string const& text) { reports.push_back(text); });
    auto request = makeOwned<TestRequest>([] { throw std::runtime_error("first"); });
    request->completeWork = [] { throw 2; };
    manager().submit(request.get(), 0);
    auto* const submitted = request.release();
    toRelease.push_back(submitted);
    manager().wait(submitted);

    EXPECT_EQ("ecpu", submitted->steps);
    EXPECT_THROW(std::rethrow_exception(submitted->getFailure()), std::runtime_error);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(2, events().processEvents());
    ASSERT_EQ(2U, reports.size());
    EXPECT_NE(std::string::npos, reports[0].find("TestRequest: first"));
    EXPECT_NE(std::string::npos, reports[1].find("TestRequest: failure of an unknown kind"));
}

TEST_F(PxRequestMgrTest, WithoutAReporterFailuresGoToTheEventManager)
{
    manager().wait(submitNew([] { throw std::runtime_error("lost?"); }));
    events().processEvents();
    auto const failures = events().takeFailures();
    ASSERT_EQ(1U, failures.size());
    EXPECT_NE(std::string::npos, failures[0].find("lost?"));
}

TEST_F(PxRequestMgrTest, WorkersMayNotUseTheSubmittersOperations)
{
    TestRequest request;
    EXPECT_THROW(manager().submit(nullptr, 0), NullPointerException);
    {
        PxWorkerScope const outer;
        {
            PxWorkerScope const inner;
        }
        EXPECT_TRUE(manager().isWorkerThreadCurrent());
        EXPECT_THROW(manager().submit(&request, 0), AssertionFailure);
        EXPECT_THROW(manager().cancel(&request), AssertionFailure);
        EXPECT_THROW(manager().release(&request), AssertionFailure);
        EXPECT_THROW(manager().wait(&request), AssertionFailure);
        EXPECT_THROW(manager().shutDown(), AssertionFailure);
    }
    EXPECT_FALSE(manager().isWorkerThreadCurrent());
    // Unknown to the manager: nothing to do.
    manager().cancel(&request);
    manager().wait(&request);
    manager().release(&request);
}

TEST_F(PxRequestMgrTest, RequestIsSubmittedOnce)
{
    Blockade const blockade;
    auto* const request = submitNew({});
    EXPECT_THROW(manager().submit(request, 0), AssertionFailure);
}

TEST_F(PxRequestMgrTest, ShutDownLetsRunningRequestsFinishAndCancelsTheRest)
{
    std::atomic<bool> isQueuedOneRun = false;
    std::atomic<bool> isRunningOneFinished = false;
    std::counting_semaphore<> started{0};
    auto const slowWork = [&] {
        started.release();
        std::this_thread::sleep_for(20ms);
        isRunningOneFinished = true;
    };
    submitNew(slowWork);
    submitNew(slowWork);
    started.acquire();
    started.acquire();
    auto* const queued = submitNew([&] { isQueuedOneRun = true; }, 1);
    manager().shutDown();
    manager().wait(queued);
    EXPECT_EQ(3, nbAlive); // whoever submitted them may still use them
    EXPECT_TRUE(isRunningOneFinished);
    EXPECT_FALSE(isQueuedOneRun);

    manager().wait(submitNew([&] { isQueuedOneRun = true; }));
    EXPECT_TRUE(isQueuedOneRun);
}

TEST_F(PxRequestMgrTest, ManyPicksInARowNeverLoseARequestOrPostACancelledOne)
{
    constexpr int nbRounds = 5000;
    std::mt19937 random(1);
    std::atomic<int> newestCancelled = -1;
    std::atomic<int> nbPosts = 0;
    std::atomic<int> nbLatePosts = 0;
    int nbFailing = 0;
    TestRequest* pending = nullptr;
    for (int round = 0; round < nbRounds; ++round) {
        bool const isFailing = random() % 8 == 0;
        nbFailing += isFailing ? 1 : 0;
        auto request = makeOwned<TestRequest>([isFailing] {
            if (isFailing) {
                throw std::runtime_error("failing");
            }
        });
        request->postWork = [&, round] {
            ++nbPosts;
            nbLatePosts += newestCancelled >= round ? 1 : 0;
        };
        if (pending != nullptr) {
            manager().cancel(pending);
            newestCancelled = round - 1;
        }
        manager().submit(request.get(), static_cast<int>(random() % 3));
        if (pending != nullptr) {
            manager().release(pending);
        }
        pending = static_cast<TestRequest*>(request.release());
        if (random() % 4 == 0) {
            manager().wait(pending);
        }
        if (random() % 16 == 0) {
            events().processEvents();
        }
    }
    manager().wait(pending);
    manager().release(pending);
    manager().shutDown();
    events().processEvents();
    EXPECT_EQ(0, nbAlive);
    EXPECT_EQ(0, nbLatePosts);
    EXPECT_GE(nbPosts, nbRounds / 5); // at least those that were waited for
    EXPECT_LE(events().takeFailures().size(), static_cast<std::size_t>(nbFailing));
}

} // namespace
