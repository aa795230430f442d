// The controller as the host and a curve editor use it: values, notifications, curves, undo.

#include "ToolBench.h"

#include "runtime/graph/CurveNode.h"
#include "runtime/graph/HostSockets.h"
#include "runtime/values/NumberText.h"

#include <bit>
#include <utility>

namespace {

using namespace memoryHost;
using Colour = CoRgbColorTyped<float>;
using InstanceData = PiUserInterface::InstanceData;

template <typename T>
class Recorder : public CbHandler<T> {
public:
    Recorder(std::string handlerName, Journal& handlerJournal)
        : name(std::move(handlerName)), journal(handlerJournal)
    {
    }
    using CbHandler<T>::call;
    void call([[maybe_unused]] T& value) override
    {
        journal.push_back(name);
        if constexpr (!std::is_same_v<T, CbEmptyType>) {
            for (float const component : {value.red, value.green, value.blue}) {
                journal.back() += " " + formatNumber(component);
            }
        }
    }

private:
    std::string name;
    Journal& journal;
};

/// Subscribed to everything that a controller tells without being asked.
struct Editor {
    explicit Editor(RemapColorController& controller)
    {
        controller.addPlotColorChangedCallback(&plot);
        controller.addOutputPlotColorChangedCallback(&output);
        controller.addHistoZoomChangedCallback(&zoom);
        controller.addHistoDisplayChangedCallback(&histo);
        controller.addChannelDisplayChangedCallback(&channel);
        controller.addCurveDisplayChangedCallback(&curve);
    }
    /// What was told since the last question.
    Journal take() { return std::exchange(journal, {}); }

    Journal journal;
    Recorder<Colour const> plot{"plot", journal};
    Recorder<Colour const> output{"output", journal};
    Recorder<CbEmptyType> zoom{"zoom", journal};
    Recorder<CbEmptyType> histo{"histo", journal};
    Recorder<CbEmptyType> channel{"channel", journal};
    Recorder<CbEmptyType> curve{"curve", journal};
};

Journal const toldByReset{"plot 0 0 0", "output 0 0 0", "zoom", "histo", "channel", "curve"};

struct Widget : PiWidget {
    explicit Widget(std::string widgetName) : name(std::move(widgetName)) {}
    std::string getName() const override { return name; }
    std::string name;
};

InstanceData openWidget(PiNodeController& controller, std::string const& name)
{
    return dynamic_cast<PiUserInterface&>(controller)
        .createWidgetInstanceData(makeShared<Widget>(name), makeShared<PiTimePath>());
}

RemapColorController* shown = nullptr;

RemapColorController& getController(PiNodeController& controller)
{
    RemapColorController::addInstanceDataFactory(
        [](auto const&, RemapColorController& owner, auto const&) {
            shown = &owner;
            return InstanceData();
        });
    openWidget(controller, "_mainContainer");
    return *shown;
}

/// Another state that the value takes.
ValueState change(ValueState const& state)
{
    return std::visit(
        []<typename T>(T const& old) -> ValueState {
            if constexpr (std::is_same_v<T, Vector<double>>) {
                return Vector<double>{4, 5};
            } else if constexpr (std::is_same_v<T, Animated<CurvePoints>>) {
                return T(CurvePoints{{0, 0}, {0, 1}, {1, 1}});
            } else if constexpr (std::is_same_v<T, Animated<double>>) {
                return T(old.evaluate(0).getValue() * 0.9 + 0.05);
            } else {
                return T(!old.evaluate(0).getValue());
            }
        },
        state);
}

struct RemapColorControllerTest : ::testing::Test {
    ~RemapColorControllerTest() noexcept override = default;
    NodeValues getStates() const
    {
        NodeValues states;
        for (HostNode::ValueSlot const& slot : node.getValues()) {
            states.emplace(slot.name, *slot.value->getState());
        }
        return states;
    }

    void reset() { castStrong<PiToolInterface>(node.getController().lock())->reset(); }

    ToolBench bench;
    HostNode& node = bench.getNode();
    HostGraph& graph = *castShared<HostGraph>(node.getGraph());
    HostCommandStack& history = graph.getHistory();
    RemapColorController& controller = bench.getController();
    Editor editor{controller};
};

TEST_F(RemapColorControllerTest, NewNodeTellsItsDefaultsOnce)
{
    auto const fresh = makeShared<HostNode>(node.getTool(), graph);
    Editor subscribed(getController(*fresh->getController().lock()));
    fresh->notifyCreated();
    EXPECT_EQ(subscribed.take(), toldByReset);
    EXPECT_EQ(shown->getHistoZoom(), 1.0);
    EXPECT_EQ(shown->getHistoDisplay(), 2);
    EXPECT_EQ(shown->getChannelDisplay(), 3);
    EXPECT_EQ(shown->getCurveDisplay(), 1);
    EXPECT_FALSE(shown->isPlotColorEnabled());
    EXPECT_EQ(*fresh->getValue("Plot Color")->getState(), ValueState(Vector<double>{0, 0, 0}));
    EXPECT_EQ(shown->getViewPan(), GeVector2<float>());
    EXPECT_EQ(shown->getViewZoom(), GeVector2<float>());
    CurvePoints points;
    for (std::uint32_t const bits : {0xBE2AAAABU, 0U, 0x3E2AAAABU, 0x3EAAAAAAU, 0x3F000000U,
                                     0x3F2AAAABU, 0x3F555555U, 0x3F800000U, 0x3F955555U}) {
        points.push_back({std::bit_cast<float>(bits), std::bit_cast<float>(bits)});
    }
    for (char const* const name : {"Adjust Curve.Red", "Adjust Curve.Green", "Adjust Curve.Blue"}) {
        EXPECT_EQ(*fresh->getValue(name)->getState(), ValueState(Animated<CurvePoints>(points)));
    }
}

TEST_F(RemapColorControllerTest, OnlyChangesOfTheEditorsValuesAreTold)
{
    std::map<std::string, Journal> told{{"Histo Zoom", {"zoom"}},
                                        {"Histo Display", {"histo"}},
                                        {"Channel Display", {"channel"}},
                                        {"Curve Display", {"curve"}},
                                        {"Plot Color", {"plot 0 0 0"}}}; // of two numbers
    for (auto const& [name, state] : getStates()) {
        node.setValues({{name, change(state)}});
        EXPECT_EQ(editor.take(), told[name]) << name;
    }
    EXPECT_EQ(controller.getPlotColor(), Colour());
    NodeValues const last{{"Plot Color", Vector<double>{0.25, 0.5, 1, 7}},
                          {"Curve Display", Animated<int>(-77)}}; // no code that anyone knows
    node.setValues(last);
    EXPECT_EQ(editor.take(), (Journal{"curve", "plot 0.25 0.5 1"}));
    EXPECT_EQ(controller.getPlotColor(), (Colour{0.25F, 0.5F, 1}));
    NodeValues const before = getStates();
    node.notifyLoaded();
    EXPECT_EQ(getStates(), before);
    EXPECT_EQ(controller.getCurveDisplay(), -77);
    EXPECT_EQ(editor.take(), Journal());
}

TEST_F(RemapColorControllerTest, ResetRestoresAllAndIsAnUndoableStepOfTheCurvesAlone)
{
    NodeValues const defaults = getStates();
    NodeValues undone = defaults;
    for (auto const& [name, state] : defaults) {
        node.setValues({{name, change(state)}});
        if (name.starts_with("Adjust Curve")) {
            undone.at(name) = change(state);
        }
    }
    controller.setOutputPlotColor({1, 2, 3});
    editor.take();
    auto const nbSteps = history.getNbCommands();
    reset();
    EXPECT_EQ(editor.take(), toldByReset);
    EXPECT_EQ(getStates(), defaults);
    EXPECT_EQ(controller.getOutputPlotColor(), Colour());
    EXPECT_EQ(history.getNbCommands(), nbSteps + 1);
    EXPECT_EQ(history.getUndoLabel(), "Reset Adjusted Curves");
    history.undo();
    EXPECT_EQ(getStates(), undone);
    history.redo();
    EXPECT_EQ(getStates(), defaults);
}

TEST_F(RemapColorControllerTest, ResetJoinsAnOpenCommandWithoutThePlotColour)
{
    for (auto const& [name, state] : getStates()) {
        node.setValues({{name, change(state)}});
    }
    NodeValues undone = getStates();
    undone.at("Plot Color") = Vector<double>{0, 0, 0};
    undone.at("Plot Color Enabled") = Animated<bool>(false);
    {
        PiUndoGuard const guard(node.getGraph()->getCommandStack(), "Host", PiExecParam());
        reset();
    }
    EXPECT_EQ(history.getUndoLabel(), "Host");
    history.undo();
    EXPECT_EQ(getStates(), undone);
}

TEST_F(RemapColorControllerTest, PlotColoursAndViewLeaveNoUndoRecord)
{
    auto const nbSteps = history.getNbCommands();
    Recorder<Colour const> unknown("unknown", editor.journal);
    {
        PiUndoGuard const guard(node.getGraph()->getCommandStack(), "Pick", PiExecParam());
        controller.setPlotColor({1, 0.5F, 0.1F});
        controller.setViewPan({1, 2});
        controller.setViewZoom({3, 4});
        for (auto* const handler : {&unknown, static_cast<Recorder<Colour const>*>(nullptr)}) {
            controller.removePlotColorChangedCallback(handler);
            controller.removeOutputPlotColorChangedCallback(handler);
        }
        controller.removePlotColorChangedCallback(&editor.plot);
        controller.setPlotColor({1, 0.5F, 0.2F});
        controller.setOutputPlotColor({2, 3, 4});
        controller.setOutputPlotColor({2, 3, 4});
        controller.removeOutputPlotColorChangedCallback(&editor.output);
        controller.setOutputPlotColor({2, 3, 5});
    }
    EXPECT_EQ(history.getNbCommands(), nbSteps);
    EXPECT_EQ(editor.take(), (Journal{"plot 1 0.5 0.1", "output 2 3 4", "output 2 3 4"}));
    EXPECT_TRUE(controller.isPlotColorEnabled());
    EXPECT_EQ(*node.getValue("Plot Color")->getState(), ValueState(Vector<double>{1, 0.5, 0.2F}));
    EXPECT_EQ(controller.getViewPan(), (GeVector2<float>{1, 2}));
    EXPECT_EQ(controller.getViewZoom(), (GeVector2<float>{3, 4}));
}

/// As much of a node as a test gives it.
struct PartialNode : PiNode {
    RCShdPtr<PiInput> findInput(std::string const&, bool) const override { return curves; }
    RCShdPtr<PiValue> findValue(std::string const&, bool) const override { return {}; }
    RCWeakPtr<PiNodeController> getController() const override { return controller; }
    void resetInputs() override {}
    RCShdPtr<PiGraph> getGraph() const override { return graph; }

    RCShdPtr<PiInput> curves;
    RCStrongPtr<PiNodeController> controller;
    RCShdPtr<PiGraph> graph;
};

TEST_F(RemapColorControllerTest, MissingPartsAreNamed)
{
    auto const owner = makeShared<PartialNode>();
    auto const curveNode = makeShared<PartialNode>();
    auto const connectRed = [&](RCShdPtr<PiOutput> const& output) {
        RCShdPtr<PiInput> const red = makeShared<HostInput>("", RCShdPtr<HostValue>(), output);
        std::vector<HostStructuredInput::Member> const members{{"Red", red}};
        owner->curves = makeShared<HostStructuredInput>("", members);
    };
    OPtr<PiNodeController> const alone = node.getTool().createController();
    RemapColorController& unbound = getController(*alone);
    auto const reset = [&] { controller.resetAdjustedCurve(RemapColorTool::Red); };
    auto const resetAll = [&] { controller.resetAdjustedCurves(); };
    expectFailure<HostException>("Null pointer: PiTypedValue<double>",
                                 [&] { unbound.getHistoZoom(); });
    expectFailure<HostException>("Null pointer: PiNode", [&] { unbound.resetAdjustedCurves(); });
    expectFailure<HostException>("Null pointer: PiInput", [&] {
        controller.resetAdjustedCurve(static_cast<RemapColorTool::Channel>(5));
    });
    controller.attach(*owner);
    connectRed({});
    expectFailure<HostException>("Null pointer: PiOutput", reset);
    connectRed(makeShared<CurveOutput>(RCShdPtr<PiNode>()));
    expectFailure<HostException>("Null pointer: PiNode", reset);
    connectRed(makeShared<CurveOutput>(curveNode));
    expectFailure<HostException>("Assertion failed: !curve.isNull() "
                                 "(tools\\remapColor\\src\\remapColorController, line 1088)",
                                 reset);
    expectFailure<HostException>("Null pointer: PiGraph", resetAll);
    owner->graph = RCShdPtr<PiGraph>(&graph);
    curveNode->controller = makeStrong<PiNodeController>();
    expectFailure<HostException>("Cast failed: from PiNodeController to PiShape2dInterface",
                                 resetAll);
    controller.attach(node);
    node.setValues({{"Adjust Curve.Red", Animated<CurvePoints>(CurvePoints())}});
    auto const nbSteps = history.getNbCommands();
    resetAll(); // a step of its own: the one that failed is closed
    EXPECT_EQ(history.getNbCommands(), nbSteps + 1);
}

Journal madeAndGone;

struct Data : RCBase<LkCounter<int>> {
    explicit Data(std::string dataName) : name(std::move(dataName)) {}
    ~Data() noexcept(false) override { madeAndGone.push_back("gone " + name); }
    std::string name;
};

template <char name>
InstanceData make(RCShdPtr<PiWidget> const& widget, RemapColorController&,
                  RCShdPtr<PiTimePath const> const& path)
{
    madeAndGone.push_back(name + (path.isNull() ? "" : " for " + widget->getName()));
    return makeShared<Data>(std::string(1, name));
}

TEST_F(RemapColorControllerTest, MainContainerGetsTheDataOfAllMakersInOrder)
{
    [[maybe_unused]] static bool const isInstalled = [] { // it cannot be taken back
        RemapColorController::addInstanceDataFactory(&make<'a'>);
        RemapColorController::addInstanceDataFactory(&make<'b'>);
        return true;
    }();
    madeAndGone.clear();
    EXPECT_TRUE(openWidget(controller, "_mainContainer2").isNull());
    openWidget(controller, "_mainContainer");
    EXPECT_EQ(madeAndGone,
              (Journal{"a for _mainContainer", "b for _mainContainer", "gone a", "gone b"}));
}

TEST_F(RemapColorControllerTest, EventHandlersComeFromTheInstalledMaker)
{
    auto const makeHandler = [&] {
        PiViewer viewer;
        return castStrong<PiEventHandlingInterface>(node.getController().lock())
            ->createEventHandler(viewer, RCShdPtr<PiNode>(&node), makeShared<PiPath>());
    };
    EXPECT_TRUE(makeHandler().isNull());
    RemapColorController::setEventHandlerFactory(
        [](PiViewer&, RCShdPtr<PiNode> const& forNode, RCShdPtr<PiPath> const& path) {
            EXPECT_FALSE(forNode.isNull() || path.isNull());
            return makeStrong<PiEventHandler>();
        });
    EXPECT_FALSE(makeHandler().isNull());
    RemapColorController::setEventHandlerFactory(nullptr);
    EXPECT_TRUE(makeHandler().isNull());
}

} // namespace
