#pragma once

#include "editor/model/picture/DisplayViews.h"

#include <QObject>
#include <QString>
#include <exception>
#include <memory>
#include <string>

class QAction;
class QActionGroup;
class QMenu;

/// The displays, views and looks of a configuration as a menu, which is filled when they have been
/// read.
class DisplayMenu : public QObject {
    Q_OBJECT

public:
    DisplayMenu(std::string const& configFile, QWidget* parent);
    ~DisplayMenu() noexcept override;

    QMenu& getMenu() { return *menu; }

    /// Reads them, unless that has been done.
    void read() { views.read(); }

    /// Back to the plain view.
    void clear();

signals:
    /// Results are to be shown by it; null: plainly.
    void chosen(std::shared_ptr<DisplayProcessor const> const& processor);
    void failed(std::exception_ptr const& failure);

private:
    void fill();
    void addViews();
    void addLooks();
    QAction* addChoice(QMenu& to, QActionGroup& group, QString const& text);
    void choose();
    void giveUp(std::exception_ptr const& failure);

    DisplayViews views;
    QMenu* menu;
    QActionGroup* viewChoices;
    QActionGroup* lookChoices;
    QAction* plain = nullptr;
};
