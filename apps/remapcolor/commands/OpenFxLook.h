#pragma once

#include "runtime/graph/HostNode.h"

#include <string>

/// A node's values as the OpenFX plug-in's parameters, for a host's script:
///
///   {"format": "remap-color-openfx", "version": 1, "plugin": IDENTIFIER,
///    "parameters": {NAME: VALUE, ...}}
///
/// VALUE is a number, a choice's index, 0 or 1 for a switch, text for the curves (as the plug-in's
/// adjustCurveText takes them), or keyframes {"keys": [[time, VALUE], ...]}. All values are there
/// that the plug-in has; a link is off where its channels differ, so that they can be set one by
/// one. Throws UsageError for a muted node: hosts mute by themselves.
std::string writeOpenFxLook(HostNode const& node);
