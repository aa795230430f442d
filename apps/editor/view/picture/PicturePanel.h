#pragma once

#include "editor/model/picture/Picks.h"
#include "editor/model/picture/ViewRenderer.h"
#include "editor/view/picture/CompareControls.h"
#include "editor/view/picture/PictureWidget.h"
#include "editor/view/picture/ViewControls.h"
#include "editor/view/window/Actions.h"

#include <QWidget>
#include <exception>
#include <memory>

/// The picture with how it is looked at: renders what the view needs of the plate, as the document
/// says, and reads the pixel under the cursor.
class PicturePanel : public QWidget {
    Q_OBJECT

public:
    PicturePanel(Document& editedDocument, Plate& shownPlate, Picks& shownPicks, int nbWorkers,
                 QWidget* parent = nullptr);
    ~PicturePanel() noexcept override;

    PictureWidget& getPicture() { return *picture; }
    ViewControls& getControls() { return *controls; }
    CompareControls& getCompareControls() { return *compareControls; }
    KeyHelps getKeyHelps() const;
    ViewTransform const& getTransform() const { return transform; }
    void setTransform(ViewTransform const& newTransform);

    /// While frames follow one another, each is shown once and quickly.
    void setPlaying(bool newIsPlaying);

signals:
    /// The widget has an image that it will paint.
    void shown(ViewRenderer::Stage stage);
    /// All that was asked for of that moment is on the screen, or cannot be.
    void imageShown(double time);
    /// The picture is shown as the values now say, or cannot be.
    void settled();
    void failed(std::exception_ptr const& failure);
    /// The pixel under the cursor; empty for none.
    void pixelTextChanged(QString const& text);
    /// The picture and how it is looked at, and the file's whole name.
    void viewTextChanged(QString const& text, QString const& name);

private:
    void takePlate(PlateNotice const& notice);
    void showView();
    void tellView();
    void showPixel();
    double getTime() const;

    Document& document;
    Plate& plate;
    ViewRenderer renderer;
    Picks& picks;
    ViewTransform transform;
    PictureWidget* picture;
    ViewControls* controls;
    CompareControls* compareControls;
    std::uint64_t shownOpening = 0;
    bool isPlaying = false;
    double requestedTime = 0.0;
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { showView(); }};
    CbFunction<double const> timeChanged{[this](double const&) {
        if (!plate.isSequence()) { // otherwise the frame comes by the plate
            showView();
        }
    }};
    CbFunction<PicksNotice const> picksChanged{[this](PicksNotice const& notice) {
        if (notice == PicksNotice::Hovered) {
            showPixel();
        }
    }};
    CbFunction<PlateNotice const> plateChanged{
        [this](PlateNotice const& notice) { takePlate(notice); }};
};
