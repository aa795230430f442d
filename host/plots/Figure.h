#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What a figure shows, without how it is drawn: panels beside each other, each with lines over a
/// background of histograms. Texts are UTF-8. Coordinates that are not finite interrupt a line.

struct FigurePoint {
    double x;
    double y;
};

/// Whose a thing is. Channels differ by colour and by dashes, so that they are told apart in black
/// and white, too.
enum class FigureTone {
    Neutral, ///< all channels alike
    Red,
    Green,
    Blue
};

struct FigureLine {
    FigureTone tone;
    std::string label; ///< at its end; empty for none
    std::vector<FigurePoint> points;
    bool isOnAnother = false; ///< of the same points, which stays visible below
};

/// A key of a curve with the handles on either side.
struct FigureKey {
    FigureTone tone;
    FigurePoint key;
    std::vector<FigurePoint> handles;
};

/// A place on a line that is pointed at.
struct FigureMark {
    FigureTone tone;
    FigurePoint place;
};

/// Counts in equally wide classes that cover the panel's x axis.
struct FigureHistogram {
    FigureTone tone;
    std::vector<double> counts;
};

struct FigureAxis {
    enum class Unit {
        Value,
        Stop ///< coordinates are stops; whole numbers with signs
    };

    double low;
    double high; ///< above `low`
    std::string label;
    Unit unit = Unit::Value;
};

struct FigurePanel {
    std::string title;
    std::string remark; ///< beside the title; empty for none
    FigureAxis x;
    FigureAxis y;
    std::vector<FigureHistogram> histograms;
    std::vector<FigurePoint> reference; ///< a faint line: what leaves values as they are
    std::vector<FigureLine> lines;
    std::vector<FigureKey> keys;
    std::vector<FigureMark> marks;
};

struct Figure {
    std::string title;
    std::string subtitle; ///< cut where it is too long
    std::vector<FigurePanel> panels;
    std::string referenceText; ///< what the legend says of each kind of thing
    std::string histogramText;
    std::string markText;
};
