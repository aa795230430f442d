// Picked pixels: which results arrive, at whom, and what happens to the others.

#include "ToolBench.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include "base/EvEventManager.h"
#include "pluginAPI/PxRequestMgr.h"

#include <algorithm>
#include <atomic>
#include <semaphore>
#include <thread>

namespace {

using namespace memoryHost;
using RgbaColour = CoRgbaColorTyped<float>;
using Numbers = std::vector<int>;

constexpr double gatedTime = 1.0;

struct Collector : RemapColorController::SinglePixelHandler {
    using RemapColorController::SinglePixelHandler::call;
    void call(RgbaColour& colour) override
    {
        numbers.push_back(static_cast<int>(colour.alpha));
        onCall(colour);
    }
    Numbers numbers; // of the picks, which travel as alpha
    std::function<void(RgbaColour const&)> onCall = [](RgbaColour const&) {};
};

struct RemapColorSinglePixelTest : ::testing::Test {
    RemapColorSinglePixelTest()
    {
        // At gatedTime workers wait at the Linear mode until they are let through.
        bench.inputs.valueAt<int>("Mode") = [this](double time) {
            if (time == gatedTime) {
                arrivals.release();
                passes.acquire();
            }
            return 0;
        };
        bench.buildChain();
        controller.addSinglePixelProcessCallback(&collector);
    }
    ~RemapColorSinglePixelTest() noexcept override
    {
        finishRequests();
        EXPECT_EQ(events.takeFailures(), Journal());
    }

    void pick(int number, double time = 0.0)
    {
        controller.processSinglePixel(PxTimeContext(time),
                                      {0.2F, 0.3F, 0.4F, static_cast<float>(number)});
    }
    /// Lets a worker run into the gate.
    void pickAtGate(int number)
    {
        pick(number, gatedTime);
        arrivals.acquire();
    }
    void processEventsUntil(std::function<bool()> const& isDone)
    {
        while (!isDone()) {
            ASSERT_TRUE(events.waitForEvents(longestWait));
            events.processEvents();
        }
    }
    void finishRequests()
    {
        constexpr int enough = 10;
        passes.release(enough);
        PxRequestMgr::getInstance().shutDown();
        events.processEvents();
    }
    std::counting_semaphore<> arrivals{0};
    std::counting_semaphore<> passes{0};
    EvEventManager& events = EvEventManager::getInstance();
    ToolBench bench;
    HostNode& node = bench.getNode();
    RemapColorController& controller = bench.getController();
    Collector collector;
};

TEST_F(RemapColorSinglePixelTest, NewestPickIsTheOneThatArrives)
{
    pickAtGate(1);
    pick(2); // overtakes the one that runs
    processEventsUntil([&] { return !collector.numbers.empty(); });
    pickAtGate(3);
    pick(4); // no worker is free: these two are queued
    pick(5);
    passes.release(2);
    processEventsUntil([&] { return collector.numbers.size() == 2; });
    finishRequests();
    EXPECT_EQ(collector.numbers, (Numbers{2, 5}));
}

TEST_F(RemapColorSinglePixelTest, ControllerThatIsLostWhileDeliveringDeliversToAll)
{
    Collector second;
    controller.addSinglePixelProcessCallback(&second);
    auto const weak = node.getController();
    collector.onCall = [&](RgbaColour const&) { bench.loseNode(); };
    pick(1);
    processEventsUntil([&] { return weak.isExpired(); });
    EXPECT_EQ(second.numbers, Numbers{1});
    EXPECT_EQ(second.getNbDispatchers(), 0);
}

/// Where a pick is when the controller dies.
enum class Reached { Queue, Worker, Event };

struct RemapColorLostPickTest : RemapColorSinglePixelTest,
                                ::testing::WithParamInterface<Reached> {};

TEST_P(RemapColorLostPickTest, CallsNobodyAfterTheControllersDeath)
{
    int const nbAtGate = GetParam() == Reached::Queue ? 2 : GetParam() == Reached::Worker ? 1 : 0;
    for (int number = 0; number < nbAtGate; ++number) {
        pickAtGate(number);
    }
    if (GetParam() != Reached::Worker) {
        pick(nbAtGate);
    }
    if (GetParam() == Reached::Event) {
        ASSERT_TRUE(events.waitForEvents(longestWait));
    }
    auto const weak = node.getController();
    bench.loseNode();
    EXPECT_TRUE(weak.isExpired());
    EXPECT_EQ(collector.getNbDispatchers(), 0);
    passes.release(2);
    auto const& mode = *bench.inputs.nodes.at("Mode");
    processEventsUntil([&] { return mode.getNbReferences() == 1; }); // all requests are gone
    finishRequests();
    EXPECT_EQ(collector.numbers, Numbers());
}

INSTANTIATE_TEST_SUITE_P(InOrBehind, RemapColorLostPickTest,
                         ::testing::Values(Reached::Queue, Reached::Worker, Reached::Event));

TEST_F(RemapColorSinglePixelTest, ManyPicksGiveTheTilesPixelsWhileTilesRender)
{
    constexpr int nbPicks = 3000;
    constexpr int burst = 10;
    bench.inputs.setParams(makeRandomParams(8, Draw::WithinRanges));
    Pixels const pixels = reference::randomPixels(64, 7);
    bench.setPicture(Picture(pixels));
    Pixels const expected = bench.computePicture().getPixels();
    std::atomic<int> nbTiles = 0;
    std::jthread const renderer([&](std::stop_token const& stop) {
        for (; !stop.stop_requested(); ++nbTiles) {
            bench.compute();
        }
    });
    while (nbTiles == 0) {
        std::this_thread::yield();
    }
    Collector comesAndGoes;
    comesAndGoes.onCall = [&](RgbaColour const&) {
        controller.removeSinglePixelProcessCallback(&comesAndGoes);
    };
    collector.onCall = [&](RgbaColour const& colour) {
        controller.addSinglePixelProcessCallback(&comesAndGoes); // for the call after this one
        auto const& tile = expected[static_cast<std::size_t>(colour.alpha) % pixels.size()];
        EXPECT_TRUE(
            reference::samePixelBits({tile.r, tile.g, tile.b, colour.alpha},
                                     {colour.red, colour.green, colour.blue, colour.alpha}));
    };
    for (int number = 1; number <= nbPicks; ++number) {
        auto const& [r, g, b, a] = pixels[static_cast<std::size_t>(number) % pixels.size()];
        controller.processSinglePixel(PxTimeContext(0.0), {r, g, b, static_cast<float>(number)});
        if (number % burst == 0) {
            processEventsUntil(
                [&] { return !collector.numbers.empty() && collector.numbers.back() == number; });
        } else if (number % 3 == 0) {
            events.processEvents();
        }
    }
    EXPECT_TRUE(std::is_sorted(collector.numbers.begin(), collector.numbers.end()));
    EXPECT_EQ(comesAndGoes.numbers.size(), collector.numbers.size() / 2);
}

} // namespace
