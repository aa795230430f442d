// Tools loaded as plug-ins at run time: what announces itself, what nodes of such a tool do, and
// what is said of libraries that are no tools.

#include "runtime/loader/ToolLoader.h"

#include "base/InBuildInfo.h"
#include "base/InPackageInit.h"
#include "runtime/project/Project.h"
#include "support/InMemoryHost.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace memoryHost;

constexpr char const* toolName = "Remap Color";

struct BadLibrary {
    char const* name;
    char const* file;
    char const* message;
};

class BadLibraryTest : public ::testing::TestWithParam<BadLibrary> {};

TEST_P(BadLibraryTest, GivesOneClearLine)
{
    ToolLoader loader;
    try {
        loader.load(GetParam().file);
        FAIL() << "was accepted";
    } catch (ToolLoadError const& error) {
        std::string const text = error.what();
        EXPECT_TRUE(
            text.starts_with("cannot use the tool library " + std::string(GetParam().file) + ": "))
            << text;
        EXPECT_NE(text.find(GetParam().message), std::string::npos) << text;
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    }
    EXPECT_TRUE(InBuildInfoUtil::getInfos().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Libraries, BadLibraryTest,
    ::testing::Values(BadLibrary{"missing", "no/such.vxtool", "No such file"},
                      BadLibrary{"text", CMAKE_LISTS_FILE, "invalid ELF"},
                      BadLibrary{"foreign", "libz.so.1", "announces no package"},
                      BadLibrary{"failing", FAILING_TOOL, "no licence to start"}),
    [](auto const& info) { return std::string(info.param.name); });

TEST(ToolLoaderTest, UnloadedToolCanBeLoadedAgain)
{
    for (int round = 0; round < 2; ++round) {
        ToolLoader loader;
        EXPECT_THROW(loader.getTool(toolName), ToolLoadError);
        loader.load(REMAPCOLOR_LIBRARY);
        EXPECT_NO_THROW(loader.getTool(toolName));
    }
    EXPECT_EQ(PiToolRegistry::getInstance().find(toolName), nullptr);
    EXPECT_TRUE(InBuildInfoUtil::getInfos().empty());
}

TEST(ToolLoaderTest, FindsByNameBesideTheProgramAndSaysWhereItLooked)
{
    ToolLoader loader;
    loader.find("libVXremapColor.vxtool");
    EXPECT_NO_THROW(loader.getTool(toolName));
    try {
        loader.find("nothing.vxtool");
        FAIL() << "was accepted";
    } catch (ToolLoadError const& error) {
        EXPECT_NE(std::strstr(error.what(), "lib/vxtools; set VX_TOOL_PATH"), nullptr)
            << error.what();
    }
}

struct LoadedTool : ::testing::Test {
    LoadedTool() { loader.load(REMAPCOLOR_LIBRARY); }
    ~LoadedTool() noexcept override = default;

    PiToolProtocol const& tool() const { return loader.getTool(toolName); }
    std::vector<std::byte> render(HostNode& node) { return renderPicture(node, picture).bytes; }

    ToolLoader loader;
    RCShdPtr<HostGraph> graph = makeShared<HostGraph>();
    Picture picture{reference::standardPixels()};
};

TEST_F(LoadedTool, PackageBuildAndToolAnnounceThemselves)
{
    InPackageInit const* const package = InPackageRegistry::getInstance().find("remapColorVxtool");
    ASSERT_NE(package, nullptr);
    std::vector<std::type_info const*> const wanted{
        &InInit<VxInit::framework>::getType(),  &InInit<VxInit::internalAPI>::getType(),
        &InInit<VxInit::primitives>::getType(), &InInit<VxInit::resmgt>::getType(),
        &InInit<VxInit::pluginAPI>::getType(),  &InInit<VxInit::base>::getType()};
    ASSERT_EQ(package->getDependencies().size(), wanted.size());
    for (std::size_t index = 0; index < wanted.size(); ++index) {
        EXPECT_TRUE(*package->getDependencies()[index] == *wanted[index]) << index;
    }
    InBuildInfo const& build = *InBuildInfoUtil::getInfos().back();
    EXPECT_STREQ(build.getLibraryName(), "libVxremapColorVxtool");
    EXPECT_STREQ(build.getReleaseStage(), "");
    EXPECT_EQ(build.getReleaseCode(), 42);
    EXPECT_STREQ(build.getConfiguration(), "opt.x86_64.intel");
    EXPECT_EQ(tool().getDescription(), "Remaps color using a curve editor.");
    EXPECT_EQ(tool().getCategory(), "Color Correction");
    EXPECT_EQ(tool().getSchemaNb(), 5);
    EXPECT_EQ(tool().getPrimaryInput(), "Input");
    EXPECT_FALSE(tool().isInternal());
    EXPECT_FALSE(tool().isSuperTool());
}

TEST_F(LoadedTool, DeclarationsComeInOrder)
{
    PiToolDescriptor descriptor;
    tool().describe(descriptor);
    std::string names;
    for (PiDeclaration const& declaration : descriptor.getDeclarations()) {
        names += declaration.input.name + ";";
    }
    EXPECT_EQ(names,
              "Mute;Affect;Output;Input;Mode;Output Depth;Adjust;Adjust Curve;Histo Zoom;"
              "Histo Display;Channel Display;Curve Display;InputMinLink;InputMaxLink;"
              "OutputMinLink;OutputMaxLink;LinearGammaLink;Linear;ExposureLink;DefogLink;"
              "KneeLowLink;KneeHighLink;GammaLink;EXRDisplay;Plot Color;Plot Color Enabled;Mask;"
              "Mix;");
}

TEST_F(LoadedTool, NodesRenderSaveLoadAndGoInAnyOrder)
{
    auto const linear = graph->createNode(tool());
    auto display = graph->createNode(tool());
    display->setValues(
        {{"Mode", Animated<int>(1)}, {"EXRDisplay.Exposure.Red", Animated<double>(1.5)}});
    auto const linearPixels = render(*linear);
    auto const displayPixels = render(*display);
    EXPECT_FALSE(linearPixels == displayPixels);

    std::string const saved = writeProject(*display);
    auto const restored = graph->loadNode(tool(), readProject(saved, *linear));
    graph->removeNode(linear);
    EXPECT_EQ(writeProject(*restored), saved);
    EXPECT_TRUE(render(*restored) == displayPixels);
    graph->removeNode(restored);
    EXPECT_TRUE(render(*display) == displayPixels);
}

TEST_F(LoadedTool, MutedNodeGivesTheSource)
{
    auto const node = graph->createNode(tool());
    node->setValues({{"Linear.Output Level.Min.Red", Animated<double>(0.5)}});
    EXPECT_FALSE(render(*node) == picture.bytes);
    node->setValues({{"Mute", Animated<bool>(true)}});
    EXPECT_TRUE(render(*node) == picture.bytes);
}

/// The number of points and the height of the second key.
std::string readCurve(HostNode const& node, char const* name)
{
    auto const state = node.getValue(name)->getState();
    auto const points = std::get<Animated<CurvePoints>>(*state).evaluate(0.0).getValue();
    return std::to_string(points.size()) + " " + std::to_string(points.at(4).y);
}

TEST_F(LoadedTool, ResetIsOneUndoStepForAllCurves)
{
    auto const node = graph->createNode(tool());
    NodeValues const defaults = getDefaultValues(tool());
    CurvePoints const flat{{-1, 0.5F}, {0, 0.5F}, {0.3F, 0.5F}, {0.6F, 0.5F}, {1, 0.5F}, {2, 0.5F}};
    std::vector<std::string> const names{"Adjust Curve.Red", "Adjust Curve.Green",
                                         "Adjust Curve.Blue", "Linear.Gamma.Red"};
    node->setValues({{names[0], Animated<CurvePoints>(flat)},
                     {names[1], Animated<CurvePoints>(flat)},
                     {names[2], Animated<CurvePoints>(flat)},
                     {names[3], Animated<double>(3.0)}});
    HostCommandStack& history = graph->getHistory();
    std::size_t const before = history.getNbCommands();
    castStrong<PiToolInterface>(node->getController().lock())->reset();
    for (std::string const& name : names) {
        EXPECT_TRUE(*node->getValue(name)->getState() == defaults.at(name)) << name;
    }
    ASSERT_EQ(history.getNbCommands(), before + 1);
    EXPECT_EQ(history.getUndoLabel(), "Reset Adjusted Curves");
    history.undo();
    EXPECT_EQ(readCurve(*node, "Adjust Curve.Green"), "6 0.500000");
    history.redo();
    EXPECT_EQ(readCurve(*node, "Adjust Curve.Green"), "9 0.500000");
    EXPECT_EQ(readCurve(*node, "Adjust Curve.Blue"), "9 0.500000");
}

} // namespace
