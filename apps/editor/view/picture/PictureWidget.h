#pragma once

#include "editor/model/picture/ViewImage.h"
#include "editor/model/picture/ViewRenderer.h"
#include "editor/view/picture/PickMarks.h"
#include "editor/view/picture/PickTable.h"
#include "runtime/engine/ImageSource.h"

#include <QImage>
#include <QPointF>
#include <QWidget>

/// The picture: zooms about the cursor by the wheel, pans by the middle or right button or Alt and
/// the left one; the left button is that of the picks. It knows which region it needs and shows
/// what it is given.
class PictureWidget : public QWidget {
    Q_OBJECT

public:
    explicit PictureWidget(Picks& shownPicks, QWidget* parent = nullptr);

    /// Begins with a picture of these windows, fitted.
    void setWindows(GeRectangle<int> const& dataWindow, GeRectangle<int> const& displayWindow);

    /// Shows a region; it stays until another comes.
    void showImage(ViewImage const& image);

    /// What is to be rendered for this view: the visible region and its reduction.
    ViewRequest getNeeded() const;

    PickMarks& getMarks() { return marks; }
    GeRectangle<int> const& getDataWindow() const { return data; }

    /// Between the widget's places and those of the picture.
    QPointF toPicture(QPointF const& place) const;
    QPointF toWidget(QPointF const& place) const;
    QRectF toWidget(GeRectangle<int> const& region) const;

    /// The pixel under the cursor, or else the middle one of what is visible.
    GeRectangle<int> findPointedPixel() const;

    double getZoom() const { return zoom; }
    void fit();

    /// Screen pixels to one of the picture, about a place of the widget.
    void setZoom(double newZoom, QPointF const& about);
    void showPixels() { setZoom(1.0, rect().center()); }
    void zoomIn(); ///< by a notch of the wheel
    void zoomOut();

signals:
    /// Another region or size is visible.
    void viewChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    QSize getScreenSize() const;
    QPointF toScreen(QPointF const& place) const;
    QRectF toScreen(GeRectangle<int> const& region) const;
    void settle();
    void pan(QPointF const& by);
    void hover(QPointF const& place);
    bool pressKey(QKeyEvent const& event);

    Picks& picks;
    PickMarks marks;
    PickTable* table;

    GeRectangle<int> data{};
    GeRectangle<int> display{};
    QImage shown;
    GeRectangle<int> shownRegion{};
    int shownReduction = 1;
    double zoom = 1.0;
    QPointF origin;                ///< in the picture's pixels, at the widget's upper left corner
    std::optional<QPointF> panned; ///< where the cursor was last while it pans
    bool hasPanned = false;        ///< since a button went down
    bool isFitted = true;
    CbFunction<PicksNotice const> picksChanged{[this](PicksNotice const& notice) {
        if (notice == PicksNotice::Places) {
            update();
        }
    }};
};
