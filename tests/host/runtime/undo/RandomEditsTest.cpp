// A thousand edits of every kind, undone one by one and redone, while handlers throw, change values
// and come and go.

#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "callbacks/CbFunction.h"
#include "pluginAPI/PiToolInterface.h"
#include "runtime/graph/HostGraph.h"
#include "runtime/loader/ToolLoader.h"
#include "runtime/values/Keyframes.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace {

using States = std::vector<std::shared_ptr<ValueState const>>;
using Handler = CbFunction<ValueChange const>;

std::string const led = "EXRDisplay.Gamma.Red";
std::string const follower = "EXRDisplay.Gamma.Blue";

class RandomEditsTest : public ::testing::TestWithParam<unsigned> {
protected:
    RandomEditsTest()
    {
        loader.load(REMAPCOLOR_LIBRARY);
        graph = makeShared<HostGraph>();
        for (int node = 0; node < 2; ++node) {
            nodes.push_back(graph->createNode(loader.getTool("Remap Color")));
            nodes.back()->addHandler(&throwing);
            nodes.back()->addHandler(&following);
            nodes.back()->addHandler(&passing);
        }
    }
    ~RandomEditsTest() override = default;

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    double number() { return below(64) / 16.0 - 2.0; }
    HostValue& someValue(HostNode const& node)
    {
        auto const& values = node.getValues();
        return *values[static_cast<std::size_t>(below(static_cast<int>(values.size())))].value;
    }

    CurvePoints someCurve(std::size_t nbPoints)
    {
        CurvePoints points(nbPoints);
        float x = -1;
        for (auto& point : points) {
            point = {x += 0.125F, static_cast<float>(number())};
        }
        return points;
    }

    ValueState changed(ValueState const& state, double time)
    {
        return std::visit(
            [&]<typename T>(T const& old) -> ValueState {
                if constexpr (std::is_same_v<T, Vector<double>>) {
                    return Vector<double>{number(), -0.0, number()};
                } else if constexpr (std::is_same_v<T, Animated<CurvePoints>>) {
                    return withValueAt(old, time, someCurve(old.evaluate(time).getValue().size()));
                } else {
                    using Value = decltype(old.evaluate(time).getValue());
                    return withValueAt<std::decay_t<Value>>(
                        old, time, static_cast<std::decay_t<Value>>(number()));
                }
            },
            state);
    }

    ValueState someState(HostValue const& value)
    {
        double const time = below(5);
        ValueState const state = *value.getState();
        switch (below(6)) {
        case 0: return withKeyframe(state, time);
        case 1: return withoutKeyframe(state, time);
        case 2: return withMovedKeyframe(state, time, below(5));
        default: return changed(state, time);
        }
    }

    /// One change, which may be refused.
    void edit()
    {
        HostNode& node = *nodes[static_cast<std::size_t>(below(2))];
        HostValue& value = someValue(node);
        HostValue& other = someValue(node);
        switch (below(12)) {
        case 0: node.load({{led, Animated<double>(1.0 + below(3))}}); break;
        case 1: castStrong<PiToolInterface>(node.getController().lock())->reset(); break;
        case 2:
            node.setValues(
                {{value.getName(), someState(value)}, {other.getName(), someState(other)}});
            break;
        case 3: graph->getHistory().abandonCommand(); break;
        case 4: {
            PiUndoGuard const nested(graph->getCommandStack(), "Nested", PiExecParam());
            edit();
            break;
        }
        default: value.setState(someState(value));
        }
    }

    void step()
    {
        std::string const label = "Step " + std::to_string(++nbSteps);
        {
            PiUndoGuard const guard(graph->getCommandStack(), label, PiExecParam());
            for (int change = below(4); change >= 0; --change) {
                try {
                    edit();
                } catch (ValueError const&) {
                } catch (std::invalid_argument const&) {
                }
            }
        }
        HostCommandStack const& history = graph->getHistory();
        if (history.canUndo() && history.getUndoLabel() == label) {
            after.resize(history.getNbCommands()); // what was undone has been dropped
            after.push_back(getStates());
        }
    }

    /// What undo covers: the tool leaves no record of plot colours.
    States getStates() const
    {
        States states;
        for (auto const& node : nodes) {
            for (HostNode::ValueSlot const& slot : node->getValues()) {
                if (!slot.name.starts_with("Plot Color")) {
                    states.push_back(slot.value->getState());
                }
            }
        }
        return states;
    }
    void expectStates(std::size_t nbDone) const
    {
        States const states = getStates();
        for (std::size_t index = 0; index < states.size(); ++index) {
            ASSERT_TRUE(isSameState(*states[index], *after[nbDone][index]))
                << nbDone << " steps, value " << index;
        }
    }

    std::mt19937 random{GetParam()};
    ToolLoader loader;
    RCShdPtr<HostGraph> graph;
    std::vector<RCShdPtr<HostNode>> nodes;
    std::vector<States> after; // so many steps
    int nbSteps = 0;
    Handler throwing{[this](ValueChange const&) {
        if (below(8) == 0) {
            throw HostException("no");
        }
    }};
    Handler following{[this](ValueChange const& change) {
        for (auto const& node : nodes) {
            if (change.value == node->getValue(led) || change.value == node->getValue(follower)) {
                PiUndoGuard const guard(graph->getCommandStack(), "Follow", PiExecParam());
                node->getValue(follower)->restore(node->getValue(led)->getState());
            }
        }
    }};
    Handler transient{[this](ValueChange const&) { transient.reset(); }};
    Handler passing{[this](ValueChange const& change) { change.value->addHandler(&transient); }};
};

TEST_P(RandomEditsTest, AreUndoneAndRedoneToTheSameStates)
{
    constexpr int nbEdits = 1000;
    HostCommandStack& history = graph->getHistory();
    after.push_back(getStates());
    for (int edits = 0; edits < nbEdits; ++edits) {
        step();
        if (below(16) == 0) {
            for (int steps = below(4); steps > 0; --steps) {
                history.undo();
            }
            for (int steps = below(4); steps > 0; --steps) {
                history.redo();
            }
        }
    }
    while (history.canRedo()) {
        history.redo();
    }
    ASSERT_GT(history.getNbCommands(), 300U);
    for (std::size_t done = history.getNbCommands(); done > 0; --done) {
        expectStates(done);
        history.undo();
    }
    for (std::size_t done = 0; done < history.getNbCommands(); ++done) {
        expectStates(done);
        history.redo();
    }
    expectStates(history.getNbCommands());
    EvEventManager::getInstance().processEvents();
    EXPECT_GT(EvEventManager::getInstance().takeFailures().size(), 100U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomEditsTest, ::testing::Values(1U, 2U, 3U));

} // namespace
