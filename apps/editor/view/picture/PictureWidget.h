#pragma once

#include "editor/model/picture/ViewGeometry.h"
#include "editor/model/picture/ViewRenderer.h"
#include "editor/view/picture/PickMarks.h"
#include "editor/view/picture/PickTable.h"
#include "editor/view/picture/WipeLine.h"

#include <QImage>
#include <QPointF>
#include <QWidget>
#include <array>
#include <memory>
#include <optional>

/// The picture: the result, the source while a key is held, or both along a line or side by side.
/// The wheel zooms about the cursor; the middle or right button, or Alt and the left one, pan; the
/// left button is that of the line and of the picks. It knows what it needs and shows what it is
/// given.
class PictureWidget : public QWidget {
    Q_OBJECT

public:
    enum class Compare { Off, Wipe, SideBySide };

    explicit PictureWidget(Picks& shownPicks, QWidget* parent = nullptr);

    /// Takes a picture of these windows. It is fitted, and nothing is shown at first, unless the
    /// one before had the same.
    void setWindows(GeRectangle<int> const& dataWindow, GeRectangle<int> const& displayWindow);

    /// Goes on with a picture of these windows: another frame, looked at in the same way.
    void changeWindows(GeRectangle<int> const& dataWindow, GeRectangle<int> const& displayWindow);

    /// Shows no picture but why there is none, until windows come again.
    void showGap(QString const& reason);

    /// Whether the left and right arrows step through frames, unless they move a pick; otherwise
    /// they pan.
    void setStepping(bool newIsStepping) { isStepping = newIsStepping; }

    /// Shows a side; it stays until another image comes.
    void showImage(ViewRenderer::Side side, std::shared_ptr<ViewImage const> const& image);

    /// What is to be rendered for this view.
    ViewRequest getNeeded() const;

    void setCompare(Compare newCompare);
    Compare getCompare() const { return compare; }
    /// Shows the source alone for as long.
    void holdSource(bool isToBeHeld);
    WipeLine& getWipe() { return wipe; }

    PickMarks& getMarks() { return marks; }
    GeRectangle<int> const& getDataWindow() const { return geometry.getDataWindow(); }

    /// The part of the widget that shows the picture; there are two of that size side by side. In
    /// it, from the widget's corner, lie the places below.
    QRect getPane() const;
    QPointF toPicture(QPointF const& place) const;
    QPointF toWidget(QPointF const& place) const;
    QRectF toWidget(GeRectangle<int> const& region) const;

    /// The pixel under the cursor, or else the middle one of what is visible.
    GeRectangle<int> findPointedPixel() const;

    double getZoom() const { return geometry.getZoom(); }
    void fit();

    /// Screen pixels to one of the picture, about a place of the pane.
    void setZoom(double newZoom, QPointF const& about);
    void showPixels() { setZoom(1.0, QRectF(getPane()).center()); }
    void zoomIn() { stepZoom(1, QRectF(getPane()).center()); } ///< by a notch of the wheel
    void zoomOut() { stepZoom(-1, QRectF(getPane()).center()); }

signals:
    /// Another region or size is visible, or another side.
    void viewChanged();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    using Side = ViewRenderer::Side;

    void updateScreen();
    void settle();
    void stepZoom(int steps, QPointF const& about);
    /// By what fingers and wheels without notches ask for.
    void zoomSmoothly(double factor, QPointF const& about);
    void pan(QPointF const& by);
    void hover(QPointF const& place);
    bool pressKey(QKeyEvent const& event);

    QPointF toPane(QPointF const& place) const;
    QRect getSecondPane() const;
    QRectF toScreen(GeRectangle<int> const& region) const;
    QRectF toScreen(PixelGrid const& grid) const;
    void paintPanes(QPainter& painter) const;
    void paintSide(QPainter& painter, Side side) const;
    void paintImage(QPainter& painter, ViewImage const& image) const;
    void paintWindows(QPainter& painter) const;
    void paintLabels(QPainter& painter) const;

    Picks& picks;
    ViewGeometry geometry;
    PickMarks marks;
    WipeLine wipe;
    PickTable* table;

    std::array<std::shared_ptr<ViewImage const>, ViewRenderer::nbSides> images;
    Compare compare = Compare::Off;
    bool isSourceHeld = false;
    std::optional<QPointF> panned; ///< where the cursor was last while it pans
    bool hasPanned = false;        ///< since a button went down
    double smoothZoom = 1.0;       ///< what a trackpad has asked for so far
    bool isStepping = false;
    QString gapReason; ///< shown instead
    CbFunction<PicksNotice const> picksChanged{[this](PicksNotice const& notice) {
        if (notice == PicksNotice::Places) {
            update();
        }
    }};
};
