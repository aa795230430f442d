#pragma once

#include "primitives/GeInterval.h"

#include <string>

/// The whole number that an option takes. Throws UsageError that names the option and its limits.
int parseWhole(std::string const& option, std::string const& text, int least, int most);

/// "LO,HI", the lower one first, both within float's range. Throws UsageError that names the
/// option.
GeInterval<float> parseRange(std::string const& option, std::string const& text);
