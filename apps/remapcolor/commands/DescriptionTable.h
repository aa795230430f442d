#pragma once

#include "runtime/graph/HostNode.h"

#include <string>

/// The tool of a new node as text for a person: what it is, a table of its inputs with what they
/// take and their defaults, what it stores, what it makes. Ends with a line feed.
std::string formatDescription(HostNode const& node);
