// The processing nodes: what they ask for, read, register and let go of, in which order; how long
// results hold; formats; and how each thing that may be missing or wrong is reported.

#include "ToolBench.h"

#include "base/HostException.h"
#include "pluginAPI/PxRequestMgr.h"
#include "runtime/graph/HostSockets.h"

#include <algorithm>

namespace {

using namespace memoryHost;
using reference::ChainParams;
using reference::Mode;

constexpr std::array bothModes{Mode::Linear, Mode::ExrDisplay};
constexpr char const* controllerFile = "tools\\remapColor\\src\\remapColorController";

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

/// What both modes read after their own parameters.
Journal const curveReads{"read Adjust Curve.Red", "read Adjust Curve.Green",
                         "read Adjust Curve.Blue", "read Adjust"};

Journal getParamReads(Mode mode)
{
    Journal const reads = withPrefix("read ", getParamNames(mode));
    return mode == Mode::Linear ? join({"read Linear.Clamp"}, reads) : reads;
}

TEST(RemapColorNodesTest, InputsAreLookedUpInOrder)
{
    ToolBench bench;
    bench.buildChain();
    Journal const modes = join(withPrefix("ask ", getInputNamesInOrder(Mode::Linear)),
                               withPrefix("ask ", getInputNamesInOrder(Mode::ExrDisplay)));
    EXPECT_EQ(bench.journal, join(modes, {"ask Mode", "ask Output Depth"}));
}

TEST(RemapColorNodesTest, TilesAndSinglePixelsReadInputsInOrder)
{
    ToolBench bench;
    bench.buildChain();
    for (Mode const mode : bothModes) {
        bench.inputs.setParams({.mode = mode});
        Journal const reads = join(getParamReads(mode), curveReads);
        bench.journal.clear();
        bench.compute();
        // The tile's buffer needs the output format.
        EXPECT_EQ(bench.journal, join({"read Mode", "read source", "read Output Depth"}, reads));
        bench.journal.clear();
        bench.pick({0.5F, 0.5F, 0.5F, 1.0F});
        EXPECT_EQ(bench.journal, join({"read Mode"}, reads));
    }
}

TEST(RemapColorNodesTest, ChildrenAreRegisteredInOrder)
{
    ToolBench bench;
    PxNode const& chain = bench.buildChain();
    auto const expected = [&](std::vector<std::string> const& names) {
        std::vector<PxNode const*> nodes;
        for (std::string const& name : names) {
            nodes.push_back(name == "source" ? bench.source.get() : bench.inputs.get(name));
        }
        return nodes;
    };
    std::vector<std::string> const shared{"source",
                                          "Output Depth",
                                          "Adjust",
                                          "Adjust Curve.Red",
                                          "Adjust Curve.Green",
                                          "Adjust Curve.Blue",
                                          "source"};
    EXPECT_EQ(bench.getModeNode(Mode::Linear).getChildren(),
              expected(join(join(shared, {"Linear.Clamp"}), getParamNames(Mode::Linear))));
    EXPECT_EQ(bench.getModeNode(Mode::ExrDisplay).getChildren(),
              expected(join(shared, getParamNames(Mode::ExrDisplay))));
    auto outputChildren = expected({"source", "Mode", "Output Depth"});
    outputChildren.push_back(&bench.getModeNode(Mode::Linear));
    outputChildren.push_back(&bench.getModeNode(Mode::ExrDisplay));
    EXPECT_EQ(chain.getChildren(), outputChildren);
}

TEST(RemapColorNodesTest, HandlesAreReleasedFromTheLastToTheFirst)
{
    ToolBench bench;
    bench.buildChain();
    auto linear = getParamNames(Mode::Linear);
    auto exr = getParamNames(Mode::ExrDisplay);
    std::reverse(linear.begin(), linear.end());
    std::reverse(exr.begin(), exr.end());
    Journal const ownValues = join(join(exr, {"Linear.Clamp"}), linear);
    EXPECT_EQ(bench.takeDown(),
              withPrefix("gone ",
                         join(ownValues, {"Adjust", "Adjust Curve.Blue", "Adjust Curve.Green",
                                          "Adjust Curve.Red", "Output Depth", "Mode", "source"})));
}

TEST(RemapColorNodesTest, EachChainIsANewOne)
{
    ToolBench bench;
    PxImageProtocol const* const first = &bench.buildChain();
    PxNodePtr<PxImageProtocol const> const kept(first);
    EXPECT_NE(&bench.buildChain(), first);
}

TEST(RemapColorNodesTest, ResultHoldsAsLongAsEverythingRead)
{
    ToolBench bench;
    bench.buildChain();
    PxValidityInterval const full = PxValidityInterval::getFull();
    PxValidityInterval const stretch(2.0, 5.0);
    for (Mode const mode : bothModes) {
        bench.inputs.setParams({.mode = mode});
        EXPECT_EQ(bench.compute().getValidity(), full);
        for (std::string const& name : getInputNamesInOrder(mode)) {
            // The format is that of time 0, whatever the time.
            bool const narrows = name != "Output Depth";
            bench.inputs.setValidity(name, stretch);
            EXPECT_EQ(bench.compute().getValidity(), narrows ? stretch : full) << name;
            bench.inputs.setValidity(name, full);
        }
        bench.inputs.setValidity("Mode", stretch);
        EXPECT_EQ(bench.compute().getValidity(), full);
        bench.inputs.setValidity("Adjust Curve.Green", {-1.0, 9.0});
        bench.inputs.setValidity(getParamInputName(mode, 4, 2), {3.0, 20.0});
        bench.source->validity = {-5.0, 8.0};
        EXPECT_EQ(bench.compute().getValidity(), PxValidityInterval(3.0, 8.0));
        bench.source->validity = full;
        bench.inputs.setValidity("Adjust Curve.Green", full);
    }
}

TEST(RemapColorNodesTest, AnimatedModeChoosesTheNodePerRequest)
{
    ToolBench bench;
    bench.inputs.setParams({});
    bench.setPicture(Picture(Pixels(16, {0.2F, 0.3F, 2.0F, 1.0F})));
    bench.buildChain();
    bench.inputs.value<int>("Mode").valueAt = [](double time) { return time < 10.0 ? 0 : 1; };
    for (double const time : {9.0, 10.0, 3.0}) {
        Mode const mode = time < 10.0 ? Mode::Linear : Mode::ExrDisplay;
        Picture result = readTile(bench.compute(time).getTileGuard().getTile());
        auto const alone = computeTile(bench.getModeNode(mode), result.window, time);
        EXPECT_EQ(result.bytes, readTile(alone.getTileGuard().getTile()).bytes);
        EXPECT_EQ(bench.pick({0.2F, 0.3F, 2.0F, 1.0F}, time)->b, result.getPixels()[0].b);
    }
}

TEST(RemapColorNodesTest, ParametersAreReadAtTheRequestsTime)
{
    ToolBench bench;
    bench.setPicture(Picture(Pixels(16, {0.5F, 0.5F, 0.5F, 1.0F})));
    bench.buildChain();
    bench.inputs.set<bool>("Adjust", false);
    bench.inputs.value<double>("Linear.Output Level.Max.Green").valueAt = [](double t) {
        return t;
    };
    Picture result = readTile(bench.compute(6.0).getTileGuard().getTile());
    EXPECT_EQ(result.getPixels()[0].g, 3.0F);
    EXPECT_EQ(bench.pick({0.5F, 0.5F, 0.5F, 1.0F}, 4.0)->g, 2.0F);
}

TEST(RemapColorNodesTest, ShapeWithoutACurveIsOneKeyAtTheOrigin)
{
    Pixels const pixels(16, {0.2F, -3.0F, 2.0F, 0.5F});
    ToolBench bench;
    bench.setPicture(Picture(pixels));
    bench.inputs.setParams({});
    bench.buildChain();
    bench.inputs.curve("Adjust Curve.Red").valueAt = [](double) { return makeShape({}); };
    auto const compute = [&] {
        return readTile(bench.compute().getTileGuard().getTile()).getPixels()[0];
    };
    EXPECT_EQ(compute().r, 0.0F);
    EXPECT_EQ(compute().g, -3.0F);
    bench.inputs.set<bool>("Adjust", false);
    EXPECT_EQ(compute().r, 0.2F);
}

// ---- Formats ----

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
        bench.inputs.value<int>("Output Depth").valueAt = [choice](double time) {
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

TEST(RemapColorNodesTest, DepthThatDoesNotExistAbortsWithItsPlace)
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
            EXPECT_EQ(abort->getFile(), controllerFile);
            EXPECT_EQ(abort->getLine(), line);
            EXPECT_EQ(abort->getExpression(), "");
        }
    }
}

// ---- Failures ----

struct MissingCase {
    Mode mode;
    char const* input;
    char const* type;
};

class RemapColorMissingInputTest : public ::testing::TestWithParam<MissingCase> {};

TEST_P(RemapColorMissingInputTest, IsNamedByItsType)
{
    auto const& [mode, input, type] = GetParam();
    ToolBench bench;
    if (std::string(input) == "source") {
        bench.source = {};
    } else {
        bench.inputs.setParams({.mode = mode});
        bench.inputs.replace(input, {});
    }
    bench.buildChain();
    std::string const text = std::string("Null pointer: ") + type;
    expectFailure<NullPointerException>(text, [&] { bench.compute(); });
    if (std::string(input) != "source" && std::string(input) != "Output Depth") {
        EXPECT_FALSE(bench.pick({}).has_value());
        ASSERT_EQ(bench.failures.size(), 1U);
        EXPECT_NE(bench.failures[0].find(text), std::string::npos) << bench.failures[0];
    }
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, RemapColorMissingInputTest,
    ::testing::Values(
        MissingCase{Mode::Linear, "source", "PxImageProtocol"},
        MissingCase{Mode::Linear, "Mode", "PxAnimValueProtocol<int>"},
        MissingCase{Mode::Linear, "Output Depth", "PxAnimValueProtocol<int>"},
        MissingCase{Mode::Linear, "Linear.Clamp", "PxAnimValueProtocol<bool>"},
        MissingCase{Mode::Linear, "Linear.Output Level.Min.Green", "PxAnimValueProtocol<double>"},
        MissingCase{Mode::Linear, "Adjust", "PxAnimValueProtocol<bool>"},
        MissingCase{Mode::ExrDisplay, "EXRDisplay.Knee Low.Blue", "PxAnimValueProtocol<double>"},
        MissingCase{Mode::ExrDisplay, "Adjust Curve.Red", "PxShape2dProtocol"}));

TEST(RemapColorNodesTest, MissingShapeIsNamedEvenWithoutAdjust)
{
    ToolBench bench;
    bench.inputs.setParams({.adjust = false});
    bench.inputs.curve("Adjust Curve.Blue").valueAt = [](double) {
        return RCPvtEngPtr<PmShape2d>();
    };
    bench.buildChain();
    expectFailure<NullPointerException>("Null pointer: PmShape2d", [&] { bench.compute(); });
}

TEST(RemapColorNodesTest, InputNodeOfAnotherKindIsRefusedWithBothTypes)
{
    using Case = std::pair<char const*, char const*>;
    for (auto const& [input, wanted] :
         {Case{"Mode", "PxAnimValueProtocol<int> const"},
          Case{"Output Depth", "PxAnimValueProtocol<int> const"},
          Case{"Adjust", "PxAnimValueProtocol<bool> const"},
          Case{"Adjust Curve.Green", "PxShape2dProtocol const"},
          Case{"Linear.Clamp", "PxAnimValueProtocol<bool> const"},
          Case{"Linear.Gamma.Blue", "PxAnimValueProtocol<double> const"},
          Case{"EXRDisplay.Defog.Red", "PxAnimValueProtocol<double> const"}}) {
        ToolBench bench;
        bench.inputs.replace(input, PxStrongHndl<>(bench.source.get()));
        std::string const type = std::string(wanted).substr(0, std::string(wanted).rfind(' '));
        expectFailure<CastFailedException>("Cast failed: from memoryHost::FakeSource to " + type,
                                           [&] { bench.buildChain(); });
    }
}

TEST(RemapColorNodesTest, ModeThatDoesNotExistIsAnAssertionFailure)
{
    ToolBench bench;
    bench.buildChain();
    for (int const mode : {-1, 2}) {
        bench.inputs.set<int>("Mode", mode);
        catchFailure<AssertionFailure>([&] { bench.compute(); });
    }
}

TEST(RemapColorNodesTest, ChainsAreNotBuiltOnWorkers)
{
    ToolBench bench;
    auto const failure = catchFailure<AssertionFailure>([&] {
        PxWorkerScope const worker;
        bench.buildChain();
    });
    EXPECT_EQ(failure->getExpression(), "!PxRequestMgr::getInstance().isWorkerThreadCurrent()");
}

/// A node with one input or value of another kind than the tool declared.
class WrongNode : public PiNode {
public:
    WrongNode(PiNode& realNode, std::string wrongName, RCShdPtr<PiInput> const& wrongInput)
        : node(realNode), name(std::move(wrongName)), input(wrongInput)
    {
    }
    RCShdPtr<PiInput> findInput(std::string const& wanted, bool mustExist) const override
    {
        return wanted == name ? input : node.findInput(wanted, mustExist);
    }
    RCShdPtr<PiValue> findValue(std::string const& wanted, bool mustExist) const override
    {
        return wanted == name ? RCShdPtr<PiValue>() : node.findValue(wanted, mustExist);
    }
    RCWeakPtr<PiNodeController> getController() const override { return node.getController(); }
    void resetInputs() override { node.resetInputs(); }
    RCShdPtr<PiGraph> getGraph() const override { return node.getGraph(); }

private:
    PiNode& node;
    std::string name;
    RCShdPtr<PiInput> input;
};

TEST(RemapColorNodesTest, InputThatIsNoStructureIsRefusedWithBothTypes)
{
    RCShdPtr<PiInput> const plain =
        makeShared<HostInput>("plain", RCShdPtr<HostValue>(), RCShdPtr<PiOutput>());
    RCShdPtr<PiInput> const withPlainMember = makeShared<HostStructuredInput>(
        "EXRDisplay", std::vector<HostStructuredInput::Member>{{"Exposure", plain}});
    using Case = std::pair<char const*, RCShdPtr<PiInput>>;
    for (auto const& [name, input] :
         {Case{"Linear", plain}, Case{"EXRDisplay", plain}, Case{"EXRDisplay", withPlainMember}}) {
        ToolBench bench;
        auto const wrong = makeShared<WrongNode>(bench.getNode(), name, input);
        bench.getController().attach(*wrong);
        expectFailure<CastFailedException>("Cast failed: from HostInput to PiStructuredInput",
                                           [&] { bench.buildChain(); });
        bench.getController().attach(bench.getNode());
    }
}

TEST(RemapColorNodesTest, ControllerWithoutANodeBuildsNoChain)
{
    ToolBench bench;
    OPtr<PiNodeController> const controller = bench.getNode().getTool().createController();
    auto& tool = dynamic_cast<PiToolInterface&>(*controller);
    PxStrongHndl<PxNode const> chain;
    expectFailure<NullPointerException>("Null pointer: PiNode", [&] {
        tool.createModifierProcNode(chain, bench.inputs,
                                    PxNodePtr<PxImageProtocol const>(bench.source.get()));
    });
}

TEST(RemapColorNodesTest, ResetTurnsLinksOnUpToAMissingOne)
{
    for (auto const& [missing, isExrOn] :
         {std::pair("KneeHighLink", true), std::pair("OutputMinLink", false)}) {
        ToolBench bench;
        Animated<bool> const off(false);
        Animated<bool> const on(true);
        NodeValues const before{{"InputMaxLink", off},    {"OutputMaxLink", off},
                                {"LinearGammaLink", off}, {"ExposureLink", off},
                                {"KneeLowLink", off},     {"GammaLink", off}};
        bench.getNode().setValues(before);
        auto const wrong = makeShared<WrongNode>(bench.getNode(), missing, RCShdPtr<PiInput>());
        bench.getController().attach(*wrong);
        expectFailure<NullPointerException>("Null pointer: PiTypedValue<bool>",
                                            [&] { bench.getController().reset(); });
        bench.getController().attach(bench.getNode());
        auto const isOn = [&](char const* name) {
            return *bench.getNode().getValue(name)->getState() == ValueState(on);
        };
        EXPECT_TRUE(isOn("InputMaxLink"));
        EXPECT_EQ(isOn("OutputMaxLink"), isExrOn);
        EXPECT_EQ(isOn("KneeLowLink"), isExrOn);
        EXPECT_FALSE(isOn("GammaLink"));
        bench.getController().reset();
        for (auto const& [name, state] : before) {
            EXPECT_TRUE(isOn(name.c_str())) << name;
        }
    }
}

} // namespace
