#include "editor/view/window/EditorWindow.h"

#include "base/EvEventManager.h"
#include "editor/view/picture/ValueText.h"
#include "editor/view/window/Theme.h"
#include "pluginAPI/PiInputPolicy.h"
#include "session/Failures.h"
#include "shots/MachineLimits.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QMetaObject>
#include <QScrollArea>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

QString toText(std::filesystem::path const& path)
{
    return QString::fromStdString(path.string());
}

QWidget* makeGap(QWidget* parent)
{
    auto* const gap = new QWidget(parent);
    gap->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    return gap;
}

} // namespace

EditorWindow::EditorWindow() : plate(countUsableCores())
{
    buildCentre();
    buildToolBar();
    buildStatusBar();
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    document.getHistory().addHistoryHandler(&historyChanged);
    plate.addHandler(&plateChanged);
    takeEventsOver();
    showMode();
    showHistory(document.getHistory().getHistoryState());
    resize(1280, 800);
}

EditorWindow::~EditorWindow() noexcept
{
    EvEventManager::getInstance().setWakeUp({});
    EvEventManager::getInstance().setFailureReporter({});
    // What shows the document goes before it, and so does what is on its way.
    qDeleteAll(findChildren<QDockWidget*>(Qt::FindDirectChildrenOnly));
    delete takeCentralWidget();
    EvEventManager::getInstance().discardEvents();
}

/// What workers post wakes the toolkit's loop.
void EditorWindow::takeEventsOver()
{
    EvEventManager& events = EvEventManager::getInstance();
    events.setFailureReporter([this](std::string const& text) {
        bar->tell(QString::fromStdString(makePrintable(text)));
    });
    events.setWakeUp([this] {
        QMetaObject::invokeMethod(
            this, [] { EvEventManager::getInstance().processEvents(); }, Qt::QueuedConnection);
    });
}

void EditorWindow::buildCentre()
{
    bar = new MessageBar(this);
    picture = new PicturePanel(document, plate, picks, countUsableCores(), this);
    parameters = new ParameterPanel(document, this);
    curvePanel = new CurvePanel(document, this);
    auto* const scroll = new QScrollArea(this);
    scroll->setWidget(parameters);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setMinimumWidth(390);
    auto* const whole = new QWidget(this);
    auto* const layout = new QVBoxLayout(whole);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(picture, 1);
    setCentralWidget(whole);
    QDockWidget* const above = addPanel(tr("Curves"), "curves", curvePanel);
    QDockWidget* const below = addPanel(tr("Parameters"), "parameters", scroll);
    resizeDocks({above, below}, {430, 430}, Qt::Horizontal);
    resizeDocks({above, below}, {420, 340}, Qt::Vertical);
    connect(picture, &PicturePanel::settled, this, &EditorWindow::settled);
    connect(picture, &PicturePanel::failed, bar, &MessageBar::tellFailure);
    connect(curvePanel, &CurvePanel::failed, bar, &MessageBar::tell);
}

QDockWidget* EditorWindow::addPanel(QString const& title, QString const& name, QWidget* panel)
{
    auto* const dock = new QDockWidget(title, this);
    dock->setObjectName(name);
    dock->setWidget(panel);
    addDockWidget(Qt::RightDockWidgetArea, dock);
    return dock;
}

QAction* EditorWindow::addAction(QToolBar& toolBar, QString const& text, QString const& help,
                                 QKeySequence const& key, std::function<void()> action)
{
    auto* const added = new QAction(text, this);
    added->setShortcut(key);
    added->setToolTip(key.isEmpty() ? help : help + " (" + key.toString() + ")");
    connect(added, &QAction::triggered, this, std::move(action));
    toolBar.addAction(added);
    return added;
}

void EditorWindow::buildToolBar()
{
    QToolBar& tools = *addToolBar(tr("Tools"));
    tools.setMovable(false);
    tools.setContextMenuPolicy(Qt::PreventContextMenu);
    addAction(tools, tr("Open"), tr("Open a picture or a project"), QKeySequence::Open,
              [this] { askForFile(); });
    addAction(tools, tr("Save"), tr("Save the project"), QKeySequence::Save,
              [this] { saveOrAsk(); });
    addAction(tools, tr("Save as"), tr("Save the project to another file"),
              QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S), [this] { askAndSave(); });
    tools.addSeparator();
    undo = addAction(tools, tr("Undo"), tr("Undo"), QKeySequence::Undo,
                     [this] { document.getHistory().undo(); });
    redo = addAction(tools, tr("Redo"), tr("Redo"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z),
                     [this] { document.getHistory().redo(); });
    tools.addSeparator();
    modes = new QComboBox(this);
    modes->setAccessibleName(tr("Mode"));
    std::string const modeName = document.getLink().getModeInputName();
    auto const modePolicy = document.getNode().getValue(modeName)->getPolicy();
    for (auto const& [number, label] : dynamic_cast<PiEnumPolicy const&>(*modePolicy).getPairs()) {
        modes->addItem(QString::fromStdString(label), number);
    }
    connect(modes, &QComboBox::activated, this, [this, modeName] {
        document.setNumbers("Set Mode", {modeName}, modes->currentData().toInt());
    });
    tools.addWidget(new QLabel(tr("Mode"), this));
    tools.addWidget(modes);
    tools.addWidget(makeGap(this));
    addAction(tools, tr("Fit"), tr("Fit the picture (F in the picture)"), {},
              [this] { getPicture().fit(); });
    addAction(tools, tr("1:1"), tr("Show pixel for pixel (1 in the picture)"), {},
              [this] { getPicture().showPixels(); });
    tools.addSeparator();
    channels = new QComboBox(this);
    channels->setAccessibleName(tr("Channels"));
    channels->addItems({tr("RGB"), tr("R"), tr("G"), tr("B"), tr("A")});
    connect(channels, &QComboBox::activated, this, &EditorWindow::takeView);
    tools.addWidget(channels);
    exposure = new QDoubleSpinBox(this);
    exposure->setAccessibleName(tr("View exposure in stops"));
    exposure->setToolTip(tr("Exposure of the view only, in stops"));
    exposure->setRange(-20.0, 20.0);
    exposure->setSingleStep(0.25);
    exposure->setSuffix(tr(" stops"));
    connect(exposure, &QDoubleSpinBox::valueChanged, this, &EditorWindow::takeView);
    tools.addWidget(exposure);
    srgb = addAction(tools, tr("sRGB"), tr("Show linear values by the sRGB curve; the view only"),
                     {}, [this] { takeView(); });
    srgb->setCheckable(true);
}

void EditorWindow::buildStatusBar()
{
    pixelText = new QLabel(this);
    pictureText = new QLabel(this);
    pixelText->setTextFormat(Qt::PlainText);
    pixelText->setFont(ValueText::getFont());
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setContentsMargins(8, 0, 10, 0);
    statusBar()->addWidget(pixelText, 1);
    statusBar()->addPermanentWidget(pictureText);
    connect(picture, &PicturePanel::pixelTextChanged, pixelText, &QLabel::setText);
    connect(picture, &PicturePanel::viewTextChanged, pictureText, &QLabel::setText);
}

void EditorWindow::openPicture(std::filesystem::path const& file)
{
    plate.open(file);
}

void EditorWindow::openProject(std::filesystem::path const& file)
{
    try {
        document.openProject(file);
        bar->hide();
    } catch (...) {
        bar->tellFailure(std::current_exception());
    }
    updateTitle();
}

void EditorWindow::saveProject(std::filesystem::path const& file)
{
    try {
        document.saveProject(file);
        bar->hide();
        statusBar()->showMessage(tr("Saved %1").arg(toText(file)), 3000);
    } catch (...) {
        bar->tellFailure(std::current_exception());
    }
    updateTitle();
}

void EditorWindow::askForFile()
{
    QString const file = QFileDialog::getOpenFileName(
        this, tr("Open a picture or a project"), toText(plate.getFile().parent_path()),
        tr("Pictures and projects (*.exr *.png *.tif *.tiff *.jpg *.jpeg *.dpx *.json);;"
           "All files (*)"));
    if (file.endsWith(".json", Qt::CaseInsensitive)) {
        if (mayDiscard()) {
            openProject(file.toStdString());
        }
    } else if (!file.isEmpty()) {
        openPicture(file.toStdString());
    }
}

void EditorWindow::saveOrAsk()
{
    if (document.getProjectFile().empty()) {
        askAndSave();
    } else {
        saveProject(document.getProjectFile());
    }
}

void EditorWindow::askAndSave()
{
    QString file = QFileDialog::getSaveFileName(
        this, tr("Save the project"), toText(document.getProjectFile()), tr("Projects (*.json)"));
    if (!file.isEmpty()) {
        file += file.endsWith(".json", Qt::CaseInsensitive) ? "" : ".json";
        saveProject(file.toStdString());
    }
}

bool EditorWindow::mayDiscard()
{
    return !document.isModified() ||
           QMessageBox::question(this, tr("Remap Color"),
                                 tr("The project has changes that are not saved. Drop them?")) ==
               QMessageBox::Yes;
}

void EditorWindow::closeEvent(QCloseEvent* event)
{
    event->setAccepted(mayDiscard());
}

void EditorWindow::takeView()
{
    // Each place of the list is a state of the view alone, whatever the tool has.
    picture->setTransform({static_cast<ViewTransform::Channels>(channels->currentIndex()),
                           exposure->value(), srgb->isChecked()});
}

void EditorWindow::showMode()
{
    modes->setCurrentIndex(modes->findData(static_cast<int>(document.getMode())));
}

void EditorWindow::showHistory(HistoryState const& state)
{
    undo->setEnabled(state.canUndo);
    redo->setEnabled(state.canRedo);
    undo->setToolTip(tr("Undo %1 (Ctrl+Z)").arg(QString::fromStdString(state.undoLabel)));
    redo->setToolTip(tr("Redo %1 (Ctrl+Shift+Z)").arg(QString::fromStdString(state.redoLabel)));
    updateTitle();
}

void EditorWindow::updateTitle()
{
    QString const project = document.getProjectFile().empty()
                                ? tr("New project")
                                : toText(document.getProjectFile().filename());
    setWindowTitle(project + "[*] — Remap Color");
    setWindowModified(document.isModified());
}
