#pragma once

#include <map>
#include <optional>
#include <string_view>

/// The value of a sum as people type it: numbers, + - * / and parentheses, blanks anywhere between
/// them, and letters that stand for numbers. Empty for what is none, and for one without a finite
/// value.
std::optional<double> evaluateExpression(std::string_view text,
                                         std::map<char, double> const& letters = {});
