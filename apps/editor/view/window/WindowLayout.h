#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <functional>

class QAction;
class QDockWidget;
class QMainWindow;

/// The window's size and place and its docked panels: what is remembered from one run to the next,
/// and the way back to how it was made.
class WindowLayout : public QObject {
    Q_OBJECT

public:
    /// Of a window with these panels, docked as they are at first; `sizing` gives them their sizes.
    WindowLayout(QMainWindow& laidOut, QList<QDockWidget*> panels, std::function<void()> sizing);

    /// Shows and hides the panels, and resets; for a menu.
    QList<QAction*> const& getActions() const { return actions; }

    /// As it was when it was last saved, as far as that can be read and fits the screens.
    void restore();
    void save() const;

private:
    void reset();

    QMainWindow& window;
    QList<QDockWidget*> docks;
    QByteArray first;
    std::function<void()> giveSizes;
    QList<QAction*> actions;
};
