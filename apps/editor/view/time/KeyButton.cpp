#include "editor/view/time/KeyButton.h"

#include "editor/view/window/Theme.h"

#include <QPainter>
#include <utility>

namespace {

constexpr double buttonDiamond = 5.0;

} // namespace

void drawDiamond(QPainter& painter, QPointF const& centre, double radius)
{
    QPointF const corners[] = {centre - QPointF(0, radius), centre + QPointF(radius, 0),
                               centre + QPointF(0, radius), centre - QPointF(radius, 0)};
    painter.drawPolygon(corners, 4);
}

KeyButton::KeyButton(Document& editedDocument, std::string itsTitle, Keys::Names valueNames,
                     QWidget* parent)
    : QAbstractButton(parent), document(editedDocument), keys(document), title(std::move(itsTitle)),
      names(std::move(valueNames))
{
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName(tr("Key of %1").arg(QString::fromStdString(title)));
    refresh();
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    connect(this, &QAbstractButton::clicked, this, [this] { keys.toggle(title, names); });
}

void KeyButton::refresh()
{
    presence = keys.find(names);
    setEnabled(presence != Keys::Presence::Never);
    QString const what = QString::fromStdString(title);
    switch (presence) {
    case Keys::Presence::Never: setToolTip({}); break;
    case Keys::Presence::None: setToolTip(tr("Set a key of %1 at this frame").arg(what)); break;
    case Keys::Presence::Elsewhere:
        setToolTip(tr("Set a key of %1 at this frame; it has keys at others").arg(what));
        break;
    case Keys::Presence::Here: setToolTip(tr("Remove the key of %1 at this frame").arg(what));
    }
    setAccessibleDescription(toolTip());
    update();
}

void KeyButton::paintEvent(QPaintEvent*)
{
    if (presence == Keys::Presence::Never) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPointF const centre = QRectF(rect()).center();
    bool const isPointedAt = underMouse() || isDown();
    bool const isKeyed = presence != Keys::Presence::None;
    painter.setPen(QPen(isKeyed       ? Theme::accent
                        : isPointedAt ? Theme::text
                                      : Theme::dimText,
                        isPointedAt ? 1.8 : 1.2));
    painter.setBrush(presence == Keys::Presence::Here ? QBrush(Theme::accent) : Qt::NoBrush);
    drawDiamond(painter, centre, buttonDiamond);
    if (hasFocus()) {
        painter.setPen(QPen(Theme::accent, 1.0, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

#include "editor/view/time/moc_KeyButton.cpp"
