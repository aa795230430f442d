#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "pluginAPI/PxNodeHandles.h"

// While the switch `isOn` (a boolean value node) is on at a request's time, colour is divided by
// alpha or multiplied by it; where alpha is not above 0, colour stays as it is, so that light
// without cover survives. Pictures are float RGBA then. While it is off, pictures pass as they are.

PxNodePtr<PxImageProtocol const> addUnpremultiply(PxNodePtr<PxImageProtocol const> const& picture,
                                                  PxStrongHndl<> const& isOn);
PxNodePtr<PxNode const> addPremultiply(PxNodePtr<PxNode const> const& chain,
                                       PxStrongHndl<> const& isOn);
