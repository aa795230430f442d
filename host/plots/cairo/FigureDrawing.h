#pragma once

#include "plots/cairo/Canvas.h"

/// In points.
struct FigureSize {
    double width;
    double height;
};

FigureSize measureFigure(Figure const& figure);

/// Draws the figure on white.
void drawOn(Canvas& canvas, Figure const& figure);
