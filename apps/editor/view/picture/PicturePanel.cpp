#include "editor/view/picture/PicturePanel.h"

#include "editor/view/picture/ValueText.h"
#include "files/PrintableText.h"
#include "session/Failures.h"

#include <QVBoxLayout>
#include <cmath>

namespace {

constexpr int mostNameWidth = 170; // the pixel's values need the room

QString formatSize(GeRectangle<int> const& window)
{
    return QString::fromUtf8("%1 × %2").arg(window.getWidth()).arg(window.getHeight());
}

/// The pixels that there are, and their place where that is not the display window.
QString describeWindows(ImageInfo const& info)
{
    GeRectangle<int> const& data = info.dataWindow;
    GeRectangle<int> const& display = info.displayWindow;
    return data == display ? formatSize(data)
                           : PicturePanel::tr("%1 at %2,%3 in %4")
                                 .arg(formatSize(data))
                                 .arg(data.x0)
                                 .arg(data.y0)
                                 .arg(formatSize(display));
}

/// What makes it differ from the neutral one.
QString describe(ViewTransform const& transform)
{
    QStringList parts;
    if (transform.processor != nullptr) {
        parts << QString::fromStdString(transform.processor->getName());
    } else if (transform.isSrgb) {
        parts << "sRGB";
    }
    if (transform.exposure != 0.0) {
        parts << PicturePanel::tr("%1%2 stops")
                     .arg(transform.exposure > 0.0 ? "+" : QString::fromUtf8("\u2212"))
                     .arg(std::fabs(transform.exposure));
    }
    switch (transform.channels) {
    case ViewTransform::Rgb: break;
    case ViewTransform::Red: parts << PicturePanel::tr("red"); break;
    case ViewTransform::Green: parts << PicturePanel::tr("green"); break;
    case ViewTransform::Blue: parts << PicturePanel::tr("blue"); break;
    case ViewTransform::Alpha: parts << PicturePanel::tr("alpha"); break;
    }
    return parts.join(", ");
}

} // namespace

PicturePanel::PicturePanel(Document& editedDocument, Plate& shownPlate, Picks& shownPicks,
                           int nbWorkers, QWidget* parent)
    : QWidget(parent), document(editedDocument), plate(shownPlate),
      renderer(document.getNode().getTool(), nbWorkers,
               ViewRenderer::Callbacks{
                   [this](auto side, auto const& image, auto stage) {
                       picture->showImage(side, image);
                       emit shown(stage);
                       emit imageShown(image->time); // whatever is asked for meanwhile
                   },
                   [this](std::exception_ptr const& failure) { emit failed(failure); },
                   [this] {
                       emit imageShown(requestedTime);
                       emit settled();
                   }}),
      picks(shownPicks), picture(new PictureWidget(picks, this)), controls(new ViewControls(*this)),
      compareControls(new CompareControls(*picture, this))
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(picture);
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    plate.addHandler(&plateChanged);
    picks.addHandler(&picksChanged);
    connect(picture, &PictureWidget::viewChanged, this, &PicturePanel::showView);
}

PicturePanel::~PicturePanel() noexcept = default;

KeyHelps PicturePanel::getKeyHelps() const
{
    return {{tr("Wheel, two fingers"), tr("zoom about the cursor")},
            {tr("Middle or right button, Alt and drag"), tr("pan")},
            {tr("S"), tr("show the source as long as it is held")},
            {tr("Alt+Arrows"), tr("move and turn the wipe")},
            {tr("Click, P"), tr("set a pick")},
            {tr("Drag"), tr("set the pick of an area, or move a pick")},
            {tr("N"), tr("select the next pick")},
            {tr("Arrows"), tr("pan, or move the selected pick; Shift by ten, Ctrl its size")},
            {tr("Delete, Shift+Delete"), tr("remove the selected pick, all picks")},
            {tr("Esc"), tr("take back what is being dragged")}};
}

void PicturePanel::setTransform(ViewTransform const& newTransform)
{
    transform = newTransform;
    showView();
}

void PicturePanel::setPlaying(bool newIsPlaying)
{
    isPlaying = newIsPlaying;
    if (!isPlaying) {
        showView();
    }
}

void PicturePanel::takePlate(PlateNotice const& notice)
{
    if (notice.failure) {
        emit failed(notice.failure);
        emit settled();
        return;
    }
    renderer.setPicture(plate.getPicture());
    picture->setStepping(plate.isSequence());
    bool const isAnotherPlate = shownOpening != plate.getOpening();
    shownOpening = plate.getOpening();
    if (plate.getPicture() == nullptr) {
        picture->showGap(QString::fromStdString(makePrintable(plate.getGap())));
        tellView();
        emit settled();
        return;
    }
    ImageInfo const& info = plate.getPicture()->info;
    if (isAnotherPlate) {
        picture->setWindows(info.dataWindow, info.displayWindow);
    } else {
        picture->changeWindows(info.dataWindow, info.displayWindow);
    }
}

/// A frame has the look of its moment.
double PicturePanel::getTime() const
{
    return plate.isSequence() ? static_cast<double>(plate.getShownFrame()) : document.getTime();
}

void PicturePanel::showView()
{
    if (plate.getPicture() == nullptr) {
        return;
    }
    ViewRequest request = picture->getNeeded();
    request.transform = transform;
    request.time = requestedTime = getTime();
    request.isQuick = isPlaying;
    renderer.request(request, document.getNode());
    tellView();
}

void PicturePanel::tellView()
{
    QString const name = QString::fromStdString(makePrintable(plate.getFile().filename().string()));
    QStringList parts{fontMetrics().elidedText(name, Qt::ElideMiddle, mostNameWidth)};
    if (plate.getPicture() != nullptr) {
        double const percent = picture->getZoom() * 100.0;
        parts << describeWindows(plate.getPicture()->info)
              << QString::number(percent, 'g', percent < 100.0 ? 3 : 4) + " %"
              << (transform == ViewTransform() ? tr("neutral view")
                                               : tr("view: ") + describe(transform));
    } else {
        parts << tr("no picture");
    }
    emit viewTextChanged(parts.join("   "), name);
}

void PicturePanel::showPixel()
{
    auto const& hovered = picks.getHovered();
    QString text;
    if (hovered.has_value() && hovered->in.has_value()) {
        text = tr("x %1  y %2   in  ").arg(hovered->place.x0).arg(hovered->place.y0) +
               ValueText::formatColour(hovered->in->mean);
    }
    if (hovered.has_value() && hovered->out.has_value()) {
        text += tr(" out  ") + ValueText::formatColour(hovered->out->mean);
    }
    emit pixelTextChanged(text);
}

#include "editor/view/picture/moc_PicturePanel.cpp"
