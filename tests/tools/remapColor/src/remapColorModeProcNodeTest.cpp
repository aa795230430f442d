// The processing nodes: what they ask for, read, register and let go of, in which order; how long
// results hold; formats; and how each thing that may be missing or wrong is reported.

#include "ToolBench.h"

#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "pluginAPI/PxRequestMgr.h"

#include <algorithm>
#include <dlfcn.h>

namespace {

std::vector<PxNode const*> unregistered;

} // namespace

/// Stands before the host's operation and writes down what it is asked for.
void PxNode::unregisterChild(PxNodePtr<PxNode const> const& child)
{
    unregistered.push_back(child.get());
    using Operation = void (*)(PxNode*, PxNodePtr<PxNode const> const&);
    static auto const operation = reinterpret_cast<Operation>(
        ::dlsym(RTLD_NEXT, "_ZN6PxNode15unregisterChildERK9PxNodePtrIKS_E"));
    operation(this, child);
}

namespace {

using namespace memoryHost;
using reference::Mode;

constexpr std::array bothModes{Mode::Linear, Mode::ExrDisplay};

Journal withPrefix(std::string const& prefix, std::vector<std::string> const& names)
{
    Journal lines;
    for (std::string const& name : names) {
        lines.push_back(prefix + name);
    }
    return lines;
}

Journal join(Journal const& first, Journal const& second)
{
    Journal all = first;
    all.insert(all.end(), second.begin(), second.end());
    return all;
}

std::vector<std::string> getParamNames(Mode mode)
{
    auto names = getInputNamesInOrder(mode);
    names.resize(15);
    return names;
}

TEST(RemapColorNodesTest, InputsAreLookedUpInOrder)
{
    ToolBench bench;
    bench.buildChain();
    Journal const modes =
        join(getInputNamesInOrder(Mode::Linear), getInputNamesInOrder(Mode::ExrDisplay));
    EXPECT_EQ(bench.journal, withPrefix("ask ", join(modes, {"Mode", "Output Depth"})));
}

TEST(RemapColorNodesTest, TilesAndSinglePixelsReadInputsInOrder)
{
    ToolBench bench;
    bench.buildChain();
    for (Mode const mode : bothModes) {
        bench.inputs.setParams({.mode = mode});
        Journal reads = join(getParamNames(mode), {"Adjust Curve.Red", "Adjust Curve.Green",
                                                   "Adjust Curve.Blue", "Adjust"});
        if (mode == Mode::Linear) {
            reads.insert(reads.begin(), "Linear.Clamp");
        }
        bench.journal.clear();
        bench.compute();
        // The tile's buffer needs the output format.
        EXPECT_EQ(bench.journal,
                  withPrefix("read ", join({"Mode", "source", "Output Depth"}, reads)));
        bench.journal.clear();
        bench.pick({0.5F, 0.5F, 0.5F, 1.0F});
        EXPECT_EQ(bench.journal, withPrefix("read ", join({"Mode"}, reads)));
    }
}

/// The children of a mode's node; registration begins with the base's, the end with the mode's own.
Journal getBaseChildren()
{
    return {"source",           "Output Depth",       "Adjust",
            "Adjust Curve.Red", "Adjust Curve.Green", "Adjust Curve.Blue"};
}
Journal getOwnChildren(Mode mode)
{
    return join(mode == Mode::Linear ? Journal{"source", "Linear.Clamp"} : Journal{"source"},
                getParamNames(mode));
}
Journal const outputChildren{"source", "Mode", "Output Depth", "Linear", "EXRDisplay"};

TEST(RemapColorNodesTest, ChildrenAreRegisteredAndUnregisteredInOrderAndHandlesGoFromTheLast)
{
    ToolBench bench;
    PxNode const& chain = bench.buildChain();
    std::map<PxNode const*, std::string> names{
        {bench.source.get(), "source"},
        {&bench.getModeNode(Mode::Linear), "Linear"},
        {&bench.getModeNode(Mode::ExrDisplay), "EXRDisplay"}};
    for (auto const& [name, node] : bench.inputs.nodes) {
        names[node.get()] = name;
    }
    auto const namesOf = [&](std::vector<PxNode const*> const& nodes) {
        Journal lines;
        for (PxNode const* const node : nodes) {
            lines.push_back(names.at(node));
        }
        return lines;
    };
    for (Mode const mode : bothModes) {
        EXPECT_EQ(namesOf(bench.getModeNode(mode).getChildren()),
                  join(getBaseChildren(), getOwnChildren(mode)));
    }
    EXPECT_EQ(namesOf(chain.getChildren()), outputChildren);

    unregistered.clear();
    Journal const gone = bench.takeDown();
    Journal expected = outputChildren;
    for (Mode const mode : {Mode::ExrDisplay, Mode::Linear}) {
        expected = join(expected, join(getOwnChildren(mode), getBaseChildren()));
    }
    EXPECT_EQ(namesOf(unregistered), expected);
    // What a mode's node has alone goes with it; what is shared goes with the last that holds it.
    Journal handles{"source", "Mode", "Output Depth"};
    handles =
        join(handles, {"Adjust Curve.Red", "Adjust Curve.Green", "Adjust Curve.Blue", "Adjust"});
    handles = join(handles, join(getParamNames(Mode::Linear), {"Linear.Clamp"}));
    handles = join(handles, getParamNames(Mode::ExrDisplay));
    std::reverse(handles.begin(), handles.end());
    EXPECT_EQ(gone, withPrefix("gone ", handles));
}

TEST(RemapColorNodesTest, AChainThatIsBuiltAnewTakesTheFirstOnesPlaceForPicks)
{
    ToolBench bench;
    bench.buildChain();
    bench.pick({});
    bench.inputs.nodes.erase("Adjust");
    bench.inputs.set<bool>("Adjust", false);
    bench.inputs.nodes.erase("Linear.Output Level.Max.Green");
    bench.inputs.set<double>("Linear.Output Level.Max.Green", 8.0);
    bench.journal.clear();
    bench.buildChain();
    EXPECT_EQ(bench.pick({0.5F, 0.5F, 0.5F, 1.0F})->g, 4.0F);
    EXPECT_EQ(bench.pick({0.5F, 0.25F, 0.5F, 1.0F})->g, 2.0F);
    PxRequestMgr::getInstance().shutDown(); // lets go of requests, which hold their chain
    EvEventManager::getInstance().discardEvents();
    for (char const* const line : {"gone Adjust", "gone Linear.Output Level.Max.Green"}) {
        EXPECT_EQ(std::count(bench.journal.begin(), bench.journal.end(), line), 1) << line;
    }
}

TEST(RemapColorNodesTest, ResultCoversWhatTheSourceGivesOfARequest)
{
    ToolBench bench;
    bench.inputs.set<bool>("Adjust", false);
    bench.setPicture(Picture(Pixels(32, {0.25F, 0.5F, 0.75F, 1.0F}), 8));
    bench.buildChain();
    GeRectangle<int> const window{3, -2, 11, 2};
    struct Case {
        GeRectangle<int> request, result;
    };
    for (Mode const mode : bothModes) {
        bench.inputs.setParams({.mode = mode});
        for (auto const& [request, result] :
             {Case{window, window}, Case{{0, -9, 99, 99}, window},
              Case{{3, -2, 4, -1}, {3, -2, 4, -1}}, Case{{5, -5, 7, 0}, {5, -2, 7, 0}},
              Case{{9, 1, 20, 20}, {9, 1, 11, 2}}}) {
            auto const computed = computeTile(bench.getChain(), request);
            EXPECT_EQ(computed.getPixelRegion(), result);
            EXPECT_EQ(computed.getTileGuard().getTile().getBounds(), result);
        }
    }
}

TEST(RemapColorNodesTest, ResultHoldsAsLongAsEverythingRead)
{
    ToolBench bench;
    bench.buildChain();
    PxValidityInterval const full = PxValidityInterval::getFull();
    PxValidityInterval const stretch(2.0, 5.0);
    for (Mode const mode : bothModes) {
        bench.inputs.setParams({.mode = mode});
        for (std::string const& name : getInputNamesInOrder(mode)) {
            // The format is that of time 0, whatever the time.
            bool const narrows = name != "Output Depth";
            bench.inputs.setValidity(name, stretch);
            EXPECT_EQ(bench.compute().getValidity(), narrows ? stretch : full) << name;
            bench.inputs.setValidity(name, full);
        }
        bench.inputs.setValidity("Mode", stretch);
        EXPECT_EQ(bench.compute().getValidity(), full);
        bench.inputs.setValidity("Adjust Curve.Green", {3.0, 20.0});
        bench.source->validity = {-5.0, 8.0};
        EXPECT_EQ(bench.compute().getValidity(), PxValidityInterval(3.0, 8.0));
        bench.source->validity = full;
        bench.inputs.setValidity("Adjust Curve.Green", full);
    }
}

TEST(RemapColorNodesTest, ModeAndParametersAreReadAtTheRequestsTime)
{
    ToolBench bench;
    bench.setPicture(Picture(Pixels(16, {0.5F, 0.5F, 0.5F, 1.0F})));
    bench.buildChain();
    bench.inputs.set<bool>("Adjust", false);
    bench.inputs.valueAt<int>("Mode") = [](double time) { return time < 10.0 ? 0 : 1; };
    bench.inputs.valueAt<double>("Linear.Output Level.Max.Green") = [](double time) {
        return time;
    };
    EXPECT_EQ(bench.computePicture(6.0).getPixels()[0].g, 3.0F);
    for (double const time : {9.0, 10.0, 3.0}) {
        Mode const mode = time < 10.0 ? Mode::Linear : Mode::ExrDisplay;
        Picture result = bench.computePicture(time);
        auto const alone = computeTile(bench.getModeNode(mode), result.window, time);
        EXPECT_EQ(result.bytes, readTile(alone.getTileGuard().getTile()).bytes);
        EXPECT_EQ(bench.pick({0.5F, 0.5F, 0.5F, 1.0F}, time)->g, result.getPixels()[0].g);
    }
}

TEST(RemapColorNodesTest, ShapeWithoutACurveIsOneKeyAtTheOrigin)
{
    ToolBench bench;
    bench.setPicture(Picture(Pixels(16, {0.2F, -3.0F, 2.0F, 0.5F})));
    bench.buildChain();
    bench.inputs.set<Shape>("Adjust Curve.Red", makeShape({}));
    EXPECT_EQ(bench.computePicture().getPixels()[0].r, 0.0F);
    EXPECT_EQ(bench.computePicture().getPixels()[0].g, -3.0F);
    bench.inputs.set<bool>("Adjust", false);
    EXPECT_EQ(bench.computePicture().getPixels()[0].r, 0.2F);
}

TEST(RemapColorNodesTest, OutputFormatIsTheSourcesInTheChosenDepth)
{
    ToolBench bench;
    IxPixelFormat const wide(IxPixelFormat::RGB, IxPixelFormat::FLOAT16, Rational(2, 1), true);
    bench.source->format = PxImageFormat(wide, Rational(25, 1));
    bench.buildChain();
    constexpr std::array depths{IxPixelFormat::UINT8, IxPixelFormat::FLOAT16,
                                IxPixelFormat::FLOAT32, IxPixelFormat::FLOAT16};
    for (int choice = 0; choice < 4; ++choice) {
        // Only time 0 counts.
        bench.inputs.valueAt<int>("Output Depth") = [choice](double time) {
            return time == 0.0 ? choice : 1 - choice;
        };
        PxImageFormat const expected(
            IxPixelFormat(IxPixelFormat::RGB, depths.at(choice), Rational(2, 1), false),
            Rational(25, 1));
        EXPECT_EQ(bench.getChain().getImageFormat(), expected);
        EXPECT_EQ(bench.getModeNode(Mode::Linear).getImageFormat(), expected);
        EXPECT_EQ(bench.getModeNode(Mode::ExrDisplay).getImageFormat(), expected);
    }
}

// ---- Failures ----

TEST(RemapColorNodesTest, ChoicesThatDoNotExistAreFailuresWithTheirPlace)
{
    ToolBench bench;
    bench.buildChain();
    for (int const choice : {-1, 4}) {
        bench.inputs.set<int>("Output Depth", choice);
        for (auto const& [node, line] :
             {std::pair(&bench.getChain(), 367), std::pair(&bench.getModeNode(Mode::Linear), 1219),
              std::pair(&bench.getModeNode(Mode::ExrDisplay), 1219)}) {
            auto const abort = catchFailure<ProgramAbort>([&] { node->getImageFormat(); });
            ASSERT_TRUE(abort.has_value());
            EXPECT_EQ(abort->getFile(), "tools\\remapColor\\src\\remapColorController");
            EXPECT_EQ(abort->getLine(), line);
            EXPECT_EQ(abort->getExpression(), "");
        }
    }
    for (int const mode : {-1, 2}) {
        bench.inputs.set<int>("Mode", mode);
        catchFailure<AssertionFailure>([&] { bench.compute(); });
    }
}

TEST(RemapColorNodesTest, MissingInputsAreNamedByTheirType)
{
    struct Case {
        Mode mode;
        std::string input, type;
    };
    for (auto const& [mode, input, type] :
         {Case{Mode::Linear, "source", "PxImageProtocol"},
          Case{Mode::Linear, "Mode", "PxAnimValueProtocol<int>"},
          Case{Mode::Linear, "Output Depth", "PxAnimValueProtocol<int>"},
          Case{Mode::Linear, "Linear.Clamp", "PxAnimValueProtocol<bool>"},
          Case{Mode::Linear, "Linear.Output Level.Min.Green", "PxAnimValueProtocol<double>"},
          Case{Mode::Linear, "Adjust", "PxAnimValueProtocol<bool>"},
          Case{Mode::ExrDisplay, "EXRDisplay.Knee Low.Blue", "PxAnimValueProtocol<double>"},
          Case{Mode::ExrDisplay, "Adjust Curve.Red", "PxShape2dProtocol"}}) {
        SCOPED_TRACE(input);
        ToolBench bench;
        bench.inputs.setParams({.mode = mode});
        bench.inputs.nodes[input] = {};
        bench.source = input == "source" ? PxStrongHndl<FakeSource>() : bench.source;
        bench.buildChain();
        std::string const text = "Null pointer: " + type;
        EXPECT_EQ(messageOf<NullPointerException>([&] { bench.compute(); }), text);
        if (input != "source" && input != "Output Depth") { // a pick needs neither
            EXPECT_FALSE(bench.pick({}).has_value());
            ASSERT_EQ(bench.failures.size(), 1U);
            expectLineWith(text, bench.failures[0]);
        }
    }
}

TEST(RemapColorNodesTest, InputNodeOfAnotherKindIsRefusedWithBothTypes)
{
    using Case = std::pair<char const*, std::string>;
    for (auto const& [input, wanted] :
         {Case{"Mode", "PxAnimValueProtocol<int>"},
          Case{"Output Depth", "PxAnimValueProtocol<int>"},
          Case{"Adjust", "PxAnimValueProtocol<bool>"},
          Case{"Adjust Curve.Green", "PxShape2dProtocol"},
          Case{"Linear.Clamp", "PxAnimValueProtocol<bool>"},
          Case{"EXRDisplay.Defog.Red", "PxAnimValueProtocol<double>"}}) {
        ToolBench bench;
        bench.inputs.nodes[input] = PxStrongHndl<>(bench.source.get());
        EXPECT_EQ(messageOf<CastFailedException>([&] { bench.buildChain(); }),
                  "Cast failed: from memoryHost::FakeSource to " + wanted);
    }
}

} // namespace
