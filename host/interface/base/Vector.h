#pragma once

#include <vector>

/// The host's growable array: the standard one.
template <typename T>
using Vector = std::vector<T>;
