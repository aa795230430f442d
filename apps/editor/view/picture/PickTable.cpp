#include "editor/view/picture/PickTable.h"

#include "editor/view/picture/ValueText.h"
#include "editor/view/window/Theme.h"

#include <QStringList>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr int fromEdge = 8;
constexpr int headWidth = 13;

/// Of what is not known, dashes. Alpha is the pointed pixel's: the tool leaves it as it is.
QString formatSide(std::optional<PickValues> const& values, Pixel PickValues::*which)
{
    if (!values.has_value()) {
        return QString("-").leftJustified(ValueText::columnWidth).repeated(3);
    }
    return ValueText::formatColour(*values.*which).left(3 * ValueText::columnWidth);
}

QString formatCounts(std::optional<PickValues> const& values)
{
    QStringList counts;
    if (values.has_value() && values->nans > 0) {
        counts << QString("%1 nan").arg(values->nans);
    }
    if (values.has_value() && values->infinities > 0) {
        counts << QString("%1 inf").arg(values->infinities);
    }
    return counts.join(", ").leftJustified(3 * ValueText::columnWidth);
}

QStringList formatPick(Pick const& pick)
{
    auto const line = [&](QString const& head, Pixel PickValues::*which) {
        return head.leftJustified(headWidth) + formatSide(pick.in, which) +
               formatSide(pick.out, which);
    };
    QString const head = QString("%1  %2").arg(pick.number).arg(ValueText::formatPlace(pick.place));
    if (!pick.isArea()) {
        return {line(head, &PickValues::mean)};
    }
    QStringList lines{head, line("   mean", &PickValues::mean),
                      line("   least", &PickValues::least),
                      line("   greatest", &PickValues::greatest)};
    QString const counts = formatCounts(pick.in) + formatCounts(pick.out);
    if (!counts.trimmed().isEmpty()) {
        lines << QString("   without").leftJustified(headWidth) + counts;
    }
    return lines;
}

} // namespace

PickTable::PickTable(Picks& shownPicks, QWidget* picture) : QLabel(picture), picks(shownPicks)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setTextFormat(Qt::PlainText);
    setFont(ValueText::getFont());
    setAccessibleName(tr("Picks"));
    setStyleSheet("background: rgba(24, 24, 24, 225); color: #dedede; padding: 6px;"
                  "border-radius: 4px;");
    hide();
    picks.addHandler(&changed);
}

void PickTable::place()
{
    adjustSize();
    move(fromEdge, parentWidget()->height() - height() - fromEdge);
}

void PickTable::show(PicksNotice notice)
{
    if (notice == PicksNotice::Hovered) {
        return;
    }
    QStringList lines;
    lines << QString().leftJustified(headWidth) +
                 tr("in").leftJustified(3 * ValueText::columnWidth) + tr("out");
    for (Pick const& pick : picks.getPicks()) {
        lines << formatPick(pick);
    }
    setText(lines.join('\n'));
    setVisible(!picks.getPicks().empty());
    place();
}

#include "editor/view/picture/moc_PickTable.cpp"
