#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/curves/CurveEditing.h"
#include "editor/model/document/Document.h"

#include <QWidget>
#include <array>
#include <optional>

/// The node's three adjustment curves over the mode's transfer. A click on a curve adds a key and
/// leaves the shape as it is; keys and handles are dragged (Shift: along one axis; Alt: that handle
/// alone), Delete removes the selected keys, arrows nudge them. A drag from an empty place selects
/// the keys within, Ctrl and a click one more or less. Wheel zooms, the middle button pans, F fits.
/// What is drawn comes from the tool's own sampling.
class CurveWidget : public QWidget {
    Q_OBJECT

public:
    static constexpr int allChannels = -1;

    explicit CurveWidget(Document& editedDocument, QWidget* parent = nullptr);

    /// Which curve is edited: 0 red, 1 green, 2 blue; with allChannels the three take the shape of
    /// the first.
    void setChannel(int newChannel);
    int getChannel() const { return channel; }

    /// The x axis in values, or in stops: powers of two, without 0 and what is below.
    enum class Axis { Linear, Stops };
    void setAxis(Axis newAxis);

    CurveEditing::Selection const& getSelection() const { return selection; }

    /// The only selected key; empty where there is none or there are several.
    std::optional<std::size_t> getSelectedKey() const;
    std::optional<GePoint2<float>> getSelectedPlace() const;
    void placeSelectedKey(GePoint2<float> const& place);
    void setSelectedHandles(CurveEditing::Handles handles);
    void removeSelectedKeys();

    /// Gives the edited curves these points, as one step.
    void apply(std::string const& label, CurvePoints const& points);
    CurvePoints getPoints() const { return document.getCurve(getFirstChannel()); }

    void fitCurve();
    QPointF toWidget(GePoint2<float> const& place) const;

signals:
    void selectionChanged();
    /// An edit could not be made.
    void failed(QString const& sentence);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct Grip {
        std::size_t key;
        std::optional<CurveEditing::Side> handle; ///< empty for the key itself
    };

    int getFirstChannel() const { return channel == allChannels ? 0 : channel; }
    GePoint2<float> toCurve(QPointF const& place) const;
    std::optional<Grip> findGrip(QPointF const& place) const;
    bool isOnCurve(QPointF const& place) const;
    std::vector<float> makeSamplePlaces() const;
    void drawGrid(QPainter& painter) const;
    void drawTransfer(QPainter& painter) const;
    void drawCurve(QPainter& painter, int curve) const;
    void drawKeys(QPainter& painter) const;
    void moveGrip(QPointF const& place, Qt::KeyboardModifiers modifiers);
    void nudge(float dx, float dy, Qt::KeyboardModifiers modifiers);
    void select(CurveEditing::Selection const& keys);
    bool isSelected(std::size_t key) const;
    void toggle(std::size_t key);
    void selectWithin(QRectF const& bounds);
    double toAxis(double x) const;
    double fromAxis(double place) const;
    void refresh();

    Document& document;
    int channel = allChannels;
    Axis axis = Axis::Linear;
    CurveEditing::Selection selection; ///< rising
    std::optional<Grip> gripped;
    CurvePoints pointsAtPress;
    QPointF pressed;
    bool isPanning = false;
    std::optional<QRectF> rubber;           ///< of the widget, while keys are selected by it
    QRectF range{-0.08, -0.08, 1.16, 1.16}; ///< of the axes; y grows upwards
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { refresh(); }};
};
