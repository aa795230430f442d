// A look for hosts of the OpenFX plug-in.

#include "remapcolor/commands/OpenFxLook.h"

#include "openfx/ParamNames.h"
#include "pluginAPI/PiImageModifier.h"
#include "runtime/curves/CurveSetText.h"
#include "session/Failures.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <variant>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;

/// The plug-in's parameter behind a value; empty if it has none.
std::string findParam(HostNode::ValueSlot const& slot)
{
    if (!slot.isStored) {
        return openFxNames::fromInput(slot.name);
    }
    for (openFxNames::Link const& link : openFxNames::links) {
        if (slot.name == link.stored) {
            return openFxNames::ofLink(link.input);
        }
    }
    return {};
}

template <typename T>
Json writeValue(Animated<T> const& value)
{
    auto const toJson = [](T const& constant) {
        if constexpr (std::is_same_v<T, bool>) {
            return Json(constant ? 1 : 0);
        } else {
            return Json(constant);
        }
    };
    if (!value.isAnimated()) {
        return toJson(value.getKeys().front().value);
    }
    Json keys = Json::array();
    for (Keyframe<T> const& key : value.getKeys()) {
        keys.push_back({key.time, toJson(key.value)});
    }
    return {{"keys", keys}};
}

/// Whether the values of all channels of a structure are the same.
bool haveChannelsOneValue(HostNode const& node, std::string const& input)
{
    auto const isOf = [&](HostNode::ValueSlot const& slot) {
        return slot.name.substr(0, slot.name.rfind('.')) == input;
    };
    std::vector<HostNode::ValueSlot> const& slots = node.getValues();
    auto const first = std::find_if(slots.begin(), slots.end(), isOf);
    return std::all_of(slots.begin(), slots.end(), [&](HostNode::ValueSlot const& slot) {
        return !isOf(slot) || *slot.value->getState() == *first->value->getState();
    });
}

/// Writes plain values; curves are gathered in one text.
struct ValueWriter {
    HostNode::ValueSlot const& slot;
    Json& parameters;
    CurveSet& curves;
    std::vector<std::string>& channels;

    template <typename T>
    void operator()(Animated<T> const& value) const
    {
        parameters[findParam(slot)] = writeValue(value);
    }
    void operator()(Animated<CurvePoints> const& curve) const
    {
        channels.push_back(slot.name.substr(slot.name.rfind('.') + 1));
        curves.emplace(channels.back(), curve);
    }
    void operator()(Vector<double> const&) const {}
};

} // namespace

std::string writeOpenFxLook(HostNode const& node)
{
    auto const mute = node.getValue(PiImageModifier::getMuteValueName())->getState();
    if (std::get<Animated<bool>>(*mute).evaluate(0.0).getValue()) {
        throw UsageError(
            "an OpenFX look cannot be muted: leave Mute off, and switch the node off in "
            "the host");
    }
    Json parameters = Json::object();
    CurveSet curves;
    std::vector<std::string> channels;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        if (!findParam(slot).empty()) {
            std::visit(ValueWriter{slot, parameters, curves, channels}, *slot.value->getState());
        }
    }
    for (openFxNames::Link const& link : openFxNames::links) {
        // A host may take each value that a script sets for an edit: with a link on, the last
        // channel's would become that of all.
        if (!haveChannelsOneValue(node, link.input)) {
            parameters[openFxNames::ofLink(link.input)] = 0;
        }
    }
    parameters[openFxNames::curveText] = formatCurveSet(curves, channels);
    Json const look = {{"format", "remap-color-openfx"},
                       {"version", 1},
                       {"plugin", openFxNames::plugin},
                       {"parameters", parameters}};
    constexpr int indent = 2;
    return look.dump(indent) + "\n";
}
