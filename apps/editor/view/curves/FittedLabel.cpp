#include "editor/view/curves/FittedLabel.h"

FittedLabel::FittedLabel(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

void FittedLabel::setLines(QString const& lines)
{
    whole = lines;
    setToolTip(whole);
    setAccessibleName(whole);
    fit();
}

void FittedLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    fit();
}

void FittedLabel::fit()
{
    QStringList lines = whole.split('\n');
    for (QString& line : lines) {
        line = fontMetrics().elidedText(line, Qt::ElideRight, width());
    }
    setText(lines.join('\n'));
}

#include "editor/view/curves/moc_FittedLabel.cpp"
