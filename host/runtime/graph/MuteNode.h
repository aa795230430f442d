#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "pluginAPI/PxNodeHandles.h"

/// The chain, bypassed while `mute` (a boolean value node) is on at time 0: pictures and their
/// format are then the source's. User-interface thread.
PxStrongHndl<PxNode const> addMute(PxNodePtr<PxNode const> const& chain, PxStrongHndl<> const& mute,
                                   PxNodePtr<PxImageProtocol const> const& source);
