// Tools loaded as plug-ins at run time: what announces itself, what nodes of such a tool do, and
// what is said of libraries that are no tools.

#include "runtime/loader/ToolLoader.h"

#include "base/EvEventManager.h"
#include "base/InBuildInfo.h"
#include "base/InPackageInit.h"
#include "pluginAPI/PxRequestMgr.h"
#include "runtime/project/Project.h"
#include "support/Failures.h"
#include "support/InMemoryHost.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <semaphore>
#include <thread>

namespace {

using namespace memoryHost;

constexpr char const* toolName = "Remap Color";

TEST(ToolLoaderTest, BadLibrariesGiveOneClearLine)
{
    using Case = std::pair<std::string, char const*>;
    for (auto const& [file, message] :
         {Case{"no/such.vxtool", "No such file"}, Case{CMAKE_LISTS_FILE, "invalid ELF"},
          Case{"libz.so.1", "announces no package"}, Case{FAILING_TOOL, "no licence to start"}}) {
        ToolLoader loader;
        std::string const text = messageOf<ToolLoadError>([&, &name = file] { loader.load(name); });
        EXPECT_TRUE(text.starts_with("cannot use the tool library " + file + ": ")) << text;
        expectLineWith(message, text);
        EXPECT_TRUE(InBuildInfoUtil::getInfos().empty());
    }
}

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
    ::setenv("VX_TOOL_PATH", ":a::b", 1);
    std::vector<std::filesystem::path> folders = getToolFolders();
    ::unsetenv("VX_TOOL_PATH");
    folders.resize(2);
    EXPECT_EQ(folders, (std::vector<std::filesystem::path>{"a", "b"}));
    expectLineWith("lib/vxtools; set VX_TOOL_PATH",
                   messageOf<ToolLoadError>([&] { loader.find("nothing.vxtool"); }));
}

/// Ends when it may, and sees whether the tool is still there then.
struct LastRequest : PxRequest {
    void performExecute() override
    {
        hasStarted.release();
        mayEnd.acquire();
        auto const& packages = InPackageRegistry::getInstance();
        InPackageInit const* const tool = packages.find("remapColorVxtool");
        wasToolThere = tool != nullptr && packages.isRunning(*tool);
    }
    std::binary_semaphore hasStarted{0};
    std::binary_semaphore mayEnd{0};
    bool wasToolThere = false;
};

TEST(ToolLoaderTest, RequestsEndAndEventsGoBeforeTheTool)
{
    auto loader = std::make_unique<ToolLoader>();
    loader->load(REMAPCOLOR_LIBRARY);
    auto* const request = new LastRequest;
    PxRequestMgr::getInstance().submit(request, 0);
    request->hasStarted.acquire();
    auto const held = std::make_shared<int>(0);
    struct Holder : EvRequestEvent {
        explicit Holder(std::shared_ptr<int> object) : kept(std::move(object)) {}
        void execute() override { ADD_FAILURE(); }
        std::shared_ptr<int> kept;
    };
    EvEventManager::getInstance().post(makeOwned<Holder>(held));
    std::binary_semaphore hasGone{0};
    std::jthread const opener([&] {
        (void)hasGone.try_acquire_for(std::chrono::milliseconds(30));
        request->mayEnd.release();
    });
    loader.reset();
    hasGone.release();
    PxRequestMgr::getInstance().wait(request);
    EXPECT_TRUE(request->wasToolThere);
    EXPECT_EQ(held.use_count(), 1);
    PxRequestMgr::getInstance().release(request);
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
    EXPECT_EQ(package->getDependencies().size(), 6U);
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
    auto const& modifier = dynamic_cast<PiImageModifierProtocol const&>(tool());
    EXPECT_TRUE(modifier.canMute() && modifier.canAffectColour() && modifier.canAffectAlpha());
    EXPECT_EQ(modifier.getMaskingMode(), PiImageModifierTypes::MaskAfterChain);
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

TEST_F(LoadedTool, ValuesAreSetTogetherOrNotAtAll)
{
    auto const node = graph->createNode(tool());
    std::string const before = writeProject(*node);
    for (auto const& [name, state] :
         {std::pair<std::string, ValueState>{"EXRDisplay.Exposure.Red", Animated<double>(11)},
          {"Nothing", Animated<double>(1)}}) {
        NodeValues const values{{name, state}, {"Adjust", Animated<bool>(false)}};
        EXPECT_THROW(node->setValues(values), HostException);
        EXPECT_THROW(graph->loadNode(tool(), values), HostException);
    }
    EXPECT_EQ(writeProject(*node), before);
    EXPECT_EQ(graph->getNodes().size(), 1U);
    graph->removeNode(node);
    std::size_t const nbSteps = graph->getHistory().getNbCommands();
    node->setValues({{"Adjust", Animated<bool>(false)}}); // leaves no record and does no harm
    EXPECT_EQ(graph->getHistory().getNbCommands(), nbSteps);
}

TEST_F(LoadedTool, MutedNodeGivesTheSource)
{
    auto const node = graph->createNode(tool());
    node->setValues({{"Linear.Output Level.Min.Red", Animated<double>(0.5)}});
    EXPECT_FALSE(render(*node) == picture.bytes);
    node->setValues({{"Mute", Animated<bool>(true)}});
    EXPECT_TRUE(render(*node) == picture.bytes);
}

} // namespace
