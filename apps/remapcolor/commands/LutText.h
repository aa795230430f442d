#pragma once

#include "primitives/CoColor.h"
#include "primitives/GeInterval.h"

#include <string>
#include <vector>

/// Tables as files hold them. Entries are finite: not every reader knows another kind of number.
/// Numbers are the shortest that read back as the same floats. `title` and `remarks` are plain
/// text, a line each.

using LutEntries = std::vector<CoRgbColorTyped<float>>;

/// A Common LUT Format (SMPTE ST 2136-1) process list of one table with a half domain: an entry for
/// every half, in the order of their bits.
std::string formatClf(LutEntries const& entries, std::string const& title,
                      std::vector<std::string> const& remarks, bool areHalves);

/// One-dimensional tables whose entries are spread evenly over the domain.
std::string formatCube(LutEntries const& entries, GeInterval<float> const& domain,
                       std::string const& title, std::vector<std::string> const& remarks);
std::string formatSpi1d(LutEntries const& entries, GeInterval<float> const& domain);
