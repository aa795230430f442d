#pragma once

#include "plots/Figure.h"

#include <stdexcept>
#include <string>

/// How a figure is stored. Text is drawn as outlines in both, so that it looks the same everywhere.
enum class FigureFormat {
    Svg, ///< in points
    Png  ///< two pixels a point
};

/// A figure cannot be drawn. The text is the reason alone.
class FigureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The bytes of a file with the figure: the same for the same figure on one machine (fonts differ
/// between machines). Throws FigureError, std::bad_alloc. One thread at a time.
std::string drawFigure(Figure const& figure, FigureFormat format);

/// The function that the drawing module exports.
inline constexpr char const* figureFunctionName = "remapPlotsDraw";
using FigureFunction = void (*)(Figure const&, FigureFormat, std::string& bytes);
