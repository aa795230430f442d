#include "editor/view/window/FittedLabel.h"

FittedLabel::FittedLabel(QWidget* parent, Qt::TextElideMode leftOut) : QLabel(parent), mode(leftOut)
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
        line = fontMetrics().elidedText(line, mode, width());
    }
    setText(lines.join('\n'));
}

#include "editor/view/window/moc_FittedLabel.cpp"
