// "pick": pixels and areas of a picture through the tool; pixels as a curve editor asks for them.

#include "remapcolor/commands/PickCommand.h"

#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "callbacks/CbFunction.h"
#include "controllerLink/ControllerLink.h"
#include "media/ImageFiles.h"
#include "pluginAPI/IxSampleConversion.h"
#include "remapcolor/commands/PickText.h"
#include "remapcolor/commands/PickedPixel.h"
#include "remapcolor/options/PickRequest.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/session/LookNotes.h"
#include "remapcolor/session/MaskFile.h"
#include "remapcolor/session/RequestedSession.h"
#include "remapcolor/session/StandardInput.h"
#include "remapcolor/session/StopSignals.h"
#include "runtime/graph/FinishedPixel.h"
#include "runtime/graph/MaskNode.h"
#include "runtime/project/ProjectValues.h"
#include "session/Failures.h"
#include "session/ToolKeys.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr std::chrono::milliseconds longestWait{50}; // until a signal is noticed

/// Waits for the event by which the answer comes.
Pixel process(ControllerLink& link, PxTimeContext const& time, Pixel const& colour)
{
    std::optional<PickAnswer> answer;
    CbFunction<PickAnswer const> handler([&answer](PickAnswer const& told) { answer = told; });
    link.addPickHandler(&handler);
    link.processSinglePixel(time, colour);
    EvEventManager& events = EvEventManager::getInstance();
    while (!answer.has_value()) {
        StopSignals::throwIfAsked();
        events.waitForEvents(longestWait);
        events.processEvents();
    }
    if (answer->outcome != PickAnswer::Done) {
        throw HostException(answer->failure);
    }
    return answer->result;
}

/// Throws UsageError unless the picture has pixels at the place; says where it has not all of them.
GeRectangle<int> findBounds(PickPlace const& place, GeRectangle<int> const& window,
                            std::string const& name, Reporter& reporter)
{
    using Wide = std::int64_t; // the far edge may be beyond the integers
    auto const end = [](int begin, int size, int edge) {
        return static_cast<int>(std::min<Wide>(Wide{begin} + size, edge));
    };
    GeRectangle<int> const bounds{std::max(place.x, window.x0), std::max(place.y, window.y0),
                                  end(place.x, place.width, window.x1),
                                  end(place.y, place.height, window.y1)};
    bool const isEmpty = bounds.x0 >= bounds.x1 || bounds.y0 >= bounds.y1;
    if (isEmpty) {
        throw UsageError("there is no pixel " + formatPlace(place) + " in " + quote(name) +
                         ", which goes from " + std::to_string(window.x0) + "," +
                         std::to_string(window.y0) + " to " + std::to_string(window.x1 - 1) + "," +
                         std::to_string(window.y1 - 1));
    }
    if (bounds.getWidth() != place.width || bounds.getHeight() != place.height) {
        reporter.note(
            "of the area " + formatPlace(place) + ", " + quote(name) + " has pixels in " +
            formatPlace({bounds.x0, bounds.y0, bounds.getWidth(), bounds.getHeight(), true}) +
            " only");
    }
    return bounds;
}

/// Everything that picks of one picture share.
class Picker {
public:
    Picker(PickRequest const& pickRequest, Reporter& pickReporter)
        : request(pickRequest), reporter(pickReporter), session(request.node),
          node(session.getNode()), time(chooseTime(node, request.frame, request.input)),
          link(session.linkController())
    {
        reportLook(node, {time}, reporter);
        // What "render --depth 32" gives, whatever a project says.
        node.setValues({{ToolKeys::outputDepth, Animated<int>(ToolKeys::depth32)}});
        source = openImage(request.input, request.read);
        maskSource = openMask(request.mask, source->getInfo(), reporter);
        if (maskSource != nullptr) {
            mask.node = makeNode<MaskImageNode>(maskSource->getInfo(), request.mask.use);
            mask.feed = &feed.emplace(*mask.node, *maskSource);
        }
        start = makeNode<SourceImageNode>(source->getInfo());
        chain = node.buildChain(PxNodePtr<PxImageProtocol const>(start));
    }

    Picks pickAll()
    {
        Picks picks{request.input.string(),
                    valueToJson(*node.getValue(ToolKeys::mode)).get<std::string>(),
                    time,
                    {}};
        std::vector<GeRectangle<int>> areas;
        for (PickPlace const& place : request.places) {
            areas.push_back(findBounds(place, source->getInfo().dataWindow, picks.input, reporter));
        }
        for (std::size_t index = 0; index < areas.size(); ++index) {
            StopSignals::throwIfAsked();
            PickPlace const& place = request.places[index];
            picks.results.push_back(place.isArea ? pickOneArea(place, areas[index])
                                                 : pickPixel(place));
        }
        return picks;
    }

private:
    PickResult pickPixel(PickPlace const& place)
    {
        Pixel const in = readPixel(*source, place.x, place.y);
        Pixel const processed = process(*link, PxTimeContext(time), in);
        return {place, PickedPixel{in, finishMaskedPixel(node, PxTimeContext(time), in, processed,
                                                         findMaskShare(place))}};
    }

    PickResult pickOneArea(PickPlace const& place, GeRectangle<int> const& area)
    {
        PickPlace const held{area.x0, area.y0, area.getWidth(), area.getHeight(), place.isArea};
        return {held, AreaPicker(node, *source, mask).pick(area, time, StopSignals::throwIfAsked)};
    }

    /// 1 without a mask.
    float findMaskShare(PickPlace const& place)
    {
        if (mask.feed == nullptr) {
            return 1.0F;
        }
        IxTile const tile = mask.feed->read({place.x, place.y, place.x + 1, place.y + 1});
        Pixel pixel{}; // outside of the mask
        IxPixelFormat const& format = maskSource->getInfo().format;
        if (!tile.isNull()) {
            readPixelRow(format, IxReadGuard(tile).getRow(place.y), std::span(&pixel, 1));
        } else {
            return maskShareOf(pixel, IxPixelFormat::ALPHA, request.mask.use);
        }
        return maskShareOf(pixel, format.getComponents(), request.mask.use);
    }

    PickRequest const& request;
    Reporter& reporter;
    RequestedSession session;
    HostNode& node;
    double time;
    RCShdPtr<ControllerLink> link;
    std::unique_ptr<ImageSource> source;
    std::unique_ptr<ImageSource> maskSource;
    ChainMask mask;
    std::optional<MaskFeed> feed;
    PxNodePtr<SourceImageNode> start;
    PxStrongHndl<PxNode const> chain; ///< without it, the controller has nothing to ask
};

} // namespace

void runPick(PickRequest const& request, Reporter& reporter)
{
    StopSignals const signals;
    refuseTerminal({request.input, request.mask.file.value_or("")});
    Picker picker(request, reporter);
    Picks const picks = picker.pickAll();
    switch (request.form) {
    case PickRequest::Form::Lines: writeStandardOutput(formatLines(picks)); break;
    case PickRequest::Form::Json: writeStandardOutput(formatJson(picks)); break;
    }
}
