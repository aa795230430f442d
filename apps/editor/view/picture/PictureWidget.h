#pragma once

#include "editor/model/picture/ViewImage.h"
#include "editor/model/picture/ViewRenderer.h"
#include "runtime/engine/ImageSource.h"

#include <QImage>
#include <QPointF>
#include <QWidget>

/// The picture: pans by dragging, zooms about the cursor by the wheel, F fits, 1 shows pixel for
/// pixel. It knows which region it needs and shows what it is given.
class PictureWidget : public QWidget {
    Q_OBJECT

public:
    explicit PictureWidget(QWidget* parent = nullptr);

    /// Begins with a picture of these windows, fitted.
    void setWindows(GeRectangle<int> const& dataWindow, GeRectangle<int> const& displayWindow);

    /// Shows a region; it stays until another comes.
    void showImage(ViewImage const& image);

    /// What is to be rendered for this view: the visible region and its reduction.
    ViewRequest getNeeded() const;

    double getZoom() const { return zoom; }
    void fit();

    /// Screen pixels to one of the picture, about a place of the widget.
    void setZoom(double newZoom, QPointF const& about);
    void showPixels() { setZoom(1.0, rect().center()); }

signals:
    /// Another region or size is visible.
    void viewChanged();
    /// The cursor is over a pixel of the data window.
    void pixelPointed(int x, int y);
    void pointerLeft();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QSize getScreenSize() const;
    QPointF toScreen(QPointF const& place) const;
    QRectF toScreen(GeRectangle<int> const& region) const;
    void settle();

    GeRectangle<int> data{};
    GeRectangle<int> display{};
    QImage shown;
    GeRectangle<int> shownRegion{};
    int shownReduction = 1;
    double zoom = 1.0;
    QPointF origin; ///< in the picture's pixels, at the widget's upper left corner
    QPointF dragged;
    bool isFitted = true;
};
