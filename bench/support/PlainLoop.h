#pragma once

#include "support/Looks.h"

#include <cstddef>

namespace bench {

/// The work as a plain loop does it: value by value with the platform's powf and log, the transfer
/// over the whole row, then the curves over the row in place.
void processPlainRow(Work const& work, Look const& look, Pixel const* source, Pixel* destination,
                     std::size_t nbPixels);

} // namespace bench
