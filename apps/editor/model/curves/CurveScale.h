#pragma once

// Between values and the places of a graph. Functions of no state; any thread.

/// An x axis in values, or in stops: powers of two. Values of 0 and below have no place on the
/// latter; a strip at its left stands for them.
enum class CurveAxis { Linear, Stops };

/// The part of the plane that a graph shows, in the axes' own coordinates; y grows upwards.
struct GraphRange {
    double left;
    double bottom;
    double width;
    double height;

    double getRight() const { return left + width; }
    double getTop() const { return bottom + height; }
    bool operator==(GraphRange const&) const = default;
};

/// What is to be seen without anything to fit: the unit square and a little around it.
GraphRange getPlainRange(CurveAxis axis);

/// The same with some air around. Without a width or height the range gets some.
GraphRange addMargin(GraphRange const& range);

/// With the coordinate (x, y) where it was and everything else nearer to it by the factors, within
/// what floats tell apart.
GraphRange zoomRange(CurveAxis axis, GraphRange const& range, double x, double y, double factorX,
                     double factorY);

/// A graph of a size in pixels. Places count from its upper left corner.
class CurveScale {
public:
    static constexpr double stripWidth = 34.0;

    CurveScale(CurveAxis shownAxis, GraphRange const& shownRange, double graphWidth,
               double graphHeight);

    /// The place of an x; for one that the axis has not, the middle of the strip. Beyond the graph
    /// it is kept within what can be drawn.
    double toPlaceX(double x) const;
    double toPlaceY(double y) const;

    /// 0 within the strip.
    double toX(double place) const;
    double toY(double place) const;

    /// Where the axis begins: behind the strip, if there is one.
    double getStart() const { return start; }
    bool isInStrip(double place) const { return place < start; }

    /// Coordinates on the axis: the value, or its stops, of which 0 has none.
    double toCoordinate(double x) const;
    double toPlaceOfCoordinate(double coordinate) const;
    double toCoordinateOfPlace(double place) const;

    CurveAxis getAxis() const { return axis; }
    GraphRange const& getRange() const { return range; }
    double getWidth() const { return width; }
    double getHeight() const { return height; }

private:
    CurveAxis axis;
    GraphRange range;
    double width;
    double height;
    double start;
};
