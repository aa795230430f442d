#include "editor/view/picture/ValueText.h"

#include <QFontDatabase>
#include <cmath>

QFont ValueText::getFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(11);
    return font;
}

QString ValueText::formatValue(float value)
{
    return std::isnan(value)   ? QStringLiteral("nan")
           : std::isinf(value) ? QString(value > 0 ? "inf" : "-inf")
                               : QString::number(static_cast<double>(value), 'g', 6);
}

QString ValueText::formatColour(CoRgbaColorTyped<float> const& colour)
{
    QString text;
    for (float const value : {colour.red, colour.green, colour.blue, colour.alpha}) {
        text += formatValue(value).leftJustified(columnWidth);
    }
    return text;
}

QString ValueText::formatPlace(GeRectangle<int> const& place)
{
    QString const corner = QString("%1,%2").arg(place.x0).arg(place.y0);
    bool const isArea = place.getWidth() > 1 || place.getHeight() > 1;
    return isArea ? corner +
                        QString::fromUtf8("  %1 × %2").arg(place.getWidth()).arg(place.getHeight())
                  : corner;
}
