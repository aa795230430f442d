#pragma once

#include "primitives/GePoint2.h"
#include "primitives/GeRectangle.h"

/// The pixels of an image that shows a part of a picture: squares of `step` of the picture's
/// pixels, at least 1, the first of them at (x0, y0). With a step of 1 they are the picture's own.
struct PixelGrid {
    double x0 = 0.0;
    double y0 = 0.0;
    double step = 1.0;
    int width = 0;
    int height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool operator==(PixelGrid const&) const = default;
};

/// Which part of a picture a screen shows, how large. The data window's corner always lies on a
/// corner of a screen pixel; where pixels are larger than the screen's, all are of one size.
class ViewGeometry {
public:
    using Place = GePoint2<double>;

    static constexpr double least = 1.0 / 64;
    static constexpr double greatest = 64.0;

    /// Takes a picture; what was shown of the one before stays.
    void setWindows(GeRectangle<int> const& dataWindow, GeRectangle<int> const& displayWindow);

    /// In screen pixels. The picture is fitted again if it was.
    void setScreen(int screenWidth, int screenHeight);

    /// Shows the whole display window, until it is zoomed or panned.
    void fit();

    /// Screen pixels to one of the picture, about a place of the screen. From 1 on the nearest of a
    /// ladder of whole numbers is taken.
    void setZoom(double newZoom, Place const& about);
    /// To the next step, up or down.
    void stepZoom(int steps, Place const& about);
    double getZoom() const { return zoom; }

    /// Moves the picture by so many screen pixels.
    void pan(double dx, double dy);

    Place toPicture(Place const& screen) const;
    Place toScreen(Place const& place) const;

    /// What of the data window is visible: squares of the screen's pixels where the picture's are
    /// smaller, and the picture's own otherwise.
    PixelGrid getGrid() const;

    GeRectangle<int> const& getDataWindow() const { return data; }
    GeRectangle<int> const& getDisplayWindow() const { return display; }

private:
    void align();

    GeRectangle<int> data{};
    GeRectangle<int> display{};
    int width = 0;
    int height = 0;
    double zoom = 1.0;
    Place origin{0.0, 0.0}; ///< in the picture's pixels, at the screen's upper left corner
    bool isFitted = true;
};
