#pragma once

#include "runtime/graph/HostNode.h"

#include <string>
#include <variant>

/// What the node's value of that full name is at a time. T is the type of the value.
template <typename T>
T evaluateValue(HostNode const& node, std::string const& name, double time)
{
    auto const state = node.getValue(name)->getState();
    return std::get<Animated<T>>(*state).evaluate(time).getValue();
}
