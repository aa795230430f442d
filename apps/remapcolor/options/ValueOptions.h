#pragma once

#include "runtime/graph/HostNode.h"

#include <string>
#include <vector>

/// A wish for values as it stands on the command line.
struct ValueSetting {
    enum class Form {
        Named,  ///< NAME=VALUE
        Curves, ///< CHANNELS=KEYS, for the adjustment curves
    };

    Form form;
    std::string text;
};

/// What the settings, one after the other, make of the node's values; a later one replaces an
/// earlier one. NAME is a value's full name or that of a structure, which stands for all its
/// members; case does not count. Changes nothing. Throws UsageError or ValueError for the first
/// setting that is wrong; the text says where.
NodeValues collectValues(HostNode const& node, std::vector<ValueSetting> const& settings);
