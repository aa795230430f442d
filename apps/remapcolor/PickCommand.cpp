// "pick": one pixel of a picture through the tool, as a curve editor asks for it.

#include "remapcolor/PickCommand.h"

#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "controllerLink/ControllerLink.h"
#include "remapcolor/Failures.h"
#include "remapcolor/PickRequest.h"
#include "remapcolor/PickedPixel.h"
#include "remapcolor/StandardStreams.h"
#include "remapcolor/StopSignals.h"
#include "remapcolor/ToolKeys.h"
#include "remapcolor/ToolSession.h"
#include "runtime/engine/SourceImageNode.h"
#include "runtime/project/ProjectValues.h"
#include "runtime/values/NumberText.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;
using Pixel = CoRgbaColorTyped<float>;

constexpr std::chrono::milliseconds longestWait{50}; // until a signal is noticed

void stopIfAsked()
{
    if (StopSignals::getFlag()) {
        throw Interrupted{StopSignals::getSignal()};
    }
}

/// Waits for the event by which the result comes.
Pixel process(ControllerLink& link, PxTimeContext const& time, Pixel const& colour)
{
    std::optional<Pixel> answer;
    link.setPixelReceiver([&answer](Pixel const& result) { answer = result; });
    link.processSinglePixel(time, colour);
    EvEventManager& events = EvEventManager::getInstance();
    while (!answer.has_value()) {
        stopIfAsked();
        events.waitForEvents(longestWait);
        events.processEvents();
        auto const failures = events.takeFailures();
        if (!failures.empty()) {
            throw HostException(failures.front());
        }
    }
    link.setPixelReceiver({});
    return *answer;
}

/// The channels with their names, in order.
std::array<std::pair<char const*, float>, 4> nameChannels(Pixel const& pixel)
{
    return {
        {{"red", pixel.red}, {"green", pixel.green}, {"blue", pixel.blue}, {"alpha", pixel.alpha}}};
}

/// What is printed of a pick.
struct Pick {
    PickRequest const& request;
    std::string mode;
    Pixel in;
    Pixel out;
};

std::string formatLines(Pick const& pick)
{
    constexpr std::size_t labelWidth = 11;
    std::string text;
    auto const add = [&text](std::string const& label, std::string const& value) {
        text += label + std::string(labelWidth - label.size(), ' ') + value + "\n";
    };
    add("mode", pick.mode);
    add("time", formatNumber(pick.request.time));
    for (auto const& [side, pixel] : {std::pair("in.", pick.in), std::pair("out.", pick.out)}) {
        for (auto const& [name, value] : nameChannels(pixel)) {
            // The sign of a NaN is noise.
            add(std::string(side) + name, std::isnan(value) ? "nan" : formatNumber(value));
        }
    }
    return text;
}

Json toJson(Pixel const& pixel)
{
    Json json;
    for (auto const& [name, value] : nameChannels(pixel)) {
        json[name] = numberToJson(value);
    }
    return json;
}

std::string formatJson(Pick const& pick)
{
    Json const json = {{"input", pick.request.input.string()},
                       {"pixel", {pick.request.place->x, pick.request.place->y}},
                       {"mode", pick.mode},
                       {"time", pick.request.time},
                       {"in", toJson(pick.in)},
                       {"out", toJson(pick.out)}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace

void runPick(PickRequest const& request, Reporter& reporter)
{
    ToolSession session(request.node);
    HostNode& node = session.getNode();
    auto const link = session.linkController();

    StopSignals const signals;
    auto const source = openImage(request.input, {.layer = request.layer},
                                  [&reporter](std::string const& text) { reporter.note(text); });
    stopIfAsked();
    Pixel const in = readPixel(*source, *request.place, request.input.string());

    auto const start = makeNode<SourceImageNode>(source->getInfo());
    auto const chain = node.buildChain(PxNodePtr<PxImageProtocol const>(start));
    PxTimeContext const time(request.time);
    Pixel const out = node.finishPixel(time, in, process(*link, time, in));

    Pick const pick{request, valueToJson(*node.getValue(ToolKeys::mode)).get<std::string>(), in,
                    out};
    switch (request.form) {
    case PickRequest::Form::Lines: writeStandardOutput(formatLines(pick)); break;
    case PickRequest::Form::Json: writeStandardOutput(formatJson(pick)); break;
    }
}
