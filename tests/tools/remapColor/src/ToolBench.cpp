#include "ToolBench.h"

#include "base/EvEventManager.h"
#include "pluginAPI/PiToolInterface.h"
#include "pluginAPI/PxRequestMgr.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include <array>
#include <random>

using namespace memoryHost;
using reference::Mode;

namespace {

constexpr std::array<char const*, 3> channelNames = {"Red", "Green", "Blue"};
constexpr std::array<char const*, 5> linearNames = {
    "Input Level.Min", "Input Level.Max", "Output Level.Min", "Output Level.Max", "Gamma"};
constexpr std::array<char const*, 5> exrNames = {"Exposure", "Defog", "Knee High", "Knee Low",
                                                 "Gamma"};

struct Widget : PiWidget {
    explicit Widget(std::string widgetName) : name(std::move(widgetName)) {}
    std::string getName() const override { return name; }
    std::string name;
};

struct ResultHandler : RemapColorController::SinglePixelHandler {
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
    names.insert(names.end(), {"Output Depth", "Adjust Curve.Red", "Adjust Curve.Green",
                               "Adjust Curve.Blue", "Adjust"});
    return names;
}

FakeInputs::FakeInputs(Journal& nodeJournal) : journal(nodeJournal)
{
    set<int>("Output Depth", 3);
    setParams({});
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
    dynamic_cast<FakeValidity&>(*nodes.at(name)).validity = validity;
}

void FakeInputs::setParams(reference::ChainParams const& params)
{
    set<int>("Mode", static_cast<int>(params.mode));
    set<bool>("Adjust", params.adjust);
    set<bool>("Linear.Clamp", params.clamp);
    for (int channel = 0; channel < 3; ++channel) {
        set<Shape>(std::string("Adjust Curve.") + channelNames.at(channel),
                   makeShape(params.curves.at(channel)));
        for (int param = 0; param < 5; ++param) {
            set<double>(getParamInputName(Mode::Linear, param, channel),
                        params.linear.at(channel).at(param));
            set<double>(getParamInputName(Mode::ExrDisplay, param, channel),
                        params.exr.at(channel).at(param));
        }
    }
}

PiUserInterface::InstanceData openWidget(PiNodeController& controller, std::string const& name)
{
    return dynamic_cast<PiUserInterface&>(controller)
        .createWidgetInstanceData(makeShared<Widget>(name), makeShared<PiTimePath>());
}

RemapColorController& showController(PiNodeController& controller)
{
    static RemapColorController* shown = nullptr;
    shown = nullptr;
    openWidget(controller, "_mainContainer");
    if (shown == nullptr) { // the first time, and when the makers were cleared
        RemapColorController::addInstanceDataFactory(
            [](auto const&, RemapColorController& owner, auto const&) {
                shown = &owner;
                return PiUserInterface::InstanceData();
            });
        openWidget(controller, "_mainContainer");
    }
    return *shown;
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

void ToolBench::loseNode()
{
    chain = {};
    if (!node.isNull()) {
        graph->removeNode(node);
    }
    node = {};
}

Journal ToolBench::takeDown()
{
    journal.clear();
    inputs.nodes.clear();
    source = {};
    loseNode();
    // A request that has delivered its result may still be under way, and holds the chain.
    PxRequestMgr::getInstance().shutDown();
    EvEventManager::getInstance().discardEvents();
    return journal;
}

RemapColorController& ToolBench::getController()
{
    return showController(*node->getController().lock());
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

Picture ToolBench::computePicture(double time) const
{
    return readTile(compute(time).getTileGuard().getTile());
}

Pixels ToolBench::transform(reference::ChainParams const& params, Pixels const& pixels)
{
    inputs.setParams(params);
    setPicture(Picture(pixels));
    if (chain.isNull()) {
        buildChain();
    }
    Pixels results = computePicture().getPixels();
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
        ASSERT_TRUE(reference::isChainResult(expected, pixels[pixel], results[pixel]));
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
    static std::vector<float> const wildValues = reference::standardValues();
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
