#pragma once

#include "plots/Figure.h"

#include <cairo.h>
#include <memory>
#include <string>
#include <vector>

/// Red, green, blue and opacity from 0 to 1.
struct Ink {
    double red;
    double green;
    double blue;
    double opacity = 1.0;
};

/// In points, from the upper left corner.
struct Box {
    double x;
    double y;
    double width;
    double height;

    double getRight() const { return x + width; }
    double getBottom() const { return y + height; }
};

struct Font {
    double size;
    bool isBold = false;
};

/// Of a line.
struct Dashes {
    std::vector<double> lengths{}; ///< of ink and gap in turn; none for a line without gaps
    double start = 0.0;            ///< how far into them the line begins
};

/// Where a text's place lies in it: 0 at its left, 0.5 in its middle, 1 at its right.
enum class Align { Left, Middle, Right };

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

/// An opaque picture; in a state of failure where there is no memory for it.
Surface makeImage(int width, int height);

/// What is drawn on, in points. Whatever the library finds wrong stays in its state until
/// `check`.
class Canvas {
public:
    explicit Canvas(cairo_surface_t* surface);
    ~Canvas();
    Canvas(Canvas const&) = delete;
    Canvas& operator=(Canvas const&) = delete;

    /// Throws FigureError or std::bad_alloc if anything has failed so far.
    void check() const;

    void scale(double factor);

    /// Everything until `unclip` stays within the box.
    void clip(Box const& box);
    void unclip();

    void fill(Box const& box, Ink const& ink);
    void frame(Box const& box, Ink const& ink, double width);

    /// Breaks where a place is not finite.
    void line(std::vector<FigurePoint> const& places, Ink const& ink, double width,
              Dashes const& dashes = {});
    void fillShape(std::vector<FigurePoint> const& places, Ink const& ink);
    void circle(FigurePoint const& centre, double radius, Ink const& inside, Ink const& outline);

    /// On the base line at `place`, in a wide white outline if `hasHalo`.
    void text(FigurePoint const& place, std::string const& text, Font const& font, Ink const& ink,
              Align align, bool hasHalo = false);

    /// The text from below to above, its middle at `place`.
    void textUpwards(FigurePoint const& place, std::string const& text, Font const& font,
                     Ink const& ink);

    double measure(std::string const& text, Font const& font);

    /// The text, or as much of it as fits and an ellipsis.
    std::string cut(std::string const& text, Font const& font, double width);

private:
    void choose(Font const& font);
    void choose(Ink const& ink);

    cairo_t* context;
};
