#pragma once

#include "runtime/values/HostValue.h"

#include <string>
#include <string_view>

/// Reads what a user typed for `value`: a number, true/false/on/off/yes/no/1/0 for a switch, label
/// or number of a choice, a curve (see parseAnimatedCurve), comma-separated numbers for a list;
/// numbers, switches and choices also as keyframes "VALUE@TIME,VALUE@TIME,...". Throws UsageError
/// naming the value and what it takes, and ValueError for what the value refuses (outside its
/// range, not animatable).
ValueState parseValue(HostValue const& value, std::string_view text);

/// What a user would type for the value as it is, curves without handles; a choice as its number
/// and label.
std::string formatValue(HostValue const& value);

/// A choice as texts show it: `0 "Linear"`.
std::string formatChoice(PiEnumPolicy::Pair const& choice);
