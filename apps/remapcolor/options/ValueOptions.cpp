// --set and --curve: which values they mean, and what these become.

#include "remapcolor/options/ValueOptions.h"

#include "remapcolor/text/ValueText.h"
#include "runtime/curves/CurveText.h"
#include "runtime/graph/ValueNames.h"
#include "runtime/values/NearestNames.h"
#include "runtime/values/TextParts.h"
#include "session/Failures.h"
#include "session/ToolKeys.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace {

/// NAME and VALUE around the first equals sign. Throws UsageError if there is none.
std::pair<std::string_view, std::string_view>
splitAssignment(std::string_view option, std::string_view text, std::string_view form)
{
    std::size_t const equals = text.find('=');
    if (equals == std::string_view::npos) {
        throw UsageError(std::string(option) + " " + quote(std::string(text)) +
                         " gives no value; write " + std::string(form));
    }
    return {trim(text.substr(0, equals)), trim(text.substr(equals + 1))};
}

void checkSameKind(std::string_view name, ValueSlots const& slots)
{
    for (HostNode::ValueSlot const& slot : slots) {
        if (slot.value->getState()->index() != slots.front().value->getState()->index()) {
            throw UsageError("--set: " + quote(std::string(name)) +
                             " groups inputs of several kinds; name one of them, such as " +
                             quote(slots.front().name));
        }
    }
}

void collectNamed(HostNode const& node, std::string_view text, NodeValues& values)
{
    auto const [name, value] = splitAssignment("--set", text, "NAME=VALUE");
    ValueSlots const slots = findValues(node, name);
    if (slots.empty()) {
        throw UsageError(
            "--set: there is no input " + quote(std::string(name)) +
            suggestNames(name, listValueNames(node), "\"remapcolor describe\" lists all inputs"));
    }
    checkSameKind(name, slots);
    for (HostNode::ValueSlot const& slot : slots) {
        values.insert_or_assign(slot.name, parseValue(*slot.value, value));
    }
}

/// The curve of a channel, all three for "rgb".
ValueSlots findCurves(ValueSlots const& curves, std::string_view channel)
{
    if (toLower(channel) == "rgb") {
        return curves;
    }
    std::vector<std::string> channels;
    for (HostNode::ValueSlot const& slot : curves) {
        channels.push_back(toLower(std::string_view(slot.name).substr(slot.name.rfind('.') + 1)));
        if (channels.back() == toLower(channel)) {
            return {slot};
        }
    }
    channels.emplace_back("rgb");
    throw UsageError("--curve: there is no channel " + quote(std::string(channel)) +
                     suggestNames(channel, channels, "write red, green, blue or rgb"));
}

void collectCurves(HostNode const& node, std::string_view text, NodeValues& values)
{
    auto const [channels, keys] =
        splitAssignment("--curve", text, "CHANNELS=KEYS as in rgb=\"0,0 0.5,0.6 1,1\"");
    ValueSlots const curves = findValues(node, ToolKeys::adjustCurve);
    ValueState const state = parseAnimatedCurve("--curve " + std::string(channels), keys);
    for (std::string_view const channel : split(channels, ',')) {
        for (HostNode::ValueSlot const& slot : findCurves(curves, channel)) {
            slot.value->checkGiven(state);
            values.insert_or_assign(slot.name, state);
        }
    }
}

} // namespace

NodeValues collectValues(HostNode const& node, std::vector<ValueSetting> const& settings)
{
    NodeValues values;
    for (ValueSetting const& setting : settings) {
        switch (setting.form) {
        case ValueSetting::Form::Named: collectNamed(node, setting.text, values); break;
        case ValueSetting::Form::Curves: collectCurves(node, setting.text, values); break;
        }
    }
    return values;
}
