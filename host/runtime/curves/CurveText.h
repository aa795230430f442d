#pragma once

#include "runtime/values/Animated.h"

#include <string>
#include <string_view>

/// Reads a curve as it is typed: "x,y x,y ..." for keys with smooth handles that never overshoot,
/// or with semicolons between the keys "hx,hy x,y hx,hy; hx,hy x,y hx,hy; ..." for keys with their
/// incoming and outgoing handles. There are at least two keys, none left of the one before it; end
/// keys without a drawn handle get one. Throws ValueError, which starts with `where` and names the
/// key.
CurvePoints parseCurve(std::string const& where, std::string_view text);

/// Reads a curve as parseCurve does, or its keyframes "CURVE @TIME | CURVE @TIME | ...", whose
/// curves have the same number of keys.
Animated<CurvePoints> parseAnimatedCurve(std::string const& where, std::string_view text);

/// The keys of a curve without their handles, as parseCurve reads them.
std::string formatCurveKeys(CurvePoints const& points);

/// All points of a curve, as parseCurve reads them: the same curve, to the bit, unless an end key
/// has no outer handle.
std::string formatCurve(CurvePoints const& points);

/// The same with the keyframes of a curve that changes over time.
std::string formatAnimatedCurve(Animated<CurvePoints> const& curve);
