#pragma once

#include "remapcolor/reports/Reporter.h"
#include "runtime/graph/HostNode.h"

#include <string>
#include <vector>

/// The times at which a node's values are keyed; 0 alone where none is.
std::vector<double> listKeyTimes(HostNode const& node);

/// "mode", and every value that is not at its default, as a user would type it.
Reporter::Facts describeLook(HostNode const& node);

/// What has been set and does nothing, or what it hardly was meant to, at all of these times: a
/// sentence for each fact. What belongs to which mode is known from the tool's description.
std::vector<std::string> findLookNotes(HostNode const& node, std::vector<double> const& times);

/// Notes what findLookNotes and findCurveNotes find.
void reportLook(HostNode const& node, std::vector<double> const& times, Reporter& reporter);
