#pragma once

#include <QObject>
#include <QPointF>
#include <QPolygonF>
#include <optional>
#include <vector>

class PictureWidget;
class QKeyEvent;
class QPainter;

/// The line between source and result: dragged by its middle or anywhere along it, turned by the
/// knobs beside the middle, or both by Alt and the arrows. It stays with the picture. The picture
/// hands its events on; who takes one returns true. Places are the pane's.
class WipeLine : public QObject {
    Q_OBJECT

public:
    explicit WipeLine(PictureWidget& itsPicture);

    bool isShown() const { return shown; }
    /// When it is shown for the first time, in the middle of what is visible.
    void setShown(bool isToBeShown);
    /// Upright, in the middle of what is visible.
    void reset();

    /// The side of the pane that the source is on.
    QPolygonF getSourceSide() const;

    /// The corners of the pane to name the sides in, of those that are visible.
    struct Label {
        Qt::Corner corner;
        bool isSource;
    };
    std::vector<Label> findLabels() const;

    void paint(QPainter& painter) const;
    bool press(QPointF const& place);
    bool move(QPointF const& place);
    bool release();
    bool pressKey(QKeyEvent const& event);

private:
    enum class Grip { Middle, Line, Knob };
    struct Drag {
        Grip grip;
        QPointF before; ///< the middle
        double angleBefore;
        QPointF begin;
    };

    std::optional<Grip> findGrip(QPointF const& place) const;
    QPointF getMiddle() const; ///< in the pane
    QPointF getAcross() const; ///< of length 1, away from the source
    QPointF getAlong() const;  ///< of length 1

    PictureWidget& picture;
    bool shown = false;
    bool isPlaced = false;
    QPointF middle;     ///< in the picture
    double angle = 0.0; ///< in degrees; 0 is upright with the source on the left
    std::optional<Drag> drag;
};
