#pragma once

#include "OfxAbi.h"
#include "ParamTable.h"

/// What a host learns of the plug-in before there is an instance. Always the same, so that hosts
/// may keep it. A property that a host refuses or does not know is left out.
void describeEffect(OfxImageEffect* effect);

/// Clips and parameters for "Filter" or "General". Throws HostException where the host lets the
/// source or the output not be defined.
void describeInContext(OfxImageEffect* effect, std::string const& context, ParamTable const& table);
