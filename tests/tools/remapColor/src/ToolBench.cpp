#include "ToolBench.h"

#include "base/EvEventManager.h"
#include "pluginAPI/PiToolInterface.h"
#include "pluginAPI/PxRequestMgr.h"
#include "support/PixelMatcher.h"

#include <array>
#include <limits>
#include <random>

using namespace memoryHost;
using reference::ChannelParams;
using reference::Mode;

namespace {

constexpr std::array<char const*, 3> channelNames = {"Red", "Green", "Blue"};
constexpr std::array<char const*, 5> linearNames = {
    "Input Level.Min", "Input Level.Max", "Output Level.Min", "Output Level.Max", "Gamma"};
constexpr std::array<char const*, 5> exrNames = {"Exposure", "Defog", "Knee High", "Knee Low",
                                                 "Gamma"};
constexpr std::chrono::seconds longestWait{20};

class MainContainer : public PiWidget {
public:
    std::string getName() const override { return "_mainContainer"; }
};

RemapColorController* announcedController = nullptr;

PiUserInterface::InstanceData announce(RCShdPtr<PiWidget> const&, RemapColorController& controller,
                                       RCShdPtr<PiTimePath const> const&)
{
    announcedController = &controller;
    return {};
}

class ResultHandler : public RemapColorController::SinglePixelHandler {
public:
    using RemapColorController::SinglePixelHandler::call;
    void call(CoRgbaColorTyped<float>& colour) override
    {
        result = {colour.red, colour.green, colour.blue, colour.alpha};
    }
    std::optional<reference::Pixel> result;
};

/// Evenly spread numbers that depend on the seed alone.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : words(seed) {}
    float between(float low, float high)
    {
        auto const share = static_cast<float>(words() >> 8U) * 0x1p-24F;
        return low + (high - low) * share;
    }
    std::size_t below(std::size_t end) { return words() % end; }

private:
    std::mt19937 words;
};

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr std::array wildValues{0.0F,
                                -0.0F,
                                1e-30F,
                                -1e-30F,
                                0x1p-149F,
                                1e-7F,
                                0.999999F,
                                1.0F,
                                2.2F,
                                -1.0F,
                                1.000001F,
                                1e10F,
                                -1e10F,
                                3e38F,
                                infinity,
                                -infinity,
                                std::numeric_limits<float>::quiet_NaN()};

} // namespace

std::string getParamInputName(Mode mode, int param, int channel)
{
    std::string const name = mode == Mode::Linear ? std::string("Linear.") + linearNames.at(param)
                                                  : std::string("EXRDisplay.") + exrNames.at(param);
    return name + "." + channelNames.at(channel);
}

std::vector<std::string> getInputNamesInOrder(Mode mode)
{
    std::vector<std::string> names;
    for (int input = 0; input < 15; ++input) {
        names.push_back(getParamInputName(mode, input / 3, input % 3));
    }
    if (mode == Mode::Linear) {
        names.emplace_back("Linear.Clamp");
    }
    for (char const* const name : {"Output Depth", "Adjust Curve.Red", "Adjust Curve.Green",
                                   "Adjust Curve.Blue", "Adjust"}) {
        names.emplace_back(name);
    }
    return names;
}

FakeInputs::FakeInputs(Journal& nodeJournal) : journal(nodeJournal)
{
    add<int>("Mode", 0);
    add<int>("Output Depth", 3);
    add<bool>("Adjust", true);
    add<bool>("Linear.Clamp", false);
    for (int channel = 0; channel < 3; ++channel) {
        std::string const name = std::string("Adjust Curve.") + channelNames.at(channel);
        nodes[name] =
            PxStrongHndl<>(makeNode<FakeShapeNode>(name, RCPvtEngPtr<PmShape2d>(), journal).get());
        for (int param = 0; param < 5; ++param) {
            add<double>(getParamInputName(Mode::Linear, param, channel), 0.0);
            add<double>(getParamInputName(Mode::ExrDisplay, param, channel), 0.0);
        }
    }
    setParams({});
}

template <typename T>
void FakeInputs::add(std::string const& name, T constant)
{
    nodes[name] = PxStrongHndl<>(makeNode<FakeValueNode<T>>(name, constant, journal).get());
}

PxStrongHndl<> FakeInputs::getInputNode(std::string const& name)
{
    journal.push_back("ask " + name);
    return nodes.at(name);
}

PxStrongHndl<> FakeInputs::getInputNode(RCShdPtr<PiInput const> const& input)
{
    return getInputNode(input->getName());
}

void FakeInputs::setValidity(std::string const& name, PxValidityInterval const& validity)
{
    if (name.starts_with("Adjust Curve")) {
        curve(name).validity = validity;
    } else if (name == "Mode" || name == "Output Depth") {
        value<int>(name).validity = validity;
    } else if (name == "Adjust" || name == "Linear.Clamp") {
        value<bool>(name).validity = validity;
    } else {
        value<double>(name).validity = validity;
    }
}

void FakeInputs::setParams(reference::ChainParams const& params)
{
    set<int>("Mode", static_cast<int>(params.mode));
    set<bool>("Adjust", params.adjust);
    set<bool>("Linear.Clamp", params.clamp);
    for (int channel = 0; channel < 3; ++channel) {
        auto const shape = makeShape(params.curves.at(channel));
        curve(std::string("Adjust Curve.") + channelNames.at(channel)).valueAt = [shape](double) {
            return shape;
        };
        for (int param = 0; param < 5; ++param) {
            set<double>(getParamInputName(Mode::Linear, param, channel),
                        params.linear.at(channel).at(param));
            set<double>(getParamInputName(Mode::ExrDisplay, param, channel),
                        params.exr.at(channel).at(param));
        }
    }
}

ToolBench::ToolBench()
    : inputs(journal), source(makeNode<FakeSource>(journal)), graph(makeShared<HostGraph>()),
      node(createToolNode(*graph, "Remap Color"))
{
    journal.clear();
}

ToolBench::~ToolBench()
{
    takeDown();
}

Journal ToolBench::takeDown()
{
    journal.clear();
    inputs.clear();
    source = {};
    chain = {};
    graph->removeNode(node);
    node = {};
    // A request that has delivered its result may still be under way, and holds the chain.
    PxRequestMgr::getInstance().shutDown();
    EvEventManager::getInstance().discardEvents();
    return journal;
}

RemapColorController& ToolBench::getController()
{
    return findController(*node);
}

RemapColorController& findController(HostNode& node)
{
    [[maybe_unused]] static bool const isInstalled = [] {
        RemapColorController::addInstanceDataFactory(&announce);
        return true;
    }();
    auto const panel = castStrong<PiUserInterface>(node.getController().lock());
    panel->createWidgetInstanceData(makeShared<MainContainer>(), {});
    return *announcedController;
}

PxImageProtocol const& ToolBench::buildChain()
{
    auto const tool = castStrong<PiToolInterface>(node->getController().lock());
    PxStrongHndl<PxNode const> output;
    tool->createModifierProcNode(output, inputs, PxNodePtr<PxImageProtocol const>(source.get()));
    chain = castNode<PxImageProtocol const>(output);
    return *chain;
}

PxImageProtocol const& ToolBench::getModeNode(Mode mode) const
{
    constexpr std::size_t firstModeNode = 3;
    return dynamic_cast<PxImageProtocol const&>(
        *chain->getChildren().at(firstModeNode + static_cast<std::size_t>(mode)));
}

PxImageResult ToolBench::compute(double time) const
{
    return computeTile(*chain, region, time);
}

Pixels ToolBench::transform(reference::ChainParams const& params, Pixels const& pixels)
{
    inputs.setParams(params);
    setPicture(Picture(pixels));
    if (chain.isNull()) {
        buildChain();
    }
    Pixels results = readTile(compute().getTileGuard().getTile()).getPixels();
    results.resize(pixels.size());
    return results;
}

std::optional<reference::Pixel> ToolBench::pick(reference::Pixel const& pixel, double time)
{
    ResultHandler handler;
    RemapColorController& controller = getController();
    controller.addSinglePixelProcessCallback(&handler);
    controller.processSinglePixel(PxTimeContext(time), {pixel.r, pixel.g, pixel.b, pixel.a});
    EvEventManager& events = EvEventManager::getInstance();
    failures.clear();
    // The end of an earlier request may come as an event too.
    while (!handler.result && failures.empty() && events.waitForEvents(longestWait)) {
        events.processEvents();
        failures = events.takeFailures();
    }
    return handler.result;
}

void ToolBench::setPicture(Picture const& picture)
{
    region = picture.window;
    source->setPicture(picture);
}

void expectReference(ToolBench& bench, reference::ChainParams const& params, Pixels const& pixels)
{
    Pixels const results = bench.transform(params, pixels);
    reference::Chain const expected(params);
    for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel) {
        ASSERT_TRUE(reference::samePixelBits(expected.transform(pixels[pixel]), results[pixel]))
            << "of " << reference::describe(pixels[pixel]);
    }
}

reference::ControlPoints makeRandomCurve(std::uint32_t seed)
{
    Dice dice(seed);
    reference::ControlPoints points;
    float x = dice.between(-0.5F, 0.3F);
    std::size_t const nbKeys = 1 + dice.below(6);
    for (std::size_t key = 0; key < nbKeys; ++key) {
        float const y = dice.between(-0.5F, 1.5F);
        // Some handles run back, some lie on their key.
        float const reach = dice.below(8) == 0 ? 0.0F : dice.between(-0.1F, 0.6F);
        points.push_back({x - reach, y + dice.between(-0.3F, 0.3F) * reach});
        points.push_back({x, y});
        points.push_back({x + reach, y + dice.between(-0.3F, 0.3F) * reach});
        x += dice.below(6) == 0 ? 0.0F : dice.between(0.0F, 0.6F); // now and then a step
    }
    return points;
}

reference::ChainParams makeRandomParams(std::uint32_t seed, Draw draw)
{
    Dice dice(seed);
    reference::ChainParams params;
    params.mode = dice.below(2) == 0 ? Mode::Linear : Mode::ExrDisplay;
    params.clamp = dice.below(2) == 0;
    params.adjust = dice.below(4) != 0;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        params.linear[channel] = {dice.between(-0.2F, 0.4F), dice.between(0.3F, 2.0F),
                                  dice.between(-0.3F, 0.3F), dice.between(0.1F, 2.0F),
                                  dice.between(-0.2F, 3.0F)};
        params.exr[channel] = {dice.between(-10, 10), dice.between(0, 0.3F),
                               dice.between(3.5F, 7.5F), dice.between(-3, 3),
                               dice.between(-0.2F, 3.0F)};
        if (draw == Draw::Wild) {
            params.linear[channel][dice.below(5)] = wildValues.at(dice.below(wildValues.size()));
            params.exr[channel][dice.below(5)] = wildValues.at(dice.below(wildValues.size()));
        }
        params.curves[channel] = makeRandomCurve(seed * 3 + static_cast<std::uint32_t>(channel));
    }
    return params;
}
