#pragma once

#include "runtime/values/Animated.h"

#include <map>
#include <string>
#include <string_view>

/// Curves by the names of their channels.
using CurveSet = std::map<std::string, Animated<CurvePoints>>;

/// Reads several curves, a line each: "CHANNELS=CURVE" with one or a comma-separated list of
/// `channels`, "rgb" or nothing for all, and the curve as parseAnimatedCurve takes it. Case does
/// not count in names; an empty line says nothing; a later line of the same channel replaces an
/// earlier one. Throws ValueError that names the line.
CurveSet parseCurveSet(std::string_view text, std::vector<std::string> const& channels);

/// The text of these curves for parseCurveSet, in the order of `channels`; lines end in a newline.
std::string formatCurveSet(CurveSet const& curves, std::vector<std::string> const& channels);
