#pragma once

#include "primitives/CoColor.h"
#include "primitives/GeRectangle.h"

#include <QFont>
#include <QString>

/// Pixel values as people read them.
namespace ValueText {

inline constexpr int columnWidth = 13; ///< characters: "-1.23457e-05" and a space

/// One in which digits stand below each other.
QFont getFont();

/// Six digits; what is no number by name.
QString formatValue(float value);

/// Red, green, blue and alpha in columns of one width.
QString formatColour(CoRgbaColorTyped<float> const& colour);

/// "812,340", of an area with its size.
QString formatPlace(GeRectangle<int> const& place);

} // namespace ValueText
