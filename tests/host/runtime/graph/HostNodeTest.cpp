// Who is told of a change of a node's values, in which order, and what they find.

#include "runtime/graph/HostGraph.h"

#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "callbacks/CbFunction.h"
#include "internalAPI/PiValueChangeInterface.h"
#include "pluginAPI/PiToolInterface.h"
#include "runtime/loader/ToolLoader.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using Journal = std::vector<std::string>;
using Handler = CbFunction<ValueChange const>;

struct HostNodeTest : ::testing::Test {
    HostNodeTest()
    {
        loader.load(REMAPCOLOR_LIBRARY);
        graph = makeShared<HostGraph>();
        node = graph->createNode(loader.getTool("Remap Color"));
    }
    ~HostNodeTest() noexcept override = default;

    Handler::Function write(std::string const& who)
    {
        return [this, who](ValueChange const& change) {
            journal.push_back(who + " " + change.value->getName());
        };
    }
    double get(std::string const& name) const
    {
        return std::get<Animated<double>>(*node->getValue(name)->getState()).evaluate(0).getValue();
    }

    ToolLoader loader;
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
    Journal journal;
};

std::string const exposure = "EXRDisplay.Exposure.Red";
std::string const defog = "EXRDisplay.Defog.Red";

TEST_F(HostNodeTest, TellsNodeThenValueInTheOrderOfChangesAndOnlyWhenAllAreMade)
{
    Handler onNode(write("node"));
    Handler onValue(write("value"));
    Handler changing([&](ValueChange const& change) {
        if (change.value->getName() == exposure) {
            EXPECT_EQ(get(defog), 0.5); // set together: seen together
            node->setValues({{defog, Animated<double>(0.25)}});
            journal.push_back("changed");
        }
    });
    node->addHandler(&changing);
    node->addHandler(&onNode);
    node->getValue(exposure)->addHandler(&onValue);
    node->getValue(defog)->addHandler(&onValue);
    node->setValues({{exposure, Animated<double>(1.0)}, {defog, Animated<double>(0.5)}});
    EXPECT_EQ(journal, (Journal{"changed", "node " + exposure, "value " + exposure, "node " + defog,
                                "value " + defog, "node " + defog, "value " + defog}));
    journal.clear();
    node->setValues({{exposure, Animated<double>(1.0)}}); // as it was
    EXPECT_EQ(journal, Journal());
}

TEST_F(HostNodeTest, LoadingTellsEveryDifferenceAndIsOneStep)
{
    node->setValues({{exposure, Animated<double>(3.0)}, {"Mode", Animated<int>(1)}});
    Handler onNode([&](ValueChange const& change) {
        EXPECT_EQ(change.cause, ChangeCause::Load);
        write("node")(change);
    });
    node->addHandler(&onNode);
    {
        PiUndoGuard const guard(graph->getCommandStack(), "Load", PiExecParam());
        node->load({{defog, Animated<double>(0.5)}, {"Mode", Animated<int>(1)}});
    }
    EXPECT_EQ(journal, (Journal{"node " + exposure, "node " + defog}));
    EXPECT_EQ(get(exposure), 0.0);
    onNode.reset();
    graph->getHistory().undo();
    EXPECT_EQ(get(exposure), 3.0);
    EXPECT_EQ(get(defog), 0.0);
    EXPECT_THROW(node->load({{"Bogus", Animated<double>(0.5)}}), ValueError);
}

TEST_F(HostNodeTest, HandlersMayThrowLeaveAndLoseTheGraphAndTheNode)
{
    std::optional<Handler> leaving;
    leaving.emplace([&](ValueChange const& change) {
        write("leaving")(change);
        leaving.reset();
    });
    Handler throwing([](auto&) { throw HostException("cannot draw"); });
    Handler losing([&](auto&) {
        graph = {};
        node = {};
    });
    Handler last(write("last"));
    for (Handler* const handler : {&*leaving, &throwing, &losing, &last}) {
        node->addHandler(handler);
    }
    node->setValues({{exposure, Animated<double>(1.0)}, {defog, Animated<double>(0.5)}});
    EXPECT_EQ(journal, (Journal{"leaving " + exposure, "last " + exposure, "last " + defog}));
    EXPECT_EQ(last.getNbDispatchers(), 0); // the node has gone by now
    EvEventManager::getInstance().processEvents();
    EXPECT_EQ(EvEventManager::getInstance().takeFailures(), Journal(2, "cannot draw"));
}

TEST_F(HostNodeTest, AnUndoThatLosesTheGraphEndsWell)
{
    {
        PiUndoGuard const guard(graph->getCommandStack(), "Both", PiExecParam());
        node->setValues({{exposure, Animated<double>(1.0)}, {defog, Animated<double>(0.5)}});
    }
    Handler losing([&](auto&) {
        graph = {};
        node = {};
    });
    auto const value = node->getValue(defog);
    node->addHandler(&losing);
    graph->getHistory().undo();
    EXPECT_TRUE(node.isNull());
    EXPECT_EQ(*value->getState(), ValueState(Animated<double>(0.0)));
}

TEST_F(HostNodeTest, UndoReachesANodeThatWasTakenOutAndSparesTheOthers)
{
    auto const other = graph->createNode(node->getTool());
    for (auto const& edited : {node, other}) {
        PiUndoGuard const guard(graph->getCommandStack(), "Edit", PiExecParam());
        edited->setValues({{exposure, Animated<double>(1.0)}});
    }
    graph->removeNode(other);
    EXPECT_TRUE(other->getGraph().isNull());
    HostCommandStack& history = graph->getHistory();
    {
        PiUndoGuard const guard(graph->getCommandStack(), "New", PiExecParam());
        graph->createNode(node->getTool());
    }
    EXPECT_EQ(history.getUndoLabel(), "Edit"); // what a new node sets is no step
    history.undo();
    EXPECT_EQ(get(exposure), 1.0);
    EXPECT_EQ(*other->getValue(exposure)->getState(), ValueState(Animated<double>(0.0)));
    history.undo();
    EXPECT_EQ(get(exposure), 0.0);
    history.redo();
    EXPECT_EQ(get(exposure), 1.0);
}

TEST_F(HostNodeTest, WhatIsMissingIsEmptyForValuesAndSaidForInputs)
{
    constexpr bool mustExist = true;
    EXPECT_TRUE(node->findValue("Bogus", mustExist).isNull());
    EXPECT_THROW(node->findInput("Bogus", mustExist), HostException);
    EXPECT_TRUE(node->findInput("Bogus", false).isNull());
}

} // namespace
