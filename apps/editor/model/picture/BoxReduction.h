#pragma once

#include "editor/model/picture/ViewGeometry.h"
#include "primitives/CoColor.h"

#include <span>
#include <vector>

/// Makes the pixels of a grid from those of a picture: each is the mean of what it covers, by area;
/// at the picture's edge, of what there is. Immutable; any thread.
class BoxReduction {
public:
    using Pixel = CoRgbaColorTyped<float>;

    /// The grid lies over `pixels`, in part at least.
    BoxReduction(PixelGrid const& grid, GeRectangle<int> const& pixels);

    /// The pixels that rows `first` up to, not including, `last` of the grid are made from.
    GeRectangle<int> findSource(int first, int last) const;

    /// Works one row of the grid out: `getRow(y)` gives the columns of findSource in row y.
    template <typename GetRow>
    void reduce(int row, GetRow const& getRow, std::span<Pixel> reduced) const
    {
        std::vector<Pixel> sums(static_cast<std::size_t>(columns.back().last - getLeft()));
        Box const& rowBox = rows[static_cast<std::size_t>(row)];
        for (int y = rowBox.first; y < rowBox.last; ++y) {
            addRow(getRow(y), rowBox.getShare(y), sums);
        }
        reduceRow(sums, reduced);
    }

private:
    /// Along one axis, the pixels under a square and their shares of it, which add up to 1.
    struct Box {
        int first;
        int last; ///< not included
        float firstShare;
        float lastShare;
        float otherShare;

        float getShare(int pixel) const
        {
            return pixel == first ? firstShare : pixel == last - 1 ? lastShare : otherShare;
        }
    };

    static std::vector<Box> makeBoxes(double from, double step, int count, int begin, int end);
    int getLeft() const { return columns.front().first; }
    static void addRow(std::span<Pixel const> row, float share, std::span<Pixel> sums);
    void reduceRow(std::span<Pixel const> sums, std::span<Pixel> reduced) const;

    std::vector<Box> columns;
    std::vector<Box> rows;
};
