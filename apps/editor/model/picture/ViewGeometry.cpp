#include "editor/model/picture/ViewGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double margin = 12.0; // screen pixels around a fitted picture
constexpr double zoomPerStep = 1.25;
constexpr std::array ladder{1.0,  2.0,  3.0,  4.0,  5.0,  6.0,  8.0,  10.0,
                            12.0, 16.0, 20.0, 24.0, 32.0, 40.0, 48.0, 64.0};

/// Where all pixels of the picture are to have one size on the screen.
double snapZoom(double zoom)
{
    zoom = std::clamp(zoom, ViewGeometry::least, ViewGeometry::greatest);
    if (zoom <= 1.0) {
        return zoom * std::sqrt(zoomPerStep) > 1.0 ? 1.0 : zoom;
    }
    return *std::min_element(ladder.begin(), ladder.end(), [zoom](double a, double b) {
        return std::fabs(std::log(a / zoom)) < std::fabs(std::log(b / zoom));
    });
}

double nextZoom(double zoom, bool isUp)
{
    if (zoom < 1.0 || (zoom == 1.0 && !isUp)) {
        return snapZoom(isUp ? zoom * zoomPerStep : zoom / zoomPerStep);
    }
    auto const place = std::lower_bound(ladder.begin(), ladder.end(), zoom);
    auto const last = std::prev(ladder.end());
    return isUp ? *std::min(std::next(place), last) : *std::prev(place);
}

/// Screen pixels along an axis, counted from the data window's first.
struct Span {
    int first;
    int last;
};

Span findVisible(int begin, int end, double from, int length, double zoom)
{
    double const first = std::round((from - begin) * zoom);
    double const all = std::ceil((end - begin) * zoom);
    return {static_cast<int>(std::clamp(first, 0.0, all)),
            static_cast<int>(std::clamp(first + length, 0.0, all))};
}

} // namespace

void ViewGeometry::setWindows(GeRectangle<int> const& dataWindow,
                              GeRectangle<int> const& displayWindow)
{
    data = dataWindow;
    display = displayWindow.isEmpty() ? dataWindow : displayWindow;
    if (isFitted) {
        fit();
    }
    align();
}

void ViewGeometry::setScreen(int screenWidth, int screenHeight)
{
    width = screenWidth;
    height = screenHeight;
    if (isFitted) {
        fit();
    }
}

void ViewGeometry::fit()
{
    isFitted = true;
    if (display.isEmpty()) {
        return;
    }
    double const fitting = std::min((width - 2 * margin) / display.getWidth(),
                                    (height - 2 * margin) / display.getHeight());
    zoom = std::clamp(fitting, least, greatest);
    zoom = zoom > 1.0 ? std::floor(zoom) : zoom;
    origin = {display.x0 + (display.getWidth() - width / zoom) / 2,
              display.y0 + (display.getHeight() - height / zoom) / 2};
    align();
}

void ViewGeometry::setZoom(double newZoom, Place const& about)
{
    isFitted = false;
    Place const place = toPicture(about);
    zoom = snapZoom(newZoom);
    origin = {place.x - about.x / zoom, place.y - about.y / zoom};
    align();
}

void ViewGeometry::stepZoom(int steps, Place const& about)
{
    double wanted = zoom;
    for (int step = 0; step < std::abs(steps); ++step) {
        wanted = nextZoom(wanted, steps > 0);
    }
    setZoom(wanted, about);
}

void ViewGeometry::pan(double dx, double dy)
{
    isFitted = false;
    origin = {origin.x - dx / zoom, origin.y - dy / zoom};
    align();
}

ViewGeometry::Place ViewGeometry::toPicture(Place const& screen) const
{
    return {origin.x + screen.x / zoom, origin.y + screen.y / zoom};
}

ViewGeometry::Place ViewGeometry::toScreen(Place const& place) const
{
    return {(place.x - origin.x) * zoom, (place.y - origin.y) * zoom};
}

void ViewGeometry::align()
{
    Place const corner = toScreen({double(data.x0), double(data.y0)});
    origin = {data.x0 - std::round(corner.x) / zoom, data.y0 - std::round(corner.y) / zoom};
}

PixelGrid ViewGeometry::getGrid() const
{
    Span const columns = findVisible(data.x0, data.x1, origin.x, width, zoom);
    Span const rows = findVisible(data.y0, data.y1, origin.y, height, zoom);
    PixelGrid grid{data.x0 + columns.first / zoom, data.y0 + rows.first / zoom, 1.0 / zoom,
                   columns.last - columns.first, rows.last - rows.first};
    if (zoom >= 1.0) {
        grid.x0 = std::floor(grid.x0);
        grid.y0 = std::floor(grid.y0);
        grid.step = 1.0;
        grid.width = static_cast<int>(std::ceil(data.x0 + columns.last / zoom) - grid.x0);
        grid.height = static_cast<int>(std::ceil(data.y0 + rows.last / zoom) - grid.y0);
    }
    return grid;
}
