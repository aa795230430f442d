#pragma once

#include "plots/Figure.h"
#include "primitives/CoColor.h"

#include <array>
#include <cstdint>
#include <vector>

/// Counts the colours of pixels in equally wide classes along an axis.
class PictureHistogram {
public:
    /// Of an axis of stops, 0 is the value 1.
    explicit PictureHistogram(FigureAxis const& countedAxis);

    void add(std::vector<CoRgbaColorTyped<float>> const& pixels);

    /// One for each channel, in which classes are numbers of values.
    std::array<std::vector<double>, 3> const& getCounts() const { return counts; }

    std::uint64_t getNbValues() const { return nbValues; }

    /// How many of them lie on no class: beyond the axis, or NaN.
    std::uint64_t getNbOutside() const { return nbOutside; }

private:
    void add(std::vector<double>& channel, float value);

    FigureAxis axis;
    std::array<std::vector<double>, 3> counts;
    std::uint64_t nbValues = 0;
    std::uint64_t nbOutside = 0;
};
