#pragma once

#include "runtime/graph/HostNode.h"

/// What a chain of `node` gives for a pixel that the tool turns from `source` into `processed`:
/// mute, mask and "Mix" come after the tool. `maskShare` is that of the mask there, as maskShareOf
/// gives it, or 1 without a mask. User-interface thread.
CoRgbaColorTyped<float> finishMaskedPixel(HostNode const& node, PxTimeContext const& time,
                                          CoRgbaColorTyped<float> const& source,
                                          CoRgbaColorTyped<float> const& processed,
                                          float maskShare);
