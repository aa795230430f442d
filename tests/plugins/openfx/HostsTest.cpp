#include "BundleTest.h"

#include <dlfcn.h>
#include <thread>

namespace {

namespace Prop = OfxText::Prop;
namespace Depth = OfxText::Depth;
namespace Components = OfxText::Components;
namespace Action = OfxText::Action;

class BundleInHosts : public BundleTest {
protected:
    OfxStatus ask(char const* action, OfxImageEffect& effect)
    {
        answer = {};
        OfxPropertySet in;
        in.values[Prop::time] = {0.0};
        return host->call(action, &effect, &in, &answer);
    }

    OfxPropertySet answer;
};

TEST_F(BundleInHosts, TheOutputGetsTheChosenDepthOrTheUserIsTold)
{
    struct Case {
        char const* name;
        OfxTestHost::Traits traits;
        int choice;
        std::string expected; ///< empty: left alone
        bool isTold;
    };
    std::vector<std::string> const noHalf = {Depth::byte, Depth::single};
    for (auto const& [name, traits, choice, expected, isTold] :
         {Case{"input", {}, 3, "", false}, Case{"8 bit", {}, 0, Depth::byte, false},
          Case{"half", {}, 1, Depth::half, false}, Case{"float", {}, 2, Depth::single, false},
          Case{"no half", {.depths = noHalf}, 1, Depth::single, true},
          Case{"no list", {.depths = {}}, 1, Depth::single, true},
          Case{"one depth", {.takesDepths = false}, 0, "", true},
          Case{"float alone", {.depths = {Depth::single}}, 0, "", true}}) {
        load(traits);
        OfxImageEffect& effect = host->createInstance();
        effect.param("outputDepth").value = choice;
        for (int time = 0; time < 3; ++time) {
            bool const isChanged = ask(Action::getClipPreferences, effect) == OfxStat::ok;
            EXPECT_EQ(isChanged, !expected.empty()) << name;
        }
        EXPECT_EQ(answer.get<std::string>(Prop::clipDepthOutput), expected) << name;
        EXPECT_EQ(host->messages.size(), isTold ? 1 : 0) << name;
        host.reset();
    }
    load();
    OfxImageEffect& effect = host->createInstance();
    effect.param("outputDepth").value = 0;
    answer.refused = {Prop::clipDepthOutput};
    OfxPropertySet in;
    EXPECT_EQ(host->call(Action::getClipPreferences, &effect, &in, &answer), OfxStat::replyDefault);
    EXPECT_EQ(host->messages.size(), 1);
}

TEST_F(BundleInHosts, OnlyASourceThatComesOutInEveryBitIsPassedThrough)
{
    load();
    OfxTestImage source = makePicture({});
    OfxTestImage output(source.layout);
    OfxImageEffect& effect = makeEffect(&source, &output);
    EXPECT_EQ(ask(Action::isIdentity, effect), OfxStat::replyDefault);
    effect.param("mix").value = 0.0;
    EXPECT_EQ(ask(Action::isIdentity, effect), OfxStat::ok);
    EXPECT_EQ(answer.get<std::string>(Prop::name), "Source");
    EXPECT_EQ(renderAll(effect, output), source.read());
    effect.clip("Output").properties.values[Prop::components] = {std::string(Components::rgb)};
    EXPECT_EQ(ask(Action::isIdentity, effect), OfxStat::replyDefault);
    effect.clip("Output").properties.values[Prop::components] = {std::string(Components::rgba)};
    effect.clip("Output").properties.values[Prop::pixelDepth] = {std::string(Depth::half)};
    EXPECT_EQ(ask(Action::isIdentity, effect), OfxStat::replyDefault);
}

TEST_F(BundleInHosts, ActionsInAnyOrderGetAStatus)
{
    load();
    OfxImageEffect& effect = host->createInstance();
    effect.properties.values.erase(Prop::instanceData);
    OfxImageEffect stranger;
    int nowhere = 0;
    stranger.properties.values[Prop::instanceData] = {static_cast<void*>(&nowhere)};
    for (char const* const action : {Action::render, Action::isIdentity, Action::getClipPreferences,
                                     Action::instanceChanged}) {
        EXPECT_EQ(ask(action, effect), OfxStat::failed) << action;
        EXPECT_EQ(ask(action, stranger), OfxStat::failed) << action;
        EXPECT_EQ(host->call(action, nullptr), OfxStat::failed) << action;
    }
    EXPECT_EQ(host->call(Action::destroyInstance, &stranger), OfxStat::ok);
    EXPECT_EQ(host->call("OfxActionPurgeCaches", &effect), OfxStat::replyDefault);
    EXPECT_EQ(host->call(Action::load, nullptr), OfxStat::ok);
    OfxImageEffect other;
    OfxPropertySet in;
    in.values[Prop::context] = {std::string("OfxImageEffectContextPaint")};
    EXPECT_EQ(host->call(Action::describeInContext, &other, &in), OfxStat::unsupported);
    // No clips, no parameters.
    EXPECT_EQ(host->call(Action::createInstance, &other), OfxStat::failed);
    EXPECT_EQ(host->call(Action::unload, nullptr), OfxStat::ok);
    EXPECT_EQ(ask(Action::render, effect), OfxStat::failed);
    EXPECT_EQ(host->call(Action::describe, &other), OfxStat::failed);
}

TEST_F(BundleInHosts, HostsMayLackWhatIsNotNeeded)
{
    OfxTestImage source = makePicture({});
    Look const& look = allLooks()[2];
    Bytes const expected = renderNative(look, source, 3);
    for (OfxTestHost::Traits const& traits :
         {OfxTestHost::Traits{.hasCurves = false, .hasThreads = false, .hasMessages = false},
          OfxTestHost::Traits{.hasNullMessages = true, .depths = {}}}) {
        load(traits);
        OfxImageEffect& described = host->getContext(OfxText::Context::general);
        described.clips.erase("Mask");
        std::erase_if(described.params.params,
                      [](auto const& param) { return param->name == "unpremult"; });
        OfxTestImage output(source.layout);
        OfxImageEffect& effect = makeEffect(&source, &output, OfxText::Context::general);
        host->notifyEdited(effect, "unpremult");
        apply(look, effect);
        EXPECT_EQ(renderAll(effect, output), expected);
        effect.param("outputDepth").value = 1;
        ask(Action::getClipPreferences, effect); // says something to nobody
        effect.param("linearGammaBlue").value = std::numeric_limits<double>::quiet_NaN();
        EXPECT_EQ(host->render(effect, output.layout.bounds), OfxStat::ok);
        host.reset();
    }
}

TEST_F(BundleInHosts, ManyRendersAtOnceWhileAnInstanceIsEdited)
{
    load();
    OfxTestImage source = makePicture({.bounds = {0, 0, 64, 64}});
    OfxTestImage first(source.layout);
    OfxTestImage second(source.layout);
    std::vector<OfxImageEffect*> effects;
    std::vector<Bytes> expected;
    for (int index = 0; index < 2; ++index) {
        Look const& look = allLooks()[index == 0 ? 2 : 4];
        effects.push_back(&makeEffect(&source, index == 0 ? &first : &second));
        apply(look, *effects.back());
        expected.push_back(renderNative(look, source, 3));
    }
    OfxImageEffect& edited = host->createInstance();

    constexpr int nbTiles = 16;
    constexpr int tileRows = 64 / nbTiles;
    std::atomic<int> nbRunning = 4;
    auto const renderTiles = [&](OfxImageEffect& effect, int from) {
        for (int tile = from; tile < nbTiles; tile += 2) {
            OfxRectI const window{0, tile * tileRows, 64, (tile + 1) * tileRows};
            EXPECT_EQ(host->render(effect, window), OfxStat::ok);
        }
        --nbRunning;
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back(renderTiles, std::ref(*effects[thread / 2]), thread % 2);
    }
    double value = 0.0;
    do {
        host->edit(edited, "exrDisplayExposureRed", value += 0.01);
        host->destroyInstance(host->createInstance());
    } while (nbRunning > 0);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(first.read(), expected[0]);
    EXPECT_EQ(second.read(), expected[1]);
    EXPECT_EQ(host->nbLentImages, 0);
}

TEST_F(BundleInHosts, LoadingAndUnloadingLeavesNothing)
{
    OfxTestImage source = makePicture({});
    Bytes expected;
    for (int time = 0; time < 100; ++time) {
        load();
        OfxTestImage output(source.layout);
        OfxImageEffect& effect = makeEffect(&source, &output);
        apply(allLooks()[4], effect);
        Bytes const result = renderAll(effect, output);
        expected = time == 0 ? result : expected;
        ASSERT_EQ(result, expected) << time;
        host.reset();
    }
}

TEST(BundleLibrary, OneEffectInTheStandardsVersionIsOffered)
{
    void* const library = dlopen(OFX_BUNDLE, RTLD_LAZY | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto const count = reinterpret_cast<int (*)()>(dlsym(library, "OfxGetNumberOfPlugins"));
    auto const get = reinterpret_cast<OfxPlugin* (*)(int)>(dlsym(library, "OfxGetPlugin"));
    auto const set = reinterpret_cast<OfxStatus (*)(OfxHost const*)>(dlsym(library, "OfxSetHost"));
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(get(1), nullptr);
    EXPECT_EQ(get(-1), nullptr);
    EXPECT_EQ(set(nullptr), OfxStat::failed);
    OfxPlugin const& plugin = *get(0);
    EXPECT_STREQ(plugin.pluginApi, "OfxImageEffectPluginAPI");
    EXPECT_EQ(plugin.apiVersion, 1);
    EXPECT_STREQ(plugin.pluginIdentifier, "org.remapcolor.RemapColor");
    EXPECT_EQ(plugin.pluginVersionMajor, 1U);

    // Without a host, and with one that has no suites.
    EXPECT_EQ(plugin.mainEntry(Action::describe, nullptr, nullptr, nullptr), OfxStat::failed);
    OfxHost poor{nullptr, [](OfxPropertySet*, char const*, int) -> void const* { return nullptr; }};
    plugin.setHost(&poor);
    EXPECT_EQ(plugin.mainEntry(Action::load, nullptr, nullptr, nullptr),
              OfxStat::missingHostFeature);
    EXPECT_EQ(plugin.mainEntry(Action::unload, nullptr, nullptr, nullptr), OfxStat::ok);
    EXPECT_EQ(plugin.mainEntry(nullptr, nullptr, nullptr, nullptr), OfxStat::failed);
    dlclose(library);
}

} // namespace
