#include "editor/view/picture/PicturePanel.h"

#include <QVBoxLayout>
#include <cmath>

namespace {

/// Six digits; what is no number by name.
QString formatValue(float value)
{
    return std::isnan(value)   ? QStringLiteral("nan")
           : std::isinf(value) ? QString(value > 0 ? "inf" : "-inf")
                               : QString::number(static_cast<double>(value), 'g', 6);
}

QString formatColour(CoRgbaColorTyped<float> const& colour)
{
    return formatValue(colour.red) + "  " + formatValue(colour.green) + "  " +
           formatValue(colour.blue) + "  a " + formatValue(colour.alpha);
}

QString formatWindow(GeRectangle<int> const& window)
{
    return QString::fromUtf8("%1 × %2").arg(window.getWidth()).arg(window.getHeight());
}

} // namespace

PicturePanel::PicturePanel(Document& editedDocument, Plate& shownPlate, int nbWorkers,
                           QWidget* parent)
    : QWidget(parent), document(editedDocument), plate(shownPlate),
      renderer(document.getNode().getTool(), nbWorkers,
               ViewRenderer::Callbacks{[this](ViewImage const& image, bool isFinal) {
                                           picture->showImage(image);
                                           if (isFinal && !renderer.isBusy()) {
                                               emit settled();
                                           }
                                       },
                                       [this](std::exception_ptr const& failure) {
                                           emit failed(failure);
                                           emit settled();
                                       }}),
      probe(document, plate, [this] { showPixel(); }), picture(new PictureWidget(this))
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(picture);
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    plate.addHandler(&plateChanged);
    connect(picture, &PictureWidget::viewChanged, this, &PicturePanel::showView);
    connect(picture, &PictureWidget::pixelPointed, this,
            [this](int x, int y) { probe.point(x, y); });
    connect(picture, &PictureWidget::pointerLeft, this, [this] { probe.leave(); });
}

PicturePanel::~PicturePanel() noexcept = default;

void PicturePanel::setTransform(ViewTransform const& newTransform)
{
    transform = newTransform;
    showView();
}

void PicturePanel::takePlate(PlateNotice const& notice)
{
    if (notice.failure) {
        emit failed(notice.failure);
        emit settled();
        return;
    }
    HeldPicture const& held = *plate.getPicture();
    renderer.setPicture(plate.getPicture());
    picture->setWindows(held.info.dataWindow, held.info.displayWindow);
}

void PicturePanel::showView()
{
    if (plate.getPicture() == nullptr) {
        return;
    }
    ViewRequest request = picture->getNeeded();
    request.transform = transform;
    request.time = document.getTime();
    renderer.request(request, document.getNode());
    probe.refresh();
    bool const isNeutral = transform == ViewTransform();
    emit viewTextChanged(
        QString::fromStdString(plate.getFile().filename().string()) + "   " +
        formatWindow(plate.getPicture()->info.dataWindow) + "   " +
        QString::number(picture->getZoom() * 100.0, 'f', 0) + " %   " +
        (isNeutral ? tr("neutral view") : tr("view: adjusted, the result is not")));
}

void PicturePanel::showPixel()
{
    auto const& reading = probe.getReading();
    QString text;
    if (reading.has_value()) {
        text = QString("x %1  y %2     in  %3")
                   .arg(reading->x)
                   .arg(reading->y)
                   .arg(formatColour(reading->in));
        text += reading->out.has_value() ? "     out  " + formatColour(*reading->out) : QString();
    }
    emit pixelTextChanged(text);
}
