#pragma once

#include "runtime/graph/HostNode.h"

#include <optional>
#include <string>
#include <vector>

struct SliderRange {
    double from;
    double to;
};

/// A row of the parameter table: a number per channel, or a single value.
struct ParameterRow {
    enum Kind { Numbers, Number, Switch, Choice };

    Kind kind;
    std::string name;               ///< without the channel
    std::string mode;               ///< the mode that it belongs to; empty for all
    std::string group;              ///< the heading that it stands under; empty for none
    std::string label;              ///< as a person reads it
    std::vector<std::string> names; ///< of the values: red, green, blue, or one
    std::string link;               ///< the switch that links the channels; empty for none
    double step = 0.01;             ///< one step by wheel, arrows or drag
    std::optional<SliderRange> slider{};
};

/// The rows for the node, in the order of its description, from what the tool declares. Curves,
/// pictures and "Mode" are not among them.
std::vector<ParameterRow> makeParameterRows(HostNode const& node,
                                            std::vector<std::string> const& modes);
