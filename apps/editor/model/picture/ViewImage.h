#pragma once

#include "editor/model/picture/ViewGeometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// A part of a picture as it is shown.
struct ViewImage {
    PixelGrid grid;
    double time = 0.0;                 ///< of the look
    std::vector<std::uint32_t> pixels; ///< 0xffRRGGBB, row by row

    explicit ViewImage(PixelGrid const& itsGrid) { setGrid(itsGrid); }

    /// The pixels are then any.
    void setGrid(PixelGrid const& newGrid)
    {
        grid = newGrid;
        pixels.resize(static_cast<std::size_t>(grid.width) * static_cast<std::size_t>(grid.height));
    }
};
