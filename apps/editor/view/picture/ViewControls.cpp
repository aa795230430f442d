#include "editor/view/picture/ViewControls.h"

#include "editor/view/picture/DisplayMenu.h"
#include "editor/view/picture/PicturePanel.h"
#include "editor/view/window/Actions.h"

#include <QActionGroup>
#include <QDoubleSpinBox>
#include <QMenu>
#include <QToolBar>

namespace {

constexpr double mostStops = 20.0;
constexpr double stopsPerStep = 0.25;

} // namespace

ViewControls::ViewControls(PicturePanel& controlled)
    : QObject(&controlled), panel(controlled), channelGroup(new QActionGroup(this)),
      exposure(new QDoubleSpinBox(&controlled))
{
    exposure->hide(); // until a toolbar takes it
    exposure->setAccessibleName(tr("View exposure in stops"));
    exposure->setToolTip(tr("Exposure of the view only, in stops"));
    exposure->setRange(-mostStops, mostStops);
    exposure->setSingleStep(stopsPerStep);
    exposure->setSuffix(tr(" stops"));
    exposure->setKeyboardTracking(false);
    connect(exposure, &QDoubleSpinBox::valueChanged, this, &ViewControls::takeView);
    addSizes();
    addChannels();
    addDisplay();
}

void ViewControls::addSizes()
{
    auto const context = Qt::WidgetWithChildrenShortcut;
    PictureWidget& picture = panel.getPicture();
    fit = makeAction(
        &panel, {tr("&Fit picture"), tr("Show the whole picture"), {Qt::Key_F}, tr("Fit")},
        [&picture] { picture.fit(); }, context);
    pixels = makeAction(
        &panel, {tr("&Pixel for pixel"), tr("Show 1:1"), {Qt::Key_1}, tr("1:1")},
        [&picture] { picture.showPixels(); }, context);
    actions << fit << pixels
            << makeAction(
                   &panel, {tr("Zoom &in"), tr("Zoom in"), {Qt::Key_Plus, Qt::Key_Equal}},
                   [&picture] { picture.zoomIn(); }, context)
            << makeAction(
                   &panel, {tr("Zoom &out"), tr("Zoom out"), {Qt::Key_Minus}},
                   [&picture] { picture.zoomOut(); }, context)
            << makeSeparator(&panel);
}

/// One of a group; a key of the channel that is shown goes back to colour.
void ViewControls::addChannels()
{
    struct Choice {
        QString name;
        QString help;
        QList<QKeySequence> keys;
        ViewTransform::Channels channels;
    };
    for (Choice const& choice :
         {Choice{tr("RGB"), tr("Show the colour"), {}, ViewTransform::Rgb},
          Choice{tr("R"), tr("Show red alone"), {Qt::Key_R}, ViewTransform::Red},
          Choice{tr("G"), tr("Show green alone"), {Qt::Key_G}, ViewTransform::Green},
          Choice{tr("B"), tr("Show blue alone"), {Qt::Key_B}, ViewTransform::Blue},
          Choice{tr("A"), tr("Show alpha"), {Qt::Key_A}, ViewTransform::Alpha}}) {
        QAction* const action = makeSwitch(
            &panel, {choice.help, choice.help, choice.keys, choice.name},
            [this, channels = choice.channels](bool) { chooseChannels(channels); },
            Qt::WidgetWithChildrenShortcut);
        action->setData(choice.channels);
        action->setChecked(choice.channels == ViewTransform::Rgb);
        channelGroup->addAction(action);
        actions << action;
    }
    actions << makeSeparator(&panel);
}

void ViewControls::chooseChannels(ViewTransform::Channels channels)
{
    if (panel.getTransform().channels == channels) {
        channelGroup->actions().first()->setChecked(true);
    }
    takeView();
}

void ViewControls::addDisplay()
{
    srgb = makeSwitch(&panel,
                      {tr("Show by the &sRGB curve"),
                       tr("Show linear values by the sRGB curve; the view only"),
                       {},
                       tr("sRGB")},
                      [this](bool isOn) {
                          if (isOn && displays != nullptr) {
                              displays->clear();
                          }
                          takeView();
                      });
    actions << srgb;
    if (QString const file = qEnvironmentVariable("OCIO"); !file.isEmpty()) {
        addDisplays(file.toStdString());
    }
    actions << makeAction(&panel,
                          {tr("&Neutral view"), tr("Show the result as it is, without exposure")},
                          [this] { showNeutral(); });
}

/// Read when there is a first picture, which does not wait for it.
void ViewControls::addDisplays(std::string const& configFile)
{
    displays = new DisplayMenu(configFile, &panel);
    actions << displays->getMenu().menuAction();
    connect(displays, &DisplayMenu::failed, &panel, &PicturePanel::failed);
    connect(displays, &DisplayMenu::chosen, this, [this](auto const& chosen) {
        processor = chosen;
        if (processor != nullptr) {
            srgb->setChecked(false);
        }
        takeView();
    });
    connect(&panel, &PicturePanel::settled, displays, &DisplayMenu::read, Qt::SingleShotConnection);
}

void ViewControls::showNeutral()
{
    srgb->setChecked(false);
    channelGroup->actions().first()->setChecked(true);
    exposure->setValue(0.0);
    if (displays != nullptr) {
        displays->clear();
    }
    takeView();
}

void ViewControls::addTo(QToolBar& tools)
{
    tools.addAction(fit);
    tools.addAction(pixels);
    tools.addSeparator();
    tools.addActions(channelGroup->actions());
    tools.addSeparator();
    tools.addWidget(exposure)->setVisible(true);
    tools.addAction(srgb);
    if (displays != nullptr) {
        addMenuButton(tools, tr("Display"), tr("Show by a display and view of OpenColorIO"),
                      &displays->getMenu());
    }
}

void ViewControls::takeView()
{
    auto const channels = channelGroup->checkedAction()->data().toInt();
    panel.setTransform({static_cast<ViewTransform::Channels>(channels), exposure->value(),
                        srgb->isChecked(), processor});
}

#include "editor/view/picture/moc_ViewControls.cpp"
