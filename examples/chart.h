/// The test chart: bands of known values, one property of a colour correction each.
#pragma once

#include "picture.h"

namespace examples {

/// The chart, 512 by 256 pixels, colour only. From the top: gray stops, a continuous gray ramp,
/// linear ramps of each channel, patches, shallow gradients, near-black steps, extreme values.
Picture renderChart();

} // namespace examples
