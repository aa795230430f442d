// What a curve editor reaches of the controller through the link.

#include "LinkedNode.h"

#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "base/InPackageInit.h"
#include "pluginAPI/PxRequestMgr.h"
#include "runtime/engine/SourceImageNode.h"
#include "support/InMemoryHost.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <semaphore>
#include <utility>

namespace {

using Color = ControllerLink::Color;
using Kind = ControllerNotice::Kind;

struct ControllerLinkTest : ::testing::Test, LinkedNode {
    ~ControllerLinkTest() noexcept override = default;
};

TEST_F(ControllerLinkTest, NamesAreThoseOfTheNodesValues)
{
    EXPECT_EQ(link->getModeInputName(), "Mode");
    EXPECT_EQ(link->getAdjustInputName(), "Adjust");
    EXPECT_EQ(link->getClampInputName(), "Linear.Clamp");
    EXPECT_EQ(link->getModeName(ControllerLink::Linear), "Linear");
    EXPECT_EQ(link->getParamInputName(ControllerLink::ExrDisplay, 3, 2),
              "EXRDisplay.Knee Low.Blue");
    EXPECT_EQ(link->getCurveInputName(ControllerLink::nbChannels), "");
    for (int channel = 0; channel < ControllerLink::nbChannels; ++channel) {
        EXPECT_FALSE(node->getValue(link->getCurveInputName(channel)).isNull());
        for (int param = 0; param < ControllerLink::nbParams; ++param) {
            for (auto const mode : {ControllerLink::Linear, ControllerLink::ExrDisplay}) {
                auto const name = link->getParamInputName(mode, param, channel);
                EXPECT_FALSE(node->getValue(name).isNull()) << name;
            }
        }
    }
}

TEST_F(ControllerLinkTest, EveryPanelIsToldOfDisplayChangesWhoeverMakesThem)
{
    std::vector<std::pair<int, Kind>> told; // by which panel
    auto const other = openPanel();
    CbFunction<ControllerNotice const> first([&](auto& notice) {
        told.push_back({1, notice.kind});
        if (notice.kind == Kind::PlotColor) { // enabled and stored before it is told
            EXPECT_TRUE(link->isPlotColorEnabled());
            EXPECT_EQ(link->getPlotColor(), notice.color);
        }
    });
    CbFunction<ControllerNotice const> second([&](auto& notice) {
        told.push_back({2, notice.kind});
    });
    link->addNoticeHandler(&first);
    other->addNoticeHandler(&second);
    auto const expectTold = [&](Kind kind, char const* change) {
        EXPECT_EQ(std::exchange(told, {}),
                  (std::vector<std::pair<int, Kind>>{{1, kind}, {2, kind}}))
            << change;
    };
    for (Kind const kind : {Kind::CurveDisplay, Kind::ChannelDisplay, Kind::HistoDisplay}) {
        set(link->getValueName(kind), 10 + kind);
        expectTold(kind, "display");
    }
    set(link->getValueName(Kind::HistoZoom), 2.5);
    expectTold(Kind::HistoZoom, "zoom");
    auto const display = other->getDisplay();
    EXPECT_EQ(display.curves, 10 + Kind::CurveDisplay);
    EXPECT_EQ(display.channels, 10 + Kind::ChannelDisplay);
    EXPECT_EQ(display.histogram, 10 + Kind::HistoDisplay);
    EXPECT_EQ(display.histogramZoom, 2.5);

    EXPECT_FALSE(other->isPlotColorEnabled());
    link->setPlotColor({0.5F, 1, 2});
    expectTold(Kind::PlotColor, "plot colour");
    EXPECT_TRUE(other->isPlotColorEnabled());
    EXPECT_EQ(other->getPlotColor(), (Color{0.5F, 1, 2}));
    other->setOutputPlotColor({3, 2, 1});
    expectTold(Kind::OutputPlotColor, "output plot colour");
    EXPECT_EQ(link->getOutputPlotColor(), (Color{3, 2, 1}));
    link->setViewPan({1, 2});
    link->setViewZoom({3, 4});
    EXPECT_EQ(other->getViewPan(), (GeVector2<float>{1, 2}));
    EXPECT_EQ(other->getViewZoom(), (GeVector2<float>{3, 4}));
    EXPECT_TRUE(told.empty());
}

TEST_F(ControllerLinkTest, PackagesThatAreShutDownMakeNoLinks)
{
    InPackageRegistry::getInstance().shutDownPackages();
    EXPECT_TRUE(openPanel().isNull());
    InPackageRegistry::getInstance().startPackages(false);
    EXPECT_FALSE(openPanel().isNull());
}

TEST_F(ControllerLinkTest, MapsThroughACurveAsThePictureDoes)
{
    using namespace memoryHost;
    CurvePoints const bent{{-1, 0.2F},   {0.25F, 0.1F}, {0.3F, 0.9F},
                           {0.8F, 0.1F}, {40.0F, 7.0F}, {50.0F, 9.0F}};
    for (int channel = 0; channel < ControllerLink::nbChannels; ++channel) {
        set(link->getCurveInputName(channel), bent);
    }
    Picture picture(reference::standardPixels());
    Pixels const out = renderPicture(*node, picture).getPixels();
    // Linear at its defaults hands the values on as they are, but for NaN.
    for (int channel = 0; channel < ControllerLink::nbChannels; ++channel) {
        set(link->getCurveInputName(channel),
            CurvePoints{{-1, -1}, {0, 0}, {1, 1}, {0, 0}, {1, 1}, {2, 2}});
    }
    node->setValues({{link->getAdjustInputName(), Animated<bool>(false)}});
    Pixels const in = renderPicture(*node, picture).getPixels();
    std::vector<float> values;
    for (reference::Pixel const& pixel : in) {
        values.insert(values.end(), {pixel.r, pixel.g, pixel.b});
    }
    auto const mapped = link->mapThroughCurve(bent, values);
    for (std::size_t index = 0; index < in.size(); ++index) {
        EXPECT_TRUE(reference::samePixelBits(out[index], {mapped[3 * index], mapped[3 * index + 1],
                                                          mapped[3 * index + 2], in[index].a}))
            << index;
    }
}

TEST_F(ControllerLinkTest, DrawsTheTransferOfEitherMode)
{
    GeInterval<float> const range{0, 1};
    auto const linear = link->computeCurve(ControllerLink::Linear, {0, 0.5F, 1, 3, 1}, range, 4);
    ASSERT_GE(linear.size(), 4U);
    EXPECT_EQ(linear[1], (GePoint2<float>{0.25F, 2}));
    EXPECT_EQ(linear[2], (GePoint2<float>{0.5F, 3}));
    auto const brighter =
        link->computeCurve(ControllerLink::ExrDisplay, {1, 0, 5, 0, 2.2F}, range, 4);
    auto const plain = link->computeCurve(ControllerLink::ExrDisplay, {0, 0, 5, 0, 2.2F}, range, 4);
    ASSERT_GE(plain.size(), 4U);
    EXPECT_GT(brighter[2].y, plain[2].y);
    EXPECT_EQ(plain[2].x, 0.5F);
}

TEST_F(ControllerLinkTest, ResetsAreStepsAndALostNodeIsSaid)
{
    auto const name = link->getCurveInputName(1);
    auto const fresh = node->getValue(name)->getState();
    set(name, CurvePoints{{0, 0}, {0, 1}, {1, 1}});
    link->resetCurves();
    EXPECT_EQ(*node->getValue(name)->getState(), *fresh);
    EXPECT_EQ(graph->getHistory().getUndoLabel(), "Reset Adjusted Curves");
    graph->getHistory().undo();
    EXPECT_NE(*node->getValue(name)->getState(), *fresh);
    {
        PiUndoGuard const guard(graph->getCommandStack(), "Reset green", PiExecParam());
        link->resetCurve(1);
    }
    EXPECT_EQ(*node->getValue(name)->getState(), *fresh);
    EXPECT_EQ(graph->getHistory().getUndoLabel(), "Reset green");

    loseNode();
    for (auto const& call : std::initializer_list<std::function<void()>>{
             [&] {
                 graph->getHistory().undo();
                 link->resetCurves();
             },
             [&] { static_cast<void>(link->getDisplay()); },
             [&] { link->processSinglePixel(PxTimeContext(0), {}); }}) {
        EXPECT_THROW(call(), NullPointerException);
    }
}

/// Keeps a worker busy until it is let through.
class GateRequest : public PxRequest {
public:
    explicit GateRequest(std::counting_semaphore<>& requestGate) : gate(requestGate) {}
    void performExecute() override { gate.acquire(); }

private:
    std::counting_semaphore<>& gate;
};

struct LinkedPickTest : ControllerLinkTest {
    LinkedPickTest()
    {
        link->addPickHandler(&first);
        other->addPickHandler(&second);
    }
    ~LinkedPickTest() noexcept override
    {
        passes.release(nbWorkers);
        PxRequestMgr::getInstance().shutDown();
        EvEventManager::getInstance().processEvents();
        EXPECT_EQ(EvEventManager::getInstance().takeFailures(), std::vector<std::string>());
    }

    void buildChain()
    {
        auto const source =
            makeNode<SourceImageNode>(memoryHost::Picture(memoryHost::Pixels(1)).getInfo());
        chain = node->buildChain(PxNodePtr<PxImageProtocol const>(source));
    }
    /// Picks wait from here on until `passes` lets them through.
    void closeGate()
    {
        for (int worker = 0; worker < nbWorkers; ++worker) {
            PxRequestMgr::getInstance().submit(new GateRequest(passes), 0);
        }
    }
    std::uint64_t pick(ControllerLink& panel, float alpha)
    {
        return panel.processSinglePixel(PxTimeContext(0), {0.25F, 0.5F, 0.75F, alpha});
    }
    void processUntil(std::size_t nbTold)
    {
        EvEventManager& events = EvEventManager::getInstance();
        while (told.size() < nbTold && events.waitForEvents(std::chrono::seconds(20))) {
            events.processEvents();
        }
    }
    CbFunction<PickAnswer const>::Function write(std::string const& panel)
    {
        return [this, panel](PickAnswer const& answer) {
            static std::array<char const*, 3> const outcomes{"done", "failed", "overtaken"};
            told.push_back(panel + std::to_string(answer.pick - start) +
                           (answer.isNewest ? " newest " : " late ") + outcomes.at(answer.outcome));
            last = answer;
        };
    }

    static constexpr int nbWorkers = 2;
    std::vector<std::string> told;
    std::uint64_t start = 0; // the number before the first pick
    PickAnswer last{};
    PxStrongHndl<PxNode const> chain;
    std::counting_semaphore<> passes{0};
    RCShdPtr<ControllerLink> other = openPanel();
    CbFunction<PickAnswer const> first{write("first ")};
    CbFunction<PickAnswer const> second{write("second ")};
};

TEST_F(LinkedPickTest, AnswersKnowTheirPickAndWhetherItIsTheNewest)
{
    buildChain();
    start = pick(*link, 0) - 1;
    ASSERT_TRUE(EvEventManager::getInstance().waitForEvents(std::chrono::seconds(20)));
    pick(*link, 2); // while the first one's result waits to be told
    processUntil(2);
    EXPECT_EQ(told, (std::vector<std::string>{"first 1 late done", "first 2 newest done"}));
    EXPECT_EQ(last.result.alpha, 2.0F);
}

TEST_F(LinkedPickTest, WhoeverIsOvertakenIsTold)
{
    buildChain();
    closeGate();
    start = pick(*link, 0) - 1;
    pick(*link, 1);
    pick(*other, 2);
    passes.release(nbWorkers);
    processUntil(3);
    EXPECT_EQ(told, (std::vector<std::string>{"first 1 late overtaken", "first 2 newest overtaken",
                                              "second 3 newest done"}));
    told.clear();
    closeGate();
    pick(*other, 0);
    chain.reset();
    loseNode();
    processUntil(1);
    EXPECT_EQ(last.outcome, PickAnswer::Overtaken);
    EXPECT_EQ(told.size(), 1U);
}

TEST_F(LinkedPickTest, AFailureReachesWhoAskedOrTheReportIfThatOneIsGone)
{
    start = pick(*other, 0) - 1; // there is no chain
    processUntil(1);
    EXPECT_EQ(told, std::vector<std::string>{"second 1 newest failed"});
    EXPECT_NE(last.failure.find("Null pointer"), std::string::npos) << last.failure;

    closeGate();
    auto panel = openPanel();
    pick(*panel, 0);
    panel = {};
    passes.release(nbWorkers);
    std::vector<std::string> failures;
    while (failures.empty()) { // other events may come first
        ASSERT_TRUE(EvEventManager::getInstance().waitForEvents(std::chrono::seconds(20)));
        EvEventManager::getInstance().processEvents();
        failures = EvEventManager::getInstance().takeFailures();
    }
    EXPECT_EQ(failures.size(), 1U);
    EXPECT_EQ(told.size(), 1U);
}

} // namespace
