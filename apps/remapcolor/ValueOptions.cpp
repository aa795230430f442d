// --set and --curve: which values they mean, and what these become.

#include "remapcolor/ValueOptions.h"

#include "remapcolor/CurveText.h"
#include "remapcolor/Failures.h"
#include "remapcolor/NearestNames.h"
#include "remapcolor/TextParts.h"
#include "remapcolor/ToolKeys.h"
#include "remapcolor/ValueText.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace {

using Slots = std::vector<HostNode::ValueSlot>;

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

/// The value of that name, or all members of the structure of that name.
Slots findSlots(HostNode const& node, std::string_view name)
{
    std::string const wanted = toLower(name);
    Slots found;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        std::string const known = toLower(slot.name);
        if (known == wanted || (!wanted.empty() && known.starts_with(wanted + "."))) {
            found.push_back(slot);
        }
    }
    return found;
}

/// Full names of all values and of the structures around them.
std::vector<std::string> listNames(HostNode const& node)
{
    std::vector<std::string> names;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        for (std::size_t end = 0; end != std::string::npos;) {
            end = slot.name.find('.', end + 1);
            std::string const name = slot.name.substr(0, end);
            if (std::find(names.begin(), names.end(), name) == names.end()) {
                names.push_back(name);
            }
        }
    }
    return names;
}

void checkSameKind(std::string_view name, Slots const& slots)
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
    Slots const slots = findSlots(node, name);
    if (slots.empty()) {
        throw UsageError(
            "--set: there is no input " + quote(std::string(name)) +
            suggestNames(name, listNames(node), "\"remapcolor describe\" lists all inputs"));
    }
    checkSameKind(name, slots);
    for (HostNode::ValueSlot const& slot : slots) {
        values.insert_or_assign(slot.name, parseValue(*slot.value, value));
    }
}

/// The curve of a channel, all three for "rgb".
Slots findCurves(Slots const& curves, std::string_view channel)
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
    Slots const curves = findSlots(node, ToolKeys::adjustCurve);
    CurvePoints const points = parseCurve("--curve " + std::string(channels), keys);
    for (std::string_view const channel : split(channels, ',')) {
        for (HostNode::ValueSlot const& slot : findCurves(curves, channel)) {
            ValueState state = Animated<CurvePoints>(points);
            slot.value->check(state);
            values.insert_or_assign(slot.name, std::move(state));
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
