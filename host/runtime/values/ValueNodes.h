#pragma once

#include "pluginAPI/PxNodeHandles.h"
#include "pluginAPI/PxValueProtocols.h"
#include "runtime/values/HostValue.h"

/// The processing node that delivers `value` over time: PxAnimValueProtocol of its type, or
/// PxShape2dProtocol for a curve; empty for a value that cannot be evaluated (a list). The node
/// reads the value's state at each evaluation. User-interface thread.
PxStrongHndl<> makeValueNode(RCShdPtr<HostValue> const& value);
