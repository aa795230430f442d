#pragma once

#include "plots/Figure.h"
#include "primitives/CoColor.h"

#include <array>
#include <cstddef>
#include <vector>

/// Counts the colours of pixels in equally wide classes along an axis, for each channel.
class AxisHistogram {
public:
    /// Of an axis of stops, 0 is the value 1.
    AxisHistogram(FigureAxis const& countedAxis, std::size_t nbClasses);

    void add(std::vector<CoRgbaColorTyped<float>> const& pixels);

    /// So many values of a channel that lie evenly from `low` to `high`, both included; which of
    /// the two is greater does not count.
    void add(std::size_t channel, double low, double high, double count);

    /// One for each channel, in which classes are numbers of values.
    std::array<std::vector<double>, 3> const& getCounts() const { return counts; }

    /// How many values lie on no class: beyond the axis, or NaN.
    double getNbOutside() const { return nbOutside; }
    double getNbValues() const { return nbValues; }

private:
    double toClass(double value) const;

    FigureAxis axis;
    std::array<std::vector<double>, 3> counts;
    double nbValues = 0;
    double nbOutside = 0;
};
