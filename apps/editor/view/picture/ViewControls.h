#pragma once

#include "editor/model/picture/ViewTransform.h"

#include <QAction>
#include <QList>
#include <QObject>
#include <memory>
#include <string>

class DisplayMenu;
class PicturePanel;
class QActionGroup;
class QDoubleSpinBox;
class QToolBar;

/// How the picture is looked at, as menu and toolbar offer it: size, channels, exposure, and the
/// curve or display of the view. Keys count in the picture.
class ViewControls : public QObject {
    Q_OBJECT

public:
    explicit ViewControls(PicturePanel& controlled);

    void addTo(QToolBar& tools);

    /// For a menu, separators among them.
    QList<QAction*> const& getActions() const { return actions; }

private:
    void addSizes();
    void addChannels();
    void addDisplay();
    void addDisplays(std::string const& configFile);
    void showNeutral();
    void chooseChannels(ViewTransform::Channels channels);
    void takeView();

    PicturePanel& panel;
    QList<QAction*> actions;
    QActionGroup* channelGroup;
    QDoubleSpinBox* exposure;
    QAction* fit = nullptr;
    QAction* pixels = nullptr;
    QAction* srgb = nullptr;
    DisplayMenu* displays = nullptr; ///< where OCIO names a configuration
    std::shared_ptr<DisplayProcessor const> processor;
};
