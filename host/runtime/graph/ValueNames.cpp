// Names of values and of the groups around them.

#include "runtime/graph/ValueNames.h"

#include "runtime/graph/HostGraph.h"
#include "runtime/values/NearestNames.h"

#include <algorithm>
#include <cstddef>

namespace {

/// The groups around a full name, the widest first, and the name itself.
std::vector<std::string> listPath(std::string const& name)
{
    std::vector<std::string> path;
    for (std::size_t end = 0; end != std::string::npos;) {
        end = name.find('.', end + 1);
        path.push_back(name.substr(0, end));
    }
    return path;
}

bool contains(ValueSlots const& slots, std::string const& name)
{
    return std::any_of(slots.begin(), slots.end(),
                       [&name](HostNode::ValueSlot const& slot) { return slot.name == name; });
}

bool isOneState(ValueSlots const& members)
{
    auto const state = members.front().value->getState();
    return std::all_of(members.begin(), members.end(), [&state](HostNode::ValueSlot const& slot) {
        return *slot.value->getState() == *state;
    });
}

} // namespace

std::vector<std::string> listValueNames(HostNode const& node)
{
    std::vector<std::string> names;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        for (std::string const& name : listPath(slot.name)) {
            if (std::find(names.begin(), names.end(), name) == names.end()) {
                names.push_back(name);
            }
        }
    }
    return names;
}

ValueSlots findValues(HostNode const& node, std::string_view name)
{
    std::string const wanted = toLower(name);
    ValueSlots found;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        std::string const known = toLower(slot.name);
        if (known == wanted || (!wanted.empty() && known.starts_with(wanted + "."))) {
            found.push_back(slot);
        }
    }
    return found;
}

ValueSlots findChangedValues(HostNode const& node)
{
    NodeValues const defaults = getDefaultValues(node.getTool());
    ValueSlots changed;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        if (defaults.at(slot.name) != *slot.value->getState()) {
            changed.push_back(slot);
        }
    }
    return changed;
}

std::vector<NamedValues> summarise(HostNode const& node, ValueSlots const& slots)
{
    std::vector<NamedValues> summary;
    for (std::size_t index = 0; index < slots.size();) {
        for (std::string const& name : listPath(slots[index].name)) {
            ValueSlots const members = findValues(node, name);
            bool const areAll =
                std::all_of(members.begin(), members.end(),
                            [&slots](auto const& member) { return contains(slots, member.name); });
            if (areAll && isOneState(members)) {
                summary.push_back({name, slots[index].value});
                index += members.size();
                break;
            }
        }
    }
    return summary;
}
