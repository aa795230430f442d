#pragma once

#include "runtime/graph/HostNode.h"

#include <string>

/// The tool of a new node as one JSON object that leaves nothing out: what the tool says of itself,
/// the builds that loaded libraries announce, and every declaration in the tool's order, inputs
/// with their policies and the values of the new node. Ends with a line feed.
std::string formatDescriptionJson(HostNode const& node);
