#pragma once

#include "runtime/values/Animated.h"

#include <string>
#include <string_view>

/// Reads a curve as it is typed: "x,y x,y ..." for keys with smooth handles that never overshoot,
/// or with semicolons between the keys "hx,hy x,y hx,hy; hx,hy x,y hx,hy; ..." for keys with their
/// incoming and outgoing handles. There are at least two keys, none left of the one before it; end
/// keys without a drawn handle get one. Throws UsageError, which starts with `where` and names the
/// key.
CurvePoints parseCurve(std::string const& where, std::string_view text);

/// The keys of a curve without their handles, as parseCurve reads them.
std::string formatCurveKeys(CurvePoints const& points);
