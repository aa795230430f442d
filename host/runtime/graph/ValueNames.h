#pragma once

#include "runtime/graph/HostNode.h"

#include <string>
#include <string_view>
#include <vector>

/// Values of a node, in the order of its description.
using ValueSlots = std::vector<HostNode::ValueSlot>;

/// The names by which people call values: full names ("Linear.Gamma.Red"), and those of the groups
/// around them ("Linear.Gamma", "Linear"), which stand for all their members.
std::vector<std::string> listValueNames(HostNode const& node);

/// The value of that name, or all members of the group of that name; case does not count. Empty
/// where there is none.
ValueSlots findValues(HostNode const& node, std::string_view name);

/// The values that are not at their defaults.
ValueSlots findChangedValues(HostNode const& node);

/// Names of some of a node's values for a person: a group's where all its members are among them
/// and in the same state.
struct NamedValues {
    std::string name;
    RCShdPtr<HostValue> first; ///< one for all
};
std::vector<NamedValues> summarise(HostNode const& node, ValueSlots const& slots);
