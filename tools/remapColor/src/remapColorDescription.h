#pragma once

#include "base/OPtr.h"
#include "pluginAPI/PiToolProtocol.h"

/// The protocol by which the host knows the tool "Remap Color". User-interface thread.
OPtr<PiToolProtocol> createRemapColorProtocol();
