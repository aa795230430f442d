// Who dies when: nodes that go while their controller is at work, controllers that outlive others.

#include "ToolBench.h"
#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "internalAPI/PiSocketUtil.h"
#include "pluginAPI/PxRequestMgr.h"

#include <chrono>
#include <functional>

namespace {

using namespace memoryHost;

template <typename T>
class Caller : public CbHandler<T> {
public:
    explicit Caller(std::function<void()> handlerWork) : work(std::move(handlerWork)) {}
    using CbHandler<T>::call;
    void call(T&) override { work(); }

private:
    std::function<void()> work;
};

/// What the nodes of a test write into. A request that has delivered its result may still be under
/// way, and holds the chain: it ends before the journal does.
struct LastJournal {
    ~LastJournal()
    {
        PxRequestMgr::getInstance().shutDown();
        EvEventManager::getInstance().discardEvents();
    }
    Journal journal;
};

/// A node that the first handler of a picked pixel or a changed plot colour lets go of.
struct VanishingNode {
    VanishingNode()
    {
        controller.addPlotColorChangedCallback(&dropAtColour);
        controller.addPlotColorChangedCallback(&useAtColour);
        controller.addSinglePixelProcessCallback(&dropAtPixel);
        controller.addSinglePixelProcessCallback(&useAtPixel);
    }

    void drop()
    {
        life = node->getController().lock();
        graph->removeNode(node);
        node = {};
        nbDrops++;
    }
    /// What comes later finds the controller, which has no node any more.
    void use()
    {
        nbEmpty += controller.getNode().isNull() ? 1 : 0;
        EXPECT_NO_THROW(controller.getPlotColor());
        life = {};
    }

    RCShdPtr<HostGraph> graph = makeShared<HostGraph>();
    RCShdPtr<HostNode> node = createToolNode(*graph, "Remap Color");
    RemapColorController& controller = showController(*node->getController().lock());
    RCStrongPtr<PiNodeController> life; // of the controller, while it is used without a node
    int nbDrops = 0;
    int nbEmpty = 0;
    Caller<CoRgbColorTyped<float> const> dropAtColour{[this] { drop(); }};
    Caller<CoRgbColorTyped<float> const> useAtColour{[this] { use(); }};
    Caller<CoRgbaColorTyped<float>> dropAtPixel{[this] { drop(); }};
    Caller<CoRgbaColorTyped<float>> useAtPixel{[this] { use(); }};
};

TEST(RemapColorLifeTest, NodeThatAHandlerOfAPickLetsGoOfIsGoneForTheHandlersAfterIt)
{
    LastJournal last;
    VanishingNode vanishing;
    auto const source = makeNode<FakeSource>(last.journal);
    vanishing.node->buildChain(PxNodePtr<PxImageProtocol const>(source));
    vanishing.controller.processSinglePixel(PxTimeContext(0.0), {});
    ASSERT_TRUE(EvEventManager::getInstance().waitForEvents(std::chrono::seconds(30)));
    EvEventManager::getInstance().processEvents();
    EXPECT_EQ(vanishing.nbDrops, 1);
    EXPECT_EQ(vanishing.nbEmpty, 1);
}

TEST(RemapColorLifeTest, NodeThatAHandlerOfAChangeLetsGoOfLivesUntilTheChangeIsDone)
{
    VanishingNode vanishing;
    vanishing.node->setValues(
        {{"Plot Color", Vector<double>{1, 0, 0}}, {"Plot Color Enabled", Animated<bool>(true)}});
    EXPECT_EQ(vanishing.nbDrops, 1);
    EXPECT_EQ(vanishing.nbEmpty, 0);
}

TEST(RemapColorLifeTest, NodesOutliveTheirGraph)
{
    auto graph = makeShared<HostGraph>();
    auto const node = createToolNode(*graph, "Remap Color");
    graph = {};
    auto const curve = PiSocketUtil::getInput(node, "Adjust Curve.Red")->getConnectedOutput();
    EXPECT_TRUE(curve->getNode()->getGraph().isNull());
    EXPECT_THROW(showController(*node->getController().lock()).resetAdjustedCurves(),
                 NullPointerException);
}

TEST(RemapColorLifeTest, ControllerThatOutlivesAShutDownTouchesNobodysRequest)
{
    LastJournal last;
    auto const graph = makeShared<HostGraph>();
    auto const source = makeNode<FakeSource>(last.journal);
    auto old = createToolNode(*graph, "Remap Color");
    auto const young = createToolNode(*graph, "Remap Color");
    for (auto const& node : {old, young}) {
        node->buildChain(PxNodePtr<PxImageProtocol const>(source));
    }
    int nbResults = 0;
    Caller<CoRgbaColorTyped<float>> count{[&nbResults] { ++nbResults; }};
    showController(*young->getController().lock()).addSinglePixelProcessCallback(&count);

    showController(*old->getController().lock()).processSinglePixel(PxTimeContext(0.0), {});
    PxRequestMgr::getInstance().shutDown();
    EvEventManager::getInstance().discardEvents();
    showController(*young->getController().lock()).processSinglePixel(PxTimeContext(0.0), {});
    graph->removeNode(old);
    old = {}; // cancels and releases its own request, wherever the other one's memory lies
    ASSERT_TRUE(EvEventManager::getInstance().waitForEvents(std::chrono::seconds(30)));
    EvEventManager::getInstance().processEvents();
    EXPECT_EQ(nbResults, 1);
}

} // namespace
