#pragma once

#include <cstddef>
#include <string>

/// Bytes as in "500M", "4G" or "2GiB": K, M, G and T count in 1024s. Throws UsageError.
std::size_t parseMemory(std::string const& text);
