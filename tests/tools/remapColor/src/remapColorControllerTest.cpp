// The controller as the host and a curve editor use it: values, notifications, curves, undo.

#include "ToolBench.h"

#include "base/InPackageInit.h"
#include "callbacks/CbFunction.h"
#include "runtime/values/NumberText.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

using namespace memoryHost;
using Colour = CoRgbColorTyped<float>;

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
    RemapColorController& shown = showController(*fresh->getController().lock());
    Editor subscribed(shown);
    fresh->notifyCreated();
    EXPECT_EQ(subscribed.take(), toldByReset);
    EXPECT_EQ(shown.getHistoZoom(), 1.0);
    EXPECT_EQ(shown.getHistoDisplay(), 2);
    EXPECT_EQ(shown.getChannelDisplay(), 3);
    EXPECT_EQ(shown.getCurveDisplay(), 1);
    EXPECT_FALSE(shown.isPlotColorEnabled());
    EXPECT_EQ(*fresh->getValue("Plot Color")->getState(), ValueState(Vector<double>{0, 0, 0}));
    EXPECT_EQ(shown.getViewPan(), GeVector2<float>());
    EXPECT_EQ(shown.getViewZoom(), GeVector2<float>());
    CurvePoints points;
    for (auto const& [x, y] : reference::defaultCurvePoints()) {
        points.push_back({x, y});
    }
    for (char const* const curve : {"Red", "Green", "Blue"}) {
        auto const value = fresh->getValue(std::string("Adjust Curve.") + curve);
        EXPECT_EQ(*value->getState(), ValueState(Animated<CurvePoints>(points)));
    }
}

TEST_F(RemapColorControllerTest, CurveOfAChannelThatDoesNotExistHasNoInput)
{
    auto const failure = messageOf<NullPointerException>(
        [&] { controller.resetAdjustedCurve(static_cast<RemapColorTool::Channel>(5)); });
    EXPECT_NE(failure.find("PiInput"), std::string::npos) << failure;
}

int nbMarks = 0;
Journal marks;

struct Mark : RCBase<LkCounter<int>> {
    ~Mark() noexcept(false) override { marks.push_back("gone " + name); }
    std::string const name = std::to_string(++nbMarks);
};

PiUserInterface::InstanceData makeMark(RCShdPtr<PiWidget> const&, RemapColorController&,
                                       RCShdPtr<PiTimePath const> const&)
{
    auto const mark = makeShared<Mark>();
    marks.push_back("made " + mark->name);
    return PiUserInterface::InstanceData(mark);
}

TEST_F(RemapColorControllerTest, MakersOfDataAreCalledInTheirOrderForTheMainContainerOnly)
{
    RemapColorController::addInstanceDataFactory(&makeMark);
    RemapColorController::addInstanceDataFactory(&makeMark);
    EXPECT_TRUE(openWidget(*node.getController().lock(), "_sideContainer").isNull());
    EXPECT_EQ(marks, Journal());
    openWidget(*node.getController().lock(), "_mainContainer");
    EXPECT_EQ(marks, (Journal{"made 1", "made 2", "gone 1", "gone 2"}));
}

TEST(RemapColorPackageTest, ShuttingDownForgetsTheMakers)
{
    auto const countMade = [] {
        auto const graph = makeShared<HostGraph>();
        auto const fresh = createToolNode(*graph, "Remap Color");
        marks.clear();
        auto const data = openWidget(*fresh->getController().lock(), "_mainContainer");
        EXPECT_EQ(data.isNull(), marks.empty());
        return marks.size();
    };
    RemapColorController::addInstanceDataFactory(&makeMark);
    EXPECT_GE(countMade(), 1U);
    InPackageRegistry::getInstance().shutDownPackages();
    EXPECT_EQ(countMade(), 0U);
}

class NoHandler : public PiEventHandler {};

TEST_F(RemapColorControllerTest, HandlersOfViewersAreThoseOfTheMakerIfThereIsOne)
{
    PiViewer viewer;
    auto& handling = dynamic_cast<PiEventHandlingInterface&>(*node.getController().lock());
    auto const nodeHandle = RCShdPtr<PiNode>(&node);
    EXPECT_TRUE(handling.createEventHandler(viewer, nodeHandle, {}).isNull());
    RemapColorController::setEventHandlerFactory(
        [](PiViewer&, RCShdPtr<PiNode> const&, RCShdPtr<PiPath> const&) {
            return RCStrongPtr<PiEventHandler>(makeStrong<NoHandler>());
        });
    EXPECT_FALSE(handling.createEventHandler(viewer, nodeHandle, {}).isNull());
    RemapColorController::setEventHandlerFactory(nullptr);
    EXPECT_TRUE(handling.createEventHandler(viewer, nodeHandle, {}).isNull());
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

TEST_F(RemapColorControllerTest, ResetSetsTheEditorsStateBeforeAndAfterTheToolsInputs)
{
    for (auto const& [name, state] : getStates()) {
        node.setValues({{name, change(state)}});
    }
    controller.setPlotColor({1, 2, 3});
    Journal changed;
    CbFunction<ValueChange const> onChange(
        [&](ValueChange const& change) { changed.push_back(change.value->getName()); });
    node.addHandler(&onChange);
    CbFunction<Colour const> onOutput([&](auto&) { changed.emplace_back("output"); });
    controller.addOutputPlotColorChangedCallback(&onOutput);
    reset();
    // Each place in the order that the host's own reset and the modes' leave open.
    auto const placeOf = [&](std::string const& name) {
        auto const found = std::find(changed.begin(), changed.end(), name);
        EXPECT_EQ(std::count(changed.begin(), changed.end(), name), 1) << name;
        return found - changed.begin();
    };
    Journal const first(changed.begin(), changed.begin() + 3);
    EXPECT_EQ(first, (Journal{"Plot Color Enabled", "Plot Color", "output"}));
    Journal const last(changed.end() - 7, changed.end());
    EXPECT_EQ(last, (Journal{"Adjust Curve.Red", "Adjust Curve.Green", "Adjust Curve.Blue",
                             "Histo Zoom", "Histo Display", "Channel Display", "Curve Display"}));
    for (char const* const own : {"Mode", "Mute", "Affect", "Linear.Gamma.Blue", "Adjust"}) {
        EXPECT_LT(placeOf(own), placeOf("InputMinLink")) << own;
    }
    EXPECT_LT(placeOf("LinearGammaLink"), placeOf("ExposureLink"));
}

TEST_F(RemapColorControllerTest, WhoIsToldOfAColourFindsItStoredAndMaySetAnother)
{
    Journal seen;
    auto const write = [&](std::string const& who, Colour const& told, Colour const& stored) {
        EXPECT_EQ(told, stored) << who;
        seen.push_back(who + " " + formatNumber(told.red));
    };
    CbFunction<Colour const> onPlot([&](Colour const& told) {
        write(controller.isPlotColorEnabled() ? "on" : "off", told, controller.getPlotColor());
        if (told.red == 1.0F) {
            controller.setPlotColor({2, 0, 0});
        }
    });
    CbFunction<Colour const> onOutput([&](Colour const& told) {
        write("output", told, controller.getOutputPlotColor());
        if (told.red == 5.0F) {
            controller.setOutputPlotColor({6, 0, 0});
            EXPECT_EQ(told.red, 5.0F); // what was told does not change under the handler
        }
    });
    controller.addPlotColorChangedCallback(&onPlot);
    controller.addOutputPlotColorChangedCallback(&onOutput);
    controller.setPlotColor({1, 0, 0});
    controller.setOutputPlotColor({5, 0, 0});
    EXPECT_EQ(seen, (Journal{"on 1", "on 2", "output 5", "output 6"}));
    EXPECT_EQ(controller.getPlotColor().red, 2.0F);
    EXPECT_EQ(controller.getOutputPlotColor().red, 6.0F);
    controller.addHistoDisplayChangedCallback(&editor.histo); // is subscribed already
    CbFunction<CbEmptyType> onHisto(
        [&](auto&) { seen.push_back("histo " + std::to_string(controller.getHistoDisplay())); });
    controller.addHistoDisplayChangedCallback(&onHisto);
    seen.clear();
    reset();
    EXPECT_EQ(seen, (Journal{"off 0", "output 0"})); // the histogram's display stood at its default
    node.setValues({{"Histo Display", Animated<int>(7)}});
    EXPECT_EQ(seen.back(), "histo 7");
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
        controller.setPlotColor({1, 0.5F, infinity}); // may be anything
        controller.setOutputPlotColor({2, 3, 4});
        controller.setOutputPlotColor({2, 3, 4});
        controller.removeOutputPlotColorChangedCallback(&editor.output);
        controller.setOutputPlotColor({2, 3, 5});
    }
    EXPECT_EQ(history.getNbCommands(), nbSteps);
    EXPECT_EQ(editor.take(), (Journal{"plot 1 0.5 0.1", "output 2 3 4", "output 2 3 4"}));
    EXPECT_TRUE(controller.isPlotColorEnabled());
    EXPECT_EQ(*node.getValue("Plot Color")->getState(),
              ValueState(Vector<double>{1, 0.5, infinity}));
    EXPECT_EQ(controller.getViewPan(), (GeVector2<float>{1, 2}));
    EXPECT_EQ(controller.getViewZoom(), (GeVector2<float>{3, 4}));
}

} // namespace
