#pragma once

#include <QColor>

class QApplication;

/// The editor's colours: greys without a tint, because pictures are judged beside them, and one
/// accent.
namespace Theme {

inline QColor const surround(38, 38, 38);
inline QColor const panel(50, 50, 50);
inline QColor const field(32, 32, 32);
inline QColor const frame(92, 92, 92);
inline QColor const outline(140, 140, 140); ///< of what can be switched
inline QColor const grid(58, 58, 58);
inline QColor const text(222, 222, 222);
inline QColor const dimText(160, 160, 160);
inline QColor const accent(232, 162, 60);
inline QColor const failure(255, 128, 110);
inline QColor const channels[3] = {{255, 104, 96}, {96, 210, 112}, {110, 160, 255}};

/// Palette and style sheet for the whole program.
void apply(QApplication& application);

} // namespace Theme
