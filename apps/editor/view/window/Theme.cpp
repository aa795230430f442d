#include "editor/view/window/Theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

void Theme::apply(QApplication& application)
{
    QApplication::setStyle(QStyleFactory::create("Fusion"));
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
