#include "editor/view/window/WindowLayout.h"

#include "editor/view/window/Actions.h"
#include "editor/view/window/Settings.h"

#include <QDockWidget>
#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>
#include <algorithm>
#include <utility>

namespace {

QString const geometryKey = "window/geometry";
QString const panelsKey = "window/panels";

/// As much of a window's title as must be on a screen for a hand to reach it.
constexpr int reachable = 60;

bool isReachable(QRect const& frame)
{
    QRect const title(frame.left(), frame.top(), frame.width(), 1);
    auto const screens = QGuiApplication::screens();
    return std::any_of(screens.begin(), screens.end(), [&](QScreen const* screen) {
        QRect const seen = title & screen->availableGeometry();
        return seen.width() >= reachable && !seen.isEmpty();
    });
}

void bringBack(QWidget& window)
{
    if (!isReachable(window.frameGeometry())) {
        QRect const room = QGuiApplication::primaryScreen()->availableGeometry();
        window.resize(window.size().boundedTo(room.size()));
        window.move(room.center() - window.rect().center());
    }
}

} // namespace

WindowLayout::WindowLayout(QMainWindow& laidOut, QList<QDockWidget*> panels,
                           std::function<void()> sizing)
    : QObject(&laidOut), window(laidOut), docks(std::move(panels)), first(window.saveState()),
      giveSizes(std::move(sizing))
{
    for (QDockWidget* const dock : docks) {
        actions << dock->toggleViewAction();
    }
    actions << makeAction(&window, {tr("Reset la&yout"), tr("All panels as they were at first")},
                          [this] { reset(); });
    giveSizes();
}

void WindowLayout::restore()
{
    auto const settings = openSettings();
    window.restoreGeometry(settings->value(geometryKey).toByteArray());
    bringBack(window);
    if (!window.restoreState(settings->value(panelsKey).toByteArray())) {
        reset();
    }
    for (QDockWidget* const dock : docks) {
        if (dock->isFloating()) {
            bringBack(*dock);
        }
    }
}

void WindowLayout::save() const
{
    auto const settings = openSettings();
    settings->setValue(geometryKey, window.saveGeometry());
    settings->setValue(panelsKey, window.saveState());
}

void WindowLayout::reset()
{
    window.restoreState(first);
    giveSizes();
}

#include "editor/view/window/moc_WindowLayout.cpp"
