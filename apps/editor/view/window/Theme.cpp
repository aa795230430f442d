#include "editor/view/window/Theme.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QProxyStyle>
#include <QStyleOption>

namespace {

/// The toolkit's own style, but for what can hardly be seen on dark grey.
class EditorStyle : public QProxyStyle {
public:
    EditorStyle() : QProxyStyle("Fusion") {}

    int styleHint(StyleHint hint, QStyleOption const* option, QWidget const* widget,
                  QStyleHintReturn* data) const override
    {
        // A shadow below it makes disabled text a blur.
        return hint == SH_EtchDisabledText ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
    }

    void drawPrimitive(PrimitiveElement element, QStyleOption const* option, QPainter* painter,
                       QWidget const* widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (element == PE_IndicatorCheckBox) {
            bool const isEnabled = option->state & State_Enabled;
            bool const hasFocus = option->state & State_HasFocus;
            drawBorder(*painter, option->rect,
                       hasFocus    ? Theme::accent
                       : isEnabled ? Theme::outline
                                   : Theme::frame);
        } else if (element == PE_FrameMenu) {
            drawBorder(*painter, option->rect, Theme::frame);
        }
    }

    QIcon standardIcon(StandardPixmap icon, QStyleOption const* option,
                       QWidget const* widget) const override
    {
        // What a narrow window has no room for must not seem to be lost.
        return icon == SP_ToolBarHorizontalExtensionButton
                   ? makeChevrons()
                   : QProxyStyle::standardIcon(icon, option, widget);
    }

private:
    static QIcon makeChevrons()
    {
        constexpr int size = 24;
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Theme::text, 2.5));
        for (double const x : {4.0, 12.0}) {
            painter.drawPolyline(QPolygonF({{x, 5.0}, {x + 7.0, 12.0}, {x, 19.0}}));
        }
        painter.end();
        return QIcon(pixmap);
    }

    static void drawBorder(QPainter& painter, QRect const& around, QColor const& color)
    {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(color);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(around.adjusted(0, 0, -1, -1));
        painter.restore();
    }
};

} // namespace

void Theme::apply(QApplication& application)
{
    QApplication::setStyle(new EditorStyle);
    QPalette palette;
    palette.setColor(QPalette::Window, panel);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, panel);
    palette.setColor(QPalette::Button, QColor(66, 66, 66));
    for (auto const role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, QColor(120, 120, 120));
    }
    palette.setColor(QPalette::ToolTipBase, field);
    palette.setColor(QPalette::PlaceholderText, dimText);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    palette.setColor(QPalette::Light, QColor(80, 80, 80));
    palette.setColor(QPalette::Dark, QColor(28, 28, 28));
    QApplication::setPalette(palette);
    application.setStyleSheet(
        "QLineEdit { background: #202020; border: 1px solid #464646; border-radius: 3px;"
        "  padding: 2px 5px; }"
        "QLineEdit:focus { border-color: #e8a23c; }"
        "QLineEdit[refused=\"true\"] { border-color: #ff806e; }"
        "QToolBar { spacing: 6px; padding: 4px; border: none; }"
        "QToolButton:checked { background: #5a4a30; border: 1px solid #e8a23c;"
        "  border-radius: 3px; }"
        "QToolButton::menu-indicator { image: none; }"
        "QStatusBar::item { border: none; }");
}
