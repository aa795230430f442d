#pragma once

#include "primitives/CoColor.h"
#include "runtime/graph/HostNode.h"

#include <vector>

/// What the node's chain without a mask makes of the pixels at a time: mute, "Mix" and "Output
/// Depth" included, bit for bit as in a float picture. User-interface thread.
std::vector<CoRgbaColorTyped<float>>
sendPixels(HostNode& node, std::vector<CoRgbaColorTyped<float>> const& pixels, double time);
