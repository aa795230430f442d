#pragma once

#include "runtime/graph/HostNode.h"

#include <string>
#include <vector>

/// The keys that the tool's curves miss at these times, by more than 0.001 or 1 %: its tables have
/// evenly spread places, of which few fall to keys that lie close together beside a distant one. A
/// sentence for each curve; one for all where they are the same.
std::vector<std::string> findCurveNotes(HostNode const& node, std::vector<double> const& times);
