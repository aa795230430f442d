#include "editor/view/window/ReadingState.h"

#include "files/PrintableText.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <cmath>

namespace {

constexpr int longReading = 150; // milliseconds

} // namespace

ReadingState::ReadingState(Plate& readPlate, QWidget* parent)
    : QWidget(parent), plate(readPlate), text(new QLabel(this))
{
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    auto* const end = new QToolButton(this);
    end->setText(QString::fromUtf8("×"));
    end->setAutoRaise(true);
    end->setFocusPolicy(Qt::TabFocus);
    end->setAccessibleName(tr("Give up reading"));
    end->setToolTip(tr("Give up reading: what is shown stays (Esc)"));
    connect(end, &QToolButton::clicked, this, [this] { plate.giveUp(); });
    text->setTextFormat(Qt::PlainText);
    row->addWidget(text);
    row->addWidget(end);
    hide();
    patience.setSingleShot(true);
    patience.setInterval(longReading);
    connect(&patience, &QTimer::timeout, this, [this] {
        showText();
        show();
    });
    plate.addProgressHandler(&progressed);
    plate.addHandler(&plateChanged);
}

QString ReadingState::getText() const
{
    return isHidden() ? QString() : text->text();
}

void ReadingState::refresh()
{
    if (!plate.isReading()) {
        patience.stop();
        hide();
    } else if (!isHidden()) {
        showText();
    } else if (!patience.isActive()) {
        patience.start();
    }
}

void ReadingState::showText()
{
    std::string const name = makePrintable(plate.getAwaited().filename().string());
    QString const share = plate.getShare().has_value()
                              ? tr(" %1 %").arg(std::floor(*plate.getShare() * 100.0))
                              : QString::fromUtf8("…");
    text->setText(tr("reading %1%2").arg(QString::fromStdString(name), share));
}

#include "editor/view/window/moc_ReadingState.cpp"
