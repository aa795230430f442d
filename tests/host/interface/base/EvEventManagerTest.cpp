// The event queue: order, failures, what runs when, and posting from other threads.

#include "base/EvEventManager.h"

#include "base/HostException.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <semaphore>
#include <stdexcept>
#include <thread>

namespace {

class TestEvent : public EvRequestEvent {
public:
    explicit TestEvent(std::function<void()> eventWork) : work(std::move(eventWork)) {}
    void execute() override { work(); }

private:
    std::function<void()> work;
};

struct EventThrowsWhenDestroyed : EvRequestEvent {
    ~EventThrowsWhenDestroyed() noexcept(false) override { throw std::runtime_error("destroyed"); }
    void execute() override { throw std::runtime_error("executed"); }
};

struct EvEventManagerTest : ::testing::Test {
    ~EvEventManagerTest() override
    {
        manager.discardEvents();
        manager.setFailureReporter({});
        manager.setWakeUp({});
        manager.takeFailures();
    }
    void post(std::function<void()> work) { manager.post(makeOwned<TestEvent>(std::move(work))); }
    void postLetter(char letter)
    {
        post([this, letter] { log += letter; });
    }

    EvEventManager& manager = EvEventManager::getInstance();
    std::string log;
};

TEST_F(EvEventManagerTest, EventThatProcessesEventsKeepsTheOrderAndRunsNothingTwice)
{
    post([this] {
        postLetter('c');
        EXPECT_EQ(3, manager.processEvents());
        postLetter('d');
    });
    postLetter('a');
    postLetter('b');
    EXPECT_EQ(1, manager.processEvents());
    EXPECT_EQ("abc", log);
    EXPECT_EQ(1, manager.processEvents());
    EXPECT_EQ("abcd", log);
}

TEST_F(EvEventManagerTest, FailuresGoToTheReporterOrAreKeptAndTheRestGoesOn)
{
    std::string reported;
    for (bool const hasReporter : {false, true}) {
        if (hasReporter) {
            manager.setFailureReporter([&](std::string const& text) {
                reported += text;
                if (text == "first") {
                    throw std::runtime_error("reporter");
                }
            });
        }
        post([] { throw std::runtime_error("first"); });
        manager.post(makeOwned<EventThrowsWhenDestroyed>());
        postLetter('a');
        EXPECT_EQ(3, manager.processEvents());
        std::vector<std::string> const kept{"first", "executed", "destroyed"};
        std::vector<std::string> const keptOfReporter{"first", "reporter"};
        EXPECT_EQ(hasReporter ? keptOfReporter : kept, manager.takeFailures());
        EXPECT_TRUE(manager.takeFailures().empty());
    }
    EXPECT_EQ("aa", log);
    EXPECT_EQ("firstexecuteddestroyed", reported);
}

TEST_F(EvEventManagerTest, DiscardedEventsAreDestroyedWithoutRunning)
{
    auto const marker = std::make_shared<int>(0);
    post([this, marker] { log += 'x'; });
    manager.post(makeOwned<EventThrowsWhenDestroyed>());
    EXPECT_TRUE(manager.waitForEvents(std::chrono::milliseconds(0)));
    manager.discardEvents();
    EXPECT_EQ(1, marker.use_count());
    EXPECT_FALSE(manager.waitForEvents(std::chrono::milliseconds(1)));
    EXPECT_EQ("", log);
    EXPECT_EQ(std::vector<std::string>{"destroyed"}, manager.takeFailures());
    EXPECT_THROW(manager.post({}), NullPointerException);
}

TEST_F(EvEventManagerTest, EveryEventOfEveryThreadRunsInItsThreadsOrder)
{
    constexpr int nbThreads = 3;
    constexpr int nbEvents = 2000;
    std::vector<int> next(nbThreads, 0);
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < nbThreads; ++thread) {
        threads.emplace_back([this, &next, thread] {
            for (int number = 0; number < nbEvents; ++number) {
                post([&next, thread, number] { EXPECT_EQ(number, next[thread]++); });
            }
        });
    }
    int nbProcessed = 0;
    while (nbProcessed < nbThreads * nbEvents) {
        ASSERT_TRUE(manager.waitForEvents(std::chrono::seconds(30)));
        nbProcessed += manager.processEvents();
    }
    EXPECT_EQ(std::vector<int>(nbThreads, nbEvents), next);
}

TEST_F(EvEventManagerTest, WakesOnceForWhatWaitsAndNeverAfterItWasExchanged)
{
    std::atomic<int> nbWakeUps = 0;
    postLetter('a');
    manager.setWakeUp([&] { ++nbWakeUps; });
    EXPECT_EQ(1, nbWakeUps); // something waited already
    postLetter('b');
    EXPECT_EQ(1, nbWakeUps);
    post([this] { postLetter('d'); }); // waits for the next time
    manager.processEvents();
    EXPECT_EQ(2, nbWakeUps);
    std::thread([this] { manager.post(makeOwned<TestEvent>([this] { log += 'e'; })); }).join();
    EXPECT_EQ(2, nbWakeUps);
    EXPECT_EQ(2, manager.processEvents());
    EXPECT_EQ("abde", log);

    // A thread that is inside the former one is waited for.
    std::binary_semaphore isInside{0};
    std::binary_semaphore mayLeave{0};
    std::atomic<bool> hasLeft = false;
    manager.setWakeUp([&] {
        isInside.release();
        mayLeave.acquire();
        hasLeft = true;
    });
    std::thread poster([this] { manager.post(makeOwned<TestEvent>([] {})); });
    isInside.acquire();
    std::thread opener([&] { mayLeave.release(); });
    manager.setWakeUp({});
    EXPECT_TRUE(hasLeft);
    poster.join();
    opener.join();
    postLetter('f');
    EXPECT_EQ(2, nbWakeUps);
}

TEST_F(EvEventManagerTest, EventsKnowWhatTheyComeOf)
{
    auto const expectSource = [](std::uint64_t owner, std::uint64_t number) {
        auto const source = EvSource::getCurrent();
        EXPECT_EQ(owner, source.owner);
        EXPECT_EQ(number, source.number);
    };
    post([&] { expectSource(0, 0); });
    {
        EvSourceScope const outer({7, 1});
        EvSourceScope const inner({7, 2});
        post([&] {
            expectSource(7, 2);
            post([&] { expectSource(7, 2); }); // what it sets off in turn
        });
    }
    post([&] { expectSource(0, 0); });
    EXPECT_EQ(3, manager.processEvents());
    EXPECT_EQ(1, manager.processEvents());
    expectSource(0, 0);
}

} // namespace
