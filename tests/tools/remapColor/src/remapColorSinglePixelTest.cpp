// Picked pixels: which results arrive, at whom, and what happens to the others.

#include "ToolBench.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include "base/EvEventManager.h"
#include "pluginAPI/PxRequestMgr.h"
#include "runtime/graph/InputNodeBuilder.h"

#include <algorithm>
#include <atomic>
#include <semaphore>
#include <thread>

namespace {

using namespace memoryHost;
using Colour = CoRgbaColorTyped<float>;
using Numbers = std::vector<int>;

constexpr double gatedTime = 1.0;
constexpr std::chrono::seconds longestWait{20};

RemapColorController* shown = nullptr;

RemapColorController& getController(HostNode const& node)
{
    struct MainContainer : PiWidget {
        std::string getName() const override { return "_mainContainer"; }
    };
    RemapColorController::addInstanceDataFactory(
        [](auto const&, RemapColorController& controller, auto const&) {
            shown = &controller;
            return PiUserInterface::InstanceData();
        });
    castStrong<PiUserInterface>(node.getController().lock())
        ->createWidgetInstanceData(makeShared<MainContainer>(), {});
    return *shown;
}

/// The Linear mode; at gatedTime workers wait here until they are let through.
class Gate : public PxAnimValueProtocol<int> {
public:
    explicit Gate(Init const& init) : PxNode(init) {}
    PxValueResult<int> evaluate(PxTimeContext const& context) const override
    {
        if (context.getTime() == gatedTime) {
            arrivals.release();
            passes.acquire();
        }
        return {0, PxValidityInterval::getFull()};
    }
    mutable std::counting_semaphore<> arrivals{0};
    mutable std::counting_semaphore<> passes{0};
};

struct GatedInputs : InputNodeBuilder {
    GatedInputs(HostNode const& node, Gate& modeGate) : InputNodeBuilder(node), gate(modeGate) {}
    PxStrongHndl<> getInputNode(std::string const& name) override
    {
        return name == "Mode" ? PxStrongHndl<>(&gate) : InputNodeBuilder::getInputNode(name);
    }
    Gate& gate;
};

class Collector : public RemapColorController::SinglePixelHandler {
public:
    using RemapColorController::SinglePixelHandler::call;
    void call(Colour& colour) override
    {
        numbers.push_back(static_cast<int>(colour.alpha));
        onCall(colour);
    }
    Numbers numbers; // of the picks, which travel as alpha
    std::function<void(Colour const&)> onCall = [](Colour const&) {};
};

struct RemapColorSinglePixelTest : ::testing::Test {
    RemapColorSinglePixelTest()
    {
        GatedInputs inputs(*node, *gate);
        PxStrongHndl<PxNode const> chain;
        castStrong<PiToolInterface>(node->getController().lock())
            ->createModifierProcNode(chain, inputs, PxNodePtr<PxImageProtocol const>(source.get()));
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
        gate->arrivals.acquire();
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
        gate->passes.release(enough);
        PxRequestMgr::getInstance().shutDown();
        events.processEvents();
    }
    void loseNode()
    {
        graph->removeNode(node);
        node = {};
    }
    EvEventManager& events = EvEventManager::getInstance();
    Journal journal;
    PxStrongHndl<FakeSource> source = makeNode<FakeSource>(journal);
    PxStrongHndl<Gate> gate = makeNode<Gate>();
    RCShdPtr<HostGraph> graph = makeShared<HostGraph>();
    RCShdPtr<HostNode> node = createToolNode(*graph, "Remap Color");
    RemapColorController& controller = getController(*node);
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
    gate->passes.release(2);
    processEventsUntil([&] { return collector.numbers.size() == 2; });
    finishRequests();
    EXPECT_EQ(collector.numbers, (Numbers{2, 5}));
}

TEST_F(RemapColorSinglePixelTest, ResultsGoToThoseWhoAreSubscribedWhenTheyArrive)
{
    pick(1);
    ASSERT_TRUE(events.waitForEvents(longestWait));
    for (auto* const handler : {&collector, &collector, static_cast<Collector*>(nullptr)}) {
        controller.removeSinglePixelProcessCallback(handler);
    }
    EXPECT_EQ(events.processEvents(), 1);
    controller.addSinglePixelProcessCallback(&collector);
    pick(2);
    processEventsUntil([&] { return !collector.numbers.empty(); });
    EXPECT_EQ(collector.numbers, Numbers{2});
}

TEST_F(RemapColorSinglePixelTest, ControllerThatIsLostWhileDeliveringDeliversToAll)
{
    Collector second;
    controller.addSinglePixelProcessCallback(&second);
    auto const weak = node->getController();
    collector.onCall = [&](Colour const&) { loseNode(); };
    pick(1);
    processEventsUntil([&] { return weak.isExpired(); });
    EXPECT_EQ(second.numbers, Numbers{1});
    EXPECT_EQ(second.getNbDispatchers(), 0);
}

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
    auto const weak = node->getController();
    loseNode();
    EXPECT_TRUE(weak.isExpired());
    EXPECT_EQ(collector.getNbDispatchers(), 0);
    gate->passes.release(2);
    processEventsUntil([&] { return gate->getNbReferences() == 1; }); // all requests are gone
    finishRequests();
    EXPECT_EQ(collector.numbers, Numbers());
}

INSTANTIATE_TEST_SUITE_P(InOrBehind, RemapColorLostPickTest,
                         ::testing::Values(Reached::Queue, Reached::Worker, Reached::Event));

TEST_F(RemapColorSinglePixelTest, PickBeforeThereIsAChainIsReportedOnce)
{
    auto const other = graph->createNode(node->getTool());
    getController(*other).addSinglePixelProcessCallback(&collector);
    shown->processSinglePixel(PxTimeContext(0.0), {});
    ASSERT_TRUE(events.waitForEvents(longestWait));
    finishRequests();
    EXPECT_EQ(collector.numbers, Numbers());
    EXPECT_EQ(events.takeFailures(),
              Journal{"RemapColorController::SinglePixelProc: Null pointer: (anonymous namespace)"
                      "::RemapColorNode"});
}

TEST_F(RemapColorSinglePixelTest, WorkersDoNotPick)
{
    auto const other = graph->createNode(node->getTool());
    pick(1);
    for (RemapColorController* const picking : {&getController(*other), &controller}) {
        auto const failure = catchFailure<AssertionFailure>([&] {
            PxWorkerScope const worker;
            picking->processSinglePixel(PxTimeContext(0.0), {});
        });
        EXPECT_EQ(failure->getExpression(), "!PxRequestMgr::getInstance().isWorkerThreadCurrent()");
        EXPECT_EQ(failure->getFile(), "host/interface/pluginAPI/PxNode");
    }
    processEventsUntil([&] { return !collector.numbers.empty(); });
    EXPECT_EQ(collector.numbers, Numbers{1}); // the earlier one goes on
}

struct RemapColorManyPicksTest : RemapColorSinglePixelTest, ::testing::WithParamInterface<int> {};

TEST_P(RemapColorManyPicksTest, GiveTheTilesPixelsWhileTilesRender)
{
    constexpr int nbPicks = 3000;
    constexpr int burst = 10;
    node->setValues({{"Mode", Animated<int>(GetParam())},
                     {"Linear.Gamma.Red", Animated<double>(2.2)},
                     {"EXRDisplay.Exposure.Green", Animated<double>(1.5)}});
    Pixels const pixels = reference::randomPixels(64, 7);
    Picture const picture(pixels);
    source->setPicture(picture);
    auto const chain = castNode<PxImageProtocol const>(
        node->buildChain(PxNodePtr<PxImageProtocol const>(source.get())));
    Pixels const expected =
        readTile(computeTile(*chain, picture.window).getTileGuard().getTile()).getPixels();
    std::atomic<int> nbTiles = 0;
    std::jthread const renderer([&, &tileChain = *chain](std::stop_token const& stop) {
        for (; !stop.stop_requested(); ++nbTiles) {
            computeTile(tileChain, picture.window);
        }
    });
    while (nbTiles == 0) {
        std::this_thread::yield();
    }
    Collector comesAndGoes;
    comesAndGoes.onCall = [&](Colour const&) {
        controller.removeSinglePixelProcessCallback(&comesAndGoes);
    };
    collector.onCall = [&](Colour const& colour) {
        controller.addSinglePixelProcessCallback(&comesAndGoes); // for the call after this one
        auto const& tile = expected[static_cast<std::size_t>(colour.alpha) % pixels.size()];
        EXPECT_TRUE(
            reference::samePixelBits({tile.r, tile.g, tile.b, colour.alpha},
                                     {colour.red, colour.green, colour.blue, colour.alpha}));
    };
    for (int number = 1; number <= nbPicks; ++number) {
        reference::Pixel const& in = pixels[static_cast<std::size_t>(number) % pixels.size()];
        controller.processSinglePixel(PxTimeContext(0.0),
                                      {in.r, in.g, in.b, static_cast<float>(number)});
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

INSTANTIATE_TEST_SUITE_P(Modes, RemapColorManyPicksTest, ::testing::Values(0, 1));

} // namespace
