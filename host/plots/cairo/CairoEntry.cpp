// The module's one exported function.

#include "plots/FigureFile.h"
#include "plots/cairo/FigureDrawing.h"

#include <cairo-svg.h>
#include <cmath>
#include <cstddef>
#include <fontconfig/fontconfig.h>
#include <string_view>

namespace {

constexpr double pngScale = 2.0; // pixels a point

cairo_status_t append(void* closure, unsigned char const* data, unsigned int length)
{
    try {
        static_cast<std::string*>(closure)->append(reinterpret_cast<char const*>(data), length);
        return CAIRO_STATUS_SUCCESS;
    } catch (std::bad_alloc const&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
}

void checkStatus(cairo_status_t status)
{
    if (status == CAIRO_STATUS_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        throw FigureError(cairo_status_to_string(status));
    }
}

void draw(Figure const& figure, Surface const& surface, double scale)
{
    checkStatus(cairo_surface_status(surface.get()));
    Canvas canvas(surface.get());
    canvas.scale(scale);
    drawOn(canvas, figure);
    canvas.check();
}

/// The library numbers surfaces through the life of a process.
void removeSurfaceNumber(std::string& svg)
{
    constexpr std::string_view name = "id=\"surface";
    std::size_t const start = svg.find(name);
    if (start != std::string::npos) {
        std::size_t const number = start + name.size();
        svg.erase(number, svg.find('"', number) - number);
    }
}

void drawSvg(Figure const& figure, std::string& bytes)
{
    FigureSize const size = measureFigure(figure);
    Surface const surface(
        cairo_svg_surface_create_for_stream(&append, &bytes, size.width, size.height),
        &cairo_surface_destroy);
    draw(figure, surface, 1.0);
    cairo_surface_finish(surface.get());
    checkStatus(cairo_surface_status(surface.get()));
    removeSurfaceNumber(bytes);
}

void drawPng(Figure const& figure, std::string& bytes)
{
    FigureSize const size = measureFigure(figure);
    auto const surface = makeImage(static_cast<int>(std::lround(pngScale * size.width)),
                                   static_cast<int>(std::lround(pngScale * size.height)));
    draw(figure, surface, pngScale);
    checkStatus(cairo_surface_write_to_png_stream(surface.get(), &append, &bytes));
}

} // namespace

extern "C" __attribute__((visibility("default"))) void
remapPlotsDraw(Figure const& figure, FigureFormat format, std::string& bytes)
{
    switch (format) {
    case FigureFormat::Svg: drawSvg(figure, bytes); break;
    case FigureFormat::Png: drawPng(figure, bytes); break;
    }
    // Fonts that are kept for a next time count as lost when the process ends.
    cairo_debug_reset_static_data();
    FcFini();
}
