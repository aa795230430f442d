// The life of a plug-in and its nodes, by the host's own operations only.

#include "base/HostException.h"
#include "base/InBuildInfo.h"
#include "base/InPackageInit.h"
#include "runtime/loader/ToolLoader.h"
#include "runtime/project/Project.h"
#include "support/InMemoryHost.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

namespace {

using namespace memoryHost;

struct PluginLifeTest : ::testing::Test {
    PluginLifeTest() { loader.load(REMAPCOLOR_LIBRARY); }
    ~PluginLifeTest() noexcept override = default;

    PiToolProtocol const& tool() const { return loader.getTool("Remap Color"); }
    std::vector<std::byte> render(HostNode& node) const
    {
        return renderPicture(node, Picture(reference::standardPixels())).bytes;
    }

    ToolLoader loader;
};

TEST_F(PluginLifeTest, NewNodeHasNothingToUndoAndResetCanBeUndone)
{
    auto const graph = makeShared<HostGraph>();
    auto const node = graph->createNode(tool());
    auto const other = graph->createNode(tool());
    EXPECT_FALSE(graph->getHistory().canUndo());
    EXPECT_EQ(*node->getValue("Affect")->getState(), ValueState(Animated<int>(2)));

    auto const fresh = render(*node);
    CurvePoints const flat{{-1, 0.5F}, {0, 0.5F}, {0.3F, 0.5F}, {0.6F, 0.5F}, {1, 0.5F}, {2, 0.5F}};
    node->setValues({{"Adjust Curve.Green", Animated<CurvePoints>(flat)}});
    auto const shaped = render(*node);
    std::string const saved = writeProject(*node);
    castStrong<PiToolInterface>(node->getController().lock())->reset();
    EXPECT_TRUE(render(*node) == fresh);
    graph->getHistory().undo();
    EXPECT_TRUE(render(*node) == shaped);
    graph->getHistory().redo();
    EXPECT_TRUE(render(*node) == fresh);

    auto const restored = graph->loadNode(tool(), readProject(saved, *node));
    graph->removeNode(node);
    EXPECT_TRUE(render(*restored) == shaped);
    EXPECT_TRUE(render(*other) == fresh);
}

TEST_F(PluginLifeTest, PackagesCanBeStartedAgain)
{
    InPackageRegistry& packages = InPackageRegistry::getInstance();
    packages.shutDownPackages();
    EXPECT_THROW(tool(), ToolLoadError);
    packages.startPackages(false);
    EXPECT_EQ(InBuildInfoUtil::getInfos().size(), 1U);
    auto const graph = makeShared<HostGraph>();
    auto const state = graph->createNode(tool())->getValue("Adjust Curve.Red")->getState();
    EXPECT_EQ(std::get<Animated<CurvePoints>>(*state).getKeys().front().value.size(), 9U);
}

/// Announced as by a second library of the tool.
class SecondPackage : public InPackageInit {
public:
    SecondPackage() : InPackageInit("remapColorVxtool") { registerPackage(); }
    void startUp() override { FAIL(); }
};

TEST_F(PluginLifeTest, PackageOfANameThatIsTakenIsRefusedAndForgotten)
{
    SecondPackage const second;
    EXPECT_THROW(InPackageRegistry::getInstance().startPackages(false), AssertionFailure);
    EXPECT_NO_THROW(InPackageRegistry::getInstance().startPackages(false));
    EXPECT_NO_THROW(makeShared<HostGraph>()->createNode(tool()));
}

} // namespace
