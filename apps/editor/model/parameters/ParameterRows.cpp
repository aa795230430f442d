#include "editor/model/parameters/ParameterRows.h"

#include "openfx/ParamNames.h" // which switch links what is the same in every program
#include "pluginAPI/PiInputPolicy.h"
#include "session/ToolKeys.h"

#include <string_view>

namespace {

constexpr std::string_view firstChannel = ".Red";

/// The stored switch that links the channels of a structure; empty for none.
std::string findLink(std::string const& name)
{
    for (openFxNames::Link const& link : openFxNames::links) {
        if (link.input == name) {
            return link.stored;
        }
    }
    return {};
}

std::string makeLabel(std::string const& name, std::string const& mode)
{
    std::string label = mode.empty() ? name : name.substr(mode.size() + 1);
    for (std::size_t dot = label.find('.'); dot != std::string::npos; dot = label.find('.')) {
        label[dot] = ' ';
    }
    return label;
}

std::string findMode(std::string const& name, std::vector<std::string> const& modes)
{
    for (std::string const& mode : modes) {
        if (name.starts_with(mode + ".")) {
            return mode;
        }
    }
    return {};
}

std::optional<ParameterRow::Kind> findKind(HostValue const& value)
{
    auto const state = value.getState();
    if (std::holds_alternative<Animated<bool>>(*state)) {
        return ParameterRow::Switch;
    }
    if (std::holds_alternative<Animated<double>>(*state)) {
        return ParameterRow::Number;
    }
    bool const isChoice = dynamic_cast<PiEnumPolicy const*>(value.getPolicy().get()) != nullptr;
    return isChoice ? std::optional(ParameterRow::Choice) : std::nullopt;
}

} // namespace

std::vector<ParameterRow> makeParameterRows(HostNode const& node,
                                            std::vector<std::string> const& modes)
{
    std::vector<ParameterRow> rows;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        std::optional<ParameterRow::Kind> const kind = findKind(*slot.value);
        bool const isMute = slot.name == "Mute";
        if (!kind.has_value() || (slot.isStored && !isMute) || slot.name == ToolKeys::mode) {
            continue;
        }
        bool const isFirst = slot.name.ends_with(firstChannel);
        std::string const group = slot.name.substr(0, slot.name.rfind('.'));
        if (!isFirst && !rows.empty() && rows.back().name == group) {
            rows.back().names.push_back(slot.name);
            continue;
        }
        ParameterRow row;
        row.kind = isFirst ? ParameterRow::Numbers : *kind;
        row.name = isFirst ? group : slot.name;
        row.mode = findMode(slot.name, modes);
        row.label = makeLabel(row.name, row.mode);
        row.names = {slot.name};
        row.link = findLink(row.name);
        rows.push_back(row);
    }
    return rows;
}
