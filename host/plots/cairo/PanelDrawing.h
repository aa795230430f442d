#pragma once

#include "plots/cairo/Canvas.h"

/// How the things in panels look; the legend shows the same.
namespace PanelStyle {

inline constexpr Ink textInk{0.13, 0.13, 0.13};
inline constexpr Ink quietInk{0.40, 0.40, 0.40};
inline constexpr Ink referenceInk{0.55, 0.55, 0.55};
inline constexpr Ink white{1.0, 1.0, 1.0};
inline constexpr double referenceWidth = 0.9;
inline constexpr double keyRadius = 3.6;
inline constexpr double handleRadius = 2.3;
inline constexpr double markRadius = 4.6;

Ink chooseInk(FigureTone tone);
Dashes chooseDashes(FigureTone tone);
double chooseWidth(FigureTone tone);
Dashes getReferenceDashes();

void drawKey(Canvas& canvas, FigurePoint const& place, FigureTone tone);
void drawHandle(Canvas& canvas, FigurePoint const& place, FigureTone tone);
void drawMark(Canvas& canvas, FigurePoint const& place, FigureTone tone);
Ink chooseHistogramInk(FigureTone tone);

} // namespace PanelStyle

/// Draws a panel whose coordinates fill `box`; title, ticks and labels lie around it.
void drawPanel(Canvas& canvas, FigurePanel const& panel, Box const& box);
