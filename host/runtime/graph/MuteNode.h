#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "pluginAPI/PxNodeHandles.h"

/// A format cannot change over time, so muting does not either: this is when it is looked at.
inline constexpr double timeOfMute = 0.0;

/// The chain, bypassed while `mute` (a boolean value node) is on at that time: pictures and their
/// format are then the source's. User-interface thread.
PxStrongHndl<PxNode const> addMute(PxNodePtr<PxNode const> const& chain, PxStrongHndl<> const& mute,
                                   PxNodePtr<PxImageProtocol const> const& source);
