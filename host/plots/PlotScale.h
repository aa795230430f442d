#pragma once

#include "plots/Figure.h"

#include <string>
#include <vector>

/// A place on an axis that has a label.
struct PlotTick {
    double place;
    std::string label;
};

/// Ticks at round numbers, at most so many steps between the ends of the axis, which need not be
/// ticks; hardly less than half as many. Labels have as many digits as tell them apart, and a true
/// minus sign. Stops are whole where at least two of them are on the axis.
std::vector<PlotTick> makeTicks(FigureAxis const& axis, double mostSteps = 8.0);

/// The range from `low` to `high`, made wider to end at ticks; `low` and `high` are finite. A range
/// without width gets some.
FigureAxis makeRoundAxis(double low, double high, std::string label);
