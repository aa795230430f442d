// Nodes built from a description: inputs, values, restored states, chains.

#include "runtime/graph/HostGraph.h"

#include "internalAPI/PiSocketUtil.h"
#include "internalAPI/PiValueChangeInterface.h"
#include "pluginAPI/PiShape2dInterface.h"
#include "pluginAPI/PiToolPolicyProtocol.h"
#include "runtime/graph/HostSockets.h"
#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

namespace {

using memoryHost::Journal;

/// Hands its source on and writes down what it is told.
class PassController : public PiImageModifier, public PiValueChangeInterface {
public:
    PassController() : PiImageModifier("") {}

    void nodeCreated() override { journal.emplace_back("created"); }
    void nodeLoaded() override { journal.emplace_back("loaded"); }
    void valueChanged(RCShdPtr<PiValue> const& value) override
    {
        journal.push_back(value->getName());
    }
    void createModifierProcNode(PxStrongHndl<PxNode const>& result, PiInputNodeBuilder& builder,
                                PxNodePtr<PxImageProtocol const> const& source) override
    {
        EXPECT_EQ(builder.getInputNode("Group.Amount").get(),
                  builder.getInputNode(PiSocketUtil::getInput(getNode(), "Group.Amount")).get());
        EXPECT_TRUE(builder.getInputNode("Nothing").isNull());
        EXPECT_TRUE(builder.getInputNode(RCShdPtr<PiInput const>()).isNull());
        result = PxStrongHndl<PxNode const>(source.get());
    }

    inline static Journal journal;
};

} // namespace

template <>
void PiToolPolicyProtocol<PassController, PiImageModifier::Descriptor>::describe(
    PiImageModifier::Descriptor& descriptor) const
{
    PiImageModifier::addSingleImageInput(descriptor, {}, PiSocketType::Single);
    PiStructuredPolicyDescriptor group;
    group.add("Amount", PiSocketType::Double,
              PiRangeInputPolicy<double>::create(0, 10, 4, true, false), PiSocketType::Single);
    group.add("Shape", PiSocketType::Curve, PiSocketType::Single);
    descriptor.requires_("Group", group, PiSocketType::Single);
    descriptor.stores("Note", PiValueType::Integer);
}

namespace {

class PassTool : public PiImageModifierInfo<PassController> {
public:
    PassTool()
        : PiImageModifierInfo<PassController>("Pass", "Test", "Product", "Maker", "1", 1, "Passes",
                                              Public, SingleTool)
    {
        PassController::journal.clear();
    }
};

ValueState number(double value)
{
    return Animated<double>(value);
}

TEST(HostGraphTest, NewNodeHasTheDescribedInputsAtTheirDefaults)
{
    PassTool const tool;
    auto const graph = makeShared<HostGraph>();
    auto const node = graph->createNode(tool);
    std::vector<std::string> names;
    for (HostNode::ValueSlot const& slot : node->getValues()) {
        names.push_back((slot.isStored ? "stored " : "") + slot.name);
    }
    EXPECT_EQ(names, (Journal{"stored Mute", "stored Affect", "Group.Amount", "Group.Shape",
                              "stored Note", "Mix"}));
    EXPECT_EQ(*node->getValue("Group.Amount")->getState(), number(4.0));
    EXPECT_EQ(*node->getValue("Mix")->getState(), number(1.0));
    EXPECT_EQ(PassController::journal, Journal{"created"});
    EXPECT_EQ(graph->getNodes().size(), 1U);
}

TEST(HostGraphTest, UnknownNamesAreFailuresThatNameThem)
{
    PassTool const tool;
    auto const graph = makeShared<HostGraph>();
    auto const node = graph->createNode(tool);
    EXPECT_TRUE(node->findInput("Nothing", false).isNull());
    EXPECT_TRUE(node->findValue("Nothing", false).isNull());
    EXPECT_TRUE(PiSocketUtil::getInput(node, "Group.Nothing").isNull());
    auto const group = castShared<PiStructuredInput>(node->findInput("Group", true));
    struct Case {
        std::function<void()> call;
        char const* text;
    };
    for (auto const& [call, text] :
         {Case{[&] { node->findInput("Nothing", true); }, "the tool has no input \"Nothing\""},
          Case{[&] { node->findValue("Nothing", true); }, "the tool has no value \"Nothing\""},
          Case{[&] { group->findMember("Nothing", true); },
               "the input \"Group\" has no member \"Nothing\""},
          Case{[&] {
                   node->setValues({{"Nothing", number(1)}});
               },
               "the tool has no value \"Nothing\""},
          Case{[&] {
                   graph->loadNode(tool, {{"Nothing", number(1)}});
               },
               "the tool has no value \"Nothing\""}}) {
        try {
            call();
            ADD_FAILURE() << text;
        } catch (HostException const& error) {
            EXPECT_STREQ(error.what(), text);
        }
    }
    EXPECT_EQ(graph->getNodes().size(), 1U);
}

TEST(HostGraphTest, ValuesAreSetTogetherOrNotAtAll)
{
    PassTool const tool;
    auto const graph = makeShared<HostGraph>();
    auto const node = graph->createNode(tool);
    EXPECT_THROW(node->setValues({{"Group.Amount", number(11)}, {"Affect", Animated<int>(1)}}),
                 ValueError);
    EXPECT_EQ(PassController::journal, Journal{"created"});
    node->setValues({{"Group.Amount", number(5)}, {"Note", Animated<int>(3)}});
    EXPECT_EQ(PassController::journal, (Journal{"created", "Group.Amount", "Note"}));
    node->resetInputs();
    EXPECT_EQ(*node->getValue("Group.Amount")->getState(), number(4.0));
    EXPECT_EQ(*node->getValue("Note")->getState(), ValueState(Animated<int>(3)));
}

TEST(HostGraphTest, RestoredNodeHasItsSavedValuesAndIsTold)
{
    PassTool const tool;
    auto const graph = makeShared<HostGraph>();
    auto const node = graph->loadNode(tool, {{"Group.Amount", number(9)}});
    EXPECT_EQ(*node->getValue("Group.Amount")->getState(), number(9.0));
    EXPECT_EQ(PassController::journal.back(), "loaded");
    graph->removeNode(node);
    EXPECT_TRUE(graph->getNodes().empty());
    EXPECT_TRUE(node->getGraph().isNull());
    node->setValues({{"Group.Amount", number(1)}}); // leaves no record and does no harm
    EXPECT_FALSE(graph->getHistory().canUndo());
}

TEST(HostGraphTest, CurveInputsLeadToANodeThatHoldsTheCurve)
{
    PassTool const tool;
    auto const graph = makeShared<HostGraph>();
    auto const node = graph->createNode(tool);
    auto const curveNode =
        PiSocketUtil::getInput(node, "Group.Shape")->getConnectedOutput()->getNode();
    auto const shape = castStrong<PiShape2dInterface>(curveNode->getController().lock());
    CurvePoints const points{{0, 0}, {1, 1}, {2, 2}};
    shape->setControlPoints(points, false);
    EXPECT_EQ(*node->getValue("Group.Shape")->getState(),
              ValueState(Animated<CurvePoints>(points)));
    EXPECT_EQ(shape->getControlPoints(), points);
    EXPECT_EQ(curveNode->findValue("Group.Shape", true).get(), node->getValue("Group.Shape").get());
    EXPECT_THROW(curveNode->findInput("Nothing", true), UnknownNameError);
    EXPECT_THROW(curveNode->findValue("Nothing", true), UnknownNameError);
}

TEST(HostGraphTest, BuilderGivesOneNodePerInput)
{
    PassTool const tool;
    auto const graph = makeShared<HostGraph>();
    Journal journal;
    auto const source = makeNode<memoryHost::FakeSource>(journal);
    auto const node = graph->createNode(tool);
    auto const chain = castNode<PxImageProtocol const>(
        node->buildChain(PxNodePtr<PxImageProtocol const>(source.get())));
    memoryHost::computeTile(*chain, {0, 0, 1, 1});
    EXPECT_EQ(journal, Journal{"read source"});
}

} // namespace
