// Projects: nothing is lost on the way, and nothing of a damaged one is taken over.

#include "runtime/project/Project.h"

#include "runtime/loader/ToolLoader.h"
#include "support/Failures.h"
#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace {

struct ProjectTest : ::testing::Test {
    ProjectTest()
    {
        loader.load(REMAPCOLOR_LIBRARY);
        graph = makeShared<HostGraph>();
        node = graph->createNode(loader.getTool("Remap Color"));
    }
    ~ProjectTest() noexcept override = default;

    std::string failureOf(std::string const& text) const
    {
        return messageOf<ProjectError>([&] { readProject(text, *node); });
    }

    static std::string project(std::string const& values, std::string const& schema = "5")
    {
        return R"({"format": "remap-color-project", "version": 1, "tool": "Remap Color", "schema": )" +
               schema + R"(, "values": {)" + values + "}}";
    }

    ToolLoader loader;
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
};

TEST_F(ProjectTest, EveryKindOfValueSurvives)
{
    double const awkward = std::nextafter(0.1, 1.0);
    CurvePoints const first = {{-0.1F, 0}, {0, 0.1F}, {0.3F, 0}, {0.7F, 1}, {1, 1}, {1.1F, 1e-30F}};
    CurvePoints second = first;
    second[4].y = 0.3F;
    NodeValues const values = {
        {"Linear.Gamma.Red", Animated<double>(-0.0)},
        {"EXRDisplay.Exposure.Blue", Animated<double>({{-1.5, awkward}, {1e9, -9.0}})},
        {"Adjust", Animated<bool>({{1.0, true}, {2.0, false}})},
        {"Output Depth", Animated<int>(2)},
        {"Curve Display", Animated<int>(-2147483647 - 1)},
        {"Plot Color", Vector<double>{-0.25, 1e300, awkward}},
        {"Adjust Curve.Green", Animated<CurvePoints>({{1.0, first}, {5.0, second}})}};
    node->setValues(values);
    std::string const text = writeProject(*node);
    NodeValues const loaded = readProject(text, *graph->createNode(node->getTool()));
    for (auto const& [name, value] : values) {
        EXPECT_EQ(value, loaded.at(name)) << name;
    }
    EXPECT_TRUE(std::signbit(
        std::get<Animated<double>>(loaded.at("Linear.Gamma.Red")).evaluate(0.0).getValue()));
    EXPECT_EQ(node->getValues().size(), loaded.size());
}

TEST_F(ProjectTest, LeftOutValuesAreDefaults)
{
    RCShdPtr<HostNode> const loaded =
        graph->loadNode(node->getTool(), readProject(project(R"("Mode": "EXRDisplay")"), *node));
    node->setValues({{"Mode", Animated<int>(1)}});
    EXPECT_EQ(writeProject(*node), writeProject(*loaded));
}

TEST_F(ProjectTest, FailuresNameThePlace)
{
    struct Case {
        std::string text;
        char const* message;
    };
    std::vector<Case> const cases = {
        {"{", "not valid JSON"},
        {"[]", "no JSON object"},
        {"{}", "\"format\" is missing"},
        {project("", "4"), "\"schema\" is 4, not 5"},
        {project(R"("Mode": "EXRDisplay", "Mode": "Linear")"), "\"Mode\" stands there twice"},
        {project(R"("Moed": 1)"), "\"Moed\", which the tool does not have; did you mean \"Mode\"?"},
        {project(R"("EXRDisplay.Knee": 4)"),
         "\"EXRDisplay.Knee High\" or \"EXRDisplay.Knee Low\"?"},
        {project(R"("Linear.Gamma": 1)"), "such as \"Linear.Gamma.Red\""},
        {project(R"("Mode": "Log")"), "\"Mode\" must be one of \"Linear\", \"EXRDisplay\""},
        {project(R"("Adjust": 1)"), "\"Adjust\" must be true or false"},
        {project(R"("Linear.Gamma.Red": "2")"), "\"Linear.Gamma.Red\" must be a number"},
        {project(R"("EXRDisplay.Knee High.Red": 9)"), "3.5 to 7.5"},
        {project(R"("Linear.Gamma.Red": {"keys": [[1, 2], [1, 3]]})"), "times of keys must rise"},
        {project(R"("Linear.Gamma.Red": {"keys": [[1, 2], [2, "x"]]})"), "key 2"},
        {project(R"("Mode": {"keys": [[1, "Linear"]]})"), "cannot be animated"},
        {project(R"("Adjust Curve.Red": {"points": [[0, 0], [1, 1]]})"), "three points per key"},
        {project(R"("Adjust Curve.Red": {"points": [[0,0],[1,1],[1,1],[0,0],[0.5,0],[1,0]]})"),
         "runs back"},
        {project(R"("Adjust Curve.Red": {"points": [[0,0,1],[1,1,1],[2,2,1]]})"), "point"},
        {project(R"("Curve Display": 4294967296)"), "32 bits"},
        {project(R"("Curve Display": -2147483649)"), "32 bits"},
        {project(R"("Plot Color": [1, null])"), "list of finite numbers"},
        {project(R"("Plot Color": [1, 2])"), "takes 3 finite numbers, not 2"},
        {project(R"("Plot Color": [1, 2, "inf"])"), "list of finite numbers"},
        {project(R"("Mute": {"keys": [[1, true], [2, false]]})"), "cannot be animated"},
        {project(R"("Adjust Curve.Red": {"points": []})"), "has no key"},
        {project(R"("Adjust Curve.Red": {"points": [[0, 0], [1, 1], [2, 2]]})"), "x 1 alone"},
        {project(R"("Adjust Curve.Red": {"keys": [[1, {"points": []}]]})"), "has no key"},
    };
    std::string const before = writeProject(*node);
    for (Case const& bad : cases) {
        expectLineWith(bad.message, failureOf(bad.text));
    }
    for (auto const& [part, instead, message] :
         {std::array{"\"version\": 1", "\"version\": 2", "use a newer one"},
          std::array{"Remap Color", "Other", "\"tool\" is \"Other\""},
          std::array{"remap-color-project", "x", "\"format\""},
          std::array{"\"version\"", "\"extra\": 1, \"version\"", "\"extra\" is not part"},
          std::array{"\"values\": {}", "\"values\": []", "must be an object"}}) {
        std::string text = project("");
        text.replace(text.find(part), std::string(part).size(), instead);
        expectLineWith(message, failureOf(text));
    }
    EXPECT_EQ(before, writeProject(*node));
}

} // namespace
