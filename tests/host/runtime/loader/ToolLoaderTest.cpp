// Tools loaded as plug-ins at run time.

#include "runtime/loader/ToolLoader.h"

#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

namespace {

using namespace memoryHost;

constexpr char const* toolLibrary = "libVXremapColor.vxtool";

std::string getFailure(std::function<void()> const& call)
{
    try {
        call();
    } catch (ToolLoadError const& error) {
        return error.what();
    }
    return "";
}

TEST(ToolLoaderTest, LoadedToolMakesNodesAndIsGoneAfterwards)
{
    for (int round = 0; round < 2; ++round) {
        ToolLoader loader;
        loader.find(toolLibrary);
        auto const graph = makeShared<HostGraph>();
        auto const node = graph->createNode(loader.getTool("Remap Color"));
        Picture result = renderPicture(*node, Picture(Pixels(16, {0.25F, 0.5F, 2.0F, 0.5F})));
        EXPECT_EQ(result.getPixels()[3].b, 2.0F);
    }
    EXPECT_EQ(PiToolRegistry::getInstance().find("Remap Color"), nullptr);
}

TEST(ToolLoaderTest, SaysWhatCannotBeLoadedAndWhy)
{
    ToolLoader loader;
    EXPECT_EQ(getFailure([&] { loader.load("./missing.vxtool"); }),
              "cannot use the tool library ./missing.vxtool: cannot open shared object file: No "
              "such file or directory");
    // Loaded already, and no tool.
    EXPECT_EQ(getFailure([&] { loader.load("libVXprimitives.so"); }),
              "cannot use the tool library libVXprimitives.so: it announces no package to the host");
    EXPECT_EQ(getFailure([&] { loader.getTool("Nothing"); }),
              "no loaded library offers the tool \"Nothing\"");
    EXPECT_NE(getFailure([&] { loader.find("nothing.vxtool"); }).find("set VX_TOOL_PATH"),
              std::string::npos);
}

} // namespace
