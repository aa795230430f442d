// Drawing by cairo.

#include "plots/cairo/Canvas.h"

#include "plots/FigureFile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <numbers>
#include <span>

namespace {

constexpr double farOut = 1e4; // where nobody sees it, and the library can still count

bool isFarOut(FigurePoint const& place)
{
    return std::abs(place.x) > farOut || std::abs(place.y) > farOut;
}

/// `place`, or where the way to it from `start`, which is not far out, leaves what can be counted.
FigurePoint approach(FigurePoint const& start, FigurePoint const& place)
{
    double share = 1.0;
    for (double FigurePoint::*const along : {&FigurePoint::x, &FigurePoint::y}) {
        double const end = std::clamp(place.*along, -farOut, farOut);
        if (end != place.*along) {
            share = std::min(share, (end - start.*along) / (place.*along - start.*along));
        }
    }
    return {start.x + share * (place.x - start.x), start.y + share * (place.y - start.y)};
}

FigurePoint limit(FigurePoint const& place)
{
    return {std::clamp(place.x, -farOut, farOut), std::clamp(place.y, -farOut, farOut)};
}

/// The places of a line without gaps, those far out brought nearer on its way.
std::vector<FigurePoint> bringNearer(std::span<FigurePoint const> places)
{
    std::vector<FigurePoint> near;
    for (std::size_t index = 0; index < places.size(); ++index) {
        bool const isOut = isFarOut(places[index]);
        bool const wasOut = index > 0 && isFarOut(places[index - 1]);
        if (wasOut && !isOut) {
            near.push_back(approach(places[index], places[index - 1]));
        }
        near.push_back(!isOut                 ? places[index]
                       : index > 0 && !wasOut ? approach(places[index - 1], places[index])
                                              : limit(places[index]));
    }
    return near;
}

} // namespace

Surface makeImage(int width, int height)
{
    return {cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), &cairo_surface_destroy};
}

Canvas::Canvas(cairo_surface_t* surface) : context(cairo_create(surface))
{
    cairo_font_options_t* const options = cairo_font_options_create();
    // Shapes and distances as the font has them, not fitted to one grid of pixels.
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(context, options);
    cairo_font_options_destroy(options);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
}

Canvas::~Canvas()
{
    cairo_destroy(context);
}

void Canvas::check() const
{
    cairo_status_t const status = cairo_status(context);
    if (status == CAIRO_STATUS_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        throw FigureError(cairo_status_to_string(status));
    }
}

void Canvas::scale(double factor)
{
    cairo_scale(context, factor, factor);
}

void Canvas::clip(Box const& box)
{
    cairo_save(context);
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    cairo_clip(context);
}

void Canvas::unclip()
{
    cairo_restore(context);
}

void Canvas::fill(Box const& box, Ink const& ink)
{
    choose(ink);
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    cairo_fill(context);
}

void Canvas::frame(Box const& box, Ink const& ink, double width)
{
    choose(ink);
    cairo_set_line_width(context, width);
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    cairo_stroke(context);
}

void Canvas::line(std::vector<FigurePoint> const& places, Ink const& ink, double width,
                  Dashes const& dashes)
{
    choose(ink);
    cairo_set_line_width(context, width);
    cairo_set_dash(context, dashes.lengths.data(), static_cast<int>(dashes.lengths.size()),
                   dashes.start);
    auto const isFinite = [](FigurePoint const& place) {
        return std::isfinite(place.x) && std::isfinite(place.y);
    };
    for (auto start = places.begin(); start != places.end();) {
        auto const end = std::find_if_not(start, places.end(), isFinite);
        cairo_new_sub_path(context);
        for (FigurePoint const& place : bringNearer({start, end})) {
            cairo_line_to(context, place.x, place.y);
        }
        start = std::find_if(end, places.end(), isFinite);
    }
    cairo_stroke(context);
    cairo_set_dash(context, nullptr, 0, 0.0);
}

void Canvas::fillShape(std::vector<FigurePoint> const& places, Ink const& ink)
{
    choose(ink);
    for (FigurePoint const& place : places) {
        cairo_line_to(context, place.x, place.y);
    }
    cairo_fill(context);
}

void Canvas::circle(FigurePoint const& centre, double radius, Ink const& inside, Ink const& outline)
{
    constexpr double outlineWidth = 1.2;
    cairo_new_sub_path(context);
    cairo_arc(context, centre.x, centre.y, radius, 0.0, 2.0 * std::numbers::pi);
    choose(inside);
    cairo_fill_preserve(context);
    choose(outline);
    cairo_set_line_width(context, outlineWidth);
    cairo_stroke(context);
}

void Canvas::text(FigurePoint const& place, std::string const& text, Font const& font,
                  Ink const& ink, Align align, bool hasHalo)
{
    choose(font);
    double const share = align == Align::Left ? 0.0 : align == Align::Middle ? 0.5 : 1.0;
    double const left = place.x - share * measure(text, font);
    if (hasHalo) {
        constexpr double haloWidth = 3.5;
        choose(Ink{1.0, 1.0, 1.0, 0.85});
        cairo_move_to(context, left, place.y);
        cairo_text_path(context, text.c_str());
        cairo_set_line_width(context, haloWidth);
        cairo_stroke(context);
    }
    choose(ink);
    cairo_move_to(context, left, place.y);
    cairo_show_text(context, text.c_str());
    cairo_new_path(context);
}

void Canvas::textUpwards(FigurePoint const& place, std::string const& text, Font const& font,
                         Ink const& ink)
{
    cairo_save(context);
    cairo_translate(context, place.x, place.y);
    cairo_rotate(context, -std::numbers::pi / 2.0);
    this->text({0.0, 0.0}, text, font, ink, Align::Middle);
    cairo_restore(context);
}

double Canvas::measure(std::string const& text, Font const& font)
{
    choose(font);
    cairo_text_extents_t extents{};
    cairo_text_extents(context, text.c_str(), &extents);
    return extents.x_advance;
}

std::string Canvas::cut(std::string const& text, Font const& font, double width)
{
    std::string shown = text;
    while (!shown.empty() && measure(shown == text ? text : shown + "…", font) > width) {
        do { // whole letters
            shown.pop_back();
        } while (!shown.empty() && (static_cast<unsigned char>(shown.back()) & 0x80U) != 0);
    }
    return shown == text ? text : shown + "…";
}

void Canvas::choose(Font const& font)
{
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           font.isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, font.size);
}

void Canvas::choose(Ink const& ink)
{
    cairo_set_source_rgba(context, ink.red, ink.green, ink.blue, ink.opacity);
}
