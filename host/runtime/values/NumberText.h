#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Numbers as text, the same in every locale.

/// The shortest text that reads back as the same double.
std::string formatNumber(double value);

/// The shortest text that reads back as the same float.
std::string formatNumber(float value);

/// Four digits of it, for a person.
std::string formatShort(double value);

/// The whole of `text` as a number, such as "1.5", "-2e3"; empty if it is none or not finite.
std::optional<double> parseNumber(std::string_view text);
