#include "editor/view/window/EditorWindow.h"

#include "base/EvEventManager.h"
#include "editor/model/parameters/PanelLayout.h"
#include "editor/view/parameters/ModeBox.h"
#include "editor/view/picture/ValueText.h"
#include "editor/view/render/RenderDialog.h"
#include "editor/view/window/EditActions.h"
#include "editor/view/window/FileActions.h"
#include "editor/view/window/FileNotices.h"
#include "editor/view/window/ReadingState.h"
#include "editor/view/window/RecoveryKeeper.h"
#include "editor/view/window/ShortcutsPage.h"
#include "editor/view/window/WindowLayout.h"
#include "files/PrintableText.h"
#include "session/Failures.h"
#include "shots/MachineLimits.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMetaObject>
#include <QMimeData>
#include <QScrollArea>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

constexpr int sentenceTime = 3000; // milliseconds that something done is told for

QWidget* makeGap(QWidget* parent)
{
    auto* const gap = new QWidget(parent);
    gap->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    return gap;
}

} // namespace

EditorWindow::EditorWindow(PictureLoader::Opener opener)
    : plate(countUsableCores(), std::move(opener))
{
    resize(1280, 800);
    buildCentre();
    buildFiles();
    edits = new EditActions(document, this);
    buildPanels();
    buildToolBar();
    buildMenus();
    buildStatusBar();
    document.addFileHandler(&fileChanged);
    takeEventsOver();
    updateTitle();
}

EditorWindow::~EditorWindow() noexcept
{
    EvEventManager::getInstance().setWakeUp({});
    EvEventManager::getInstance().setFailureReporter({});
    // What shows the document goes before it, and so does what is on its way.
    delete render;
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
    auto* const whole = new QWidget(this);
    auto* const column = new QVBoxLayout(whole);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(bar);
    column->addWidget(picture, 1);
    setCentralWidget(whole);
    connect(picture, &PicturePanel::settled, this, &EditorWindow::settled);
    connect(picture, &PicturePanel::failed, bar, [this](std::exception_ptr const& failure) {
        bar->tellFailure(failure, MessageBar::Subject::PictureFailure);
    });
}

void EditorWindow::buildFiles()
{
    setAcceptDrops(true);
    files = new FileActions(document, plate, *bar, this);
    notices = new FileNotices(document, plate, *files, *bar, this);
    recovery = new RecoveryKeeper(document, plate, *files, *bar, this);
    connect(files, &FileActions::pictureAwaited, notices, &FileNotices::await);
    connect(files, &FileActions::done, this,
            [this](QString const& sentence) { statusBar()->showMessage(sentence, sentenceTime); });
}

/// Without a layout the parameters stand in the tool's order.
std::vector<ParameterRow> EditorWindow::layOutParametersOrTell()
{
    try {
        return layOutParameters(document);
    } catch (PanelLayoutError const& error) {
        bar->tell(QString::fromStdString(error.what()));
        return listParameters(document);
    }
}

void EditorWindow::buildPanels()
{
    setDockOptions(QMainWindow::AllowNestedDocks | QMainWindow::AllowTabbedDocks);
    setCorner(Qt::BottomLeftCorner, Qt::BottomDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::BottomDockWidgetArea);
    curvePanel = new CurvePanel(document, plate, picks, this);
    connect(curvePanel, &CurvePanel::failed, bar, &MessageBar::tell);
    connect(&picture->getPicture().getMarks(), &PickMarks::menuOpening, curvePanel,
            &CurvePanel::addPickActions);
    parameters = new ParameterPanel(document, layOutParametersOrTell(), this);
    auto* const scroll = new QScrollArea(this);
    scroll->setWidget(parameters);
    scroll->setWidgetResizable(true);
    scroll->setAccessibleName(tr("Parameters"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setMinimumWidth(390);
    QDockWidget* const above = makePanel(tr("Curves"), "curves", curvePanel);
    QDockWidget* const below = makePanel(tr("Parameters"), "parameters", scroll);
    addDockWidget(Qt::RightDockWidgetArea, above);
    addDockWidget(Qt::RightDockWidgetArea, below);
    QDockWidget* const bottom = makePanel(tr("Time"), "time", makeTimePanel());
    addDockWidget(Qt::BottomDockWidgetArea, bottom);
    layout = new WindowLayout(*this, {above, below, bottom}, [this, above, below] {
        resizeDocks({above, below}, {430, 430}, Qt::Horizontal);
        resizeDocks({above, below}, {420, 340}, Qt::Vertical);
    });
}

QWidget* EditorWindow::makeTimePanel()
{
    timePanel = new TimePanel(document, plate, timeline, this);
    connect(timePanel, &TimePanel::failed, bar, &MessageBar::tell);
    connect(timePanel, &TimePanel::playingChanged, picture, &PicturePanel::setPlaying);
    connect(timePanel, &TimePanel::playingChanged, curvePanel, &CurvePanel::setPlaying);
    connect(picture, &PicturePanel::imageShown, this,
            [this](double time) { timePanel->getPlayer().takeShown(time); });
    timePanel->serve(getPicture());
    return timePanel;
}

QDockWidget* EditorWindow::makePanel(QString const& title, QString const& name, QWidget* panel)
{
    auto* const dock = new QDockWidget(title, this);
    dock->setObjectName(name);
    dock->setWidget(panel);
    dock->installEventFilter(this);
    connect(dock, &QDockWidget::topLevelChanged, dock, &QWidget::setAcceptDrops);
    return dock;
}

void EditorWindow::buildToolBar()
{
    QToolBar& tools = *addToolBar(tr("Tools"));
    tools.setObjectName("tools");
    tools.setMovable(false);
    tools.setContextMenuPolicy(Qt::PreventContextMenu);
    tools.addActions({files->getOpen(), files->getSave()});
    tools.addSeparator();
    tools.addActions(edits->getActions());
    tools.addSeparator();
    tools.addWidget(new QLabel(tr("Mode"), this));
    tools.addWidget(new ModeBox(document, this));
    tools.addWidget(makeGap(this));
    picture->getCompareControls().addTo(tools);
    picture->getControls().addTo(tools);
}

/// Where each panel's own actions are offered.
void EditorWindow::buildMenus()
{
    QMenu& file = *menuBar()->addMenu(tr("&File"));
    file.addActions(files->getActions());
    QList<QAction*> const quit = file.actions().last(2); // with its separator
    file.insertAction(quit.front(), makeAction(this,
                                               {tr("&Render…"),
                                                tr("Render the picture or the frames"),
                                                {QKeySequence("Ctrl+R")}},
                                               [this] { showRender(); }));
    menuBar()->addMenu(tr("&Edit"))->addActions(edits->getActions());
    QMenu& view = *menuBar()->addMenu(tr("&View"));
    view.addActions(picture->getControls().getActions());
    view.addSeparator();
    view.addActions(picture->getCompareControls().getActions());
    view.addSeparator();
    view.addActions(layout->getActions());
    menuBar()->addMenu(tr("&Curve"))->addActions(curvePanel->getActions());
    menuBar()->addMenu(tr("&Time"))->addActions(timePanel->getActions());
    menuBar()
        ->addMenu(tr("&Help"))
        ->addAction(makeAction(
            this, {tr("&Shortcuts"), tr("All keys"), {QKeySequence("F1"), QKeySequence("?")}},
            [this] { showShortcuts(); }));
}

void EditorWindow::showRender()
{
    if (render == nullptr) {
        render = new RenderDialog(document, plate, timeline, files->getSave(), this);
        connect(render, &RenderDialog::ended, this,
                [this](QString const& sentence, bool hasFailed) {
                    if (hasFailed) {
                        bar->tell(sentence);
                    } else {
                        statusBar()->showMessage(sentence, sentenceTime);
                    }
                });
    }
    render->present();
}

void EditorWindow::showShortcuts()
{
    auto* const page =
        new ShortcutsPage(*menuBar(),
                          {{tr("Everywhere"), {{tr("Esc"), tr("give up reading a picture")}}},
                           {tr("In the picture"), picture->getKeyHelps()},
                           {tr("In the curves"), curvePanel->getKeyHelps()},
                           {tr("In the time ruler"), TimeRuler::getKeyHelps()},
                           {tr("In a number"), NumberField::getKeyHelps()}},
                          this);
    page->show();
}

void EditorWindow::buildStatusBar()
{
    auto* const pixelText = new QLabel(this);
    auto* const pictureText = new QLabel(this);
    pixelText->setTextFormat(Qt::PlainText);
    pixelText->setFont(ValueText::getFont());
    pictureText->setTextFormat(Qt::PlainText);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setContentsMargins(8, 0, 10, 0);
    statusBar()->addWidget(pixelText, 1);
    reading = new ReadingState(plate, this);
    statusBar()->addPermanentWidget(reading);
    statusBar()->addPermanentWidget(pictureText);
    connect(picture, &PicturePanel::pixelTextChanged, pixelText, &QLabel::setText);
    connect(picture, &PicturePanel::viewTextChanged, pictureText,
            [pictureText](QString const& text, QString const& name) {
                pictureText->setText(text);
                pictureText->setToolTip(name);
            });
}

void EditorWindow::openPicture(std::filesystem::path const& file)
{
    files->openPicture(file);
}

void EditorWindow::openProject(std::filesystem::path const& file)
{
    files->openProject(file);
}

void EditorWindow::saveProject(std::filesystem::path const& file)
{
    files->saveProject(file);
}

void EditorWindow::goOn()
{
    layout->restore();
    recovery->offerLeft();
}

void EditorWindow::endNow(int status)
{
    recovery->keepNow();
    layout->save();
    QCoreApplication::exit(status);
}

void EditorWindow::closeEvent(QCloseEvent* event)
{
    bool const mayClose = files->mayDiscard();
    event->setAccepted(mayClose);
    if (mayClose) {
        layout->save();
        recovery->end();
    }
}

void EditorWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        notices->look();
    }
    QMainWindow::changeEvent(event);
}

/// What no widget has used the key for.
void EditorWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && plate.isReading()) {
        plate.giveUp();
    } else {
        QMainWindow::keyPressEvent(event);
    }
}

/// What a panel has no use for. A floating one is a window by itself.
bool EditorWindow::eventFilter(QObject* watched, QEvent* event)
{
    auto const* const panel = qobject_cast<QDockWidget*>(watched);
    if (panel == nullptr || !panel->isFloating()) {
        return QMainWindow::eventFilter(watched, event);
    }
    switch (event->type()) {
    case QEvent::KeyPress: keyPressEvent(static_cast<QKeyEvent*>(event)); break;
    case QEvent::DragEnter: dragEnterEvent(static_cast<QDragEnterEvent*>(event)); break;
    case QEvent::Drop: dropEvent(static_cast<QDropEvent*>(event)); break;
    default: return QMainWindow::eventFilter(watched, event);
    }
    return event->isAccepted();
}

void EditorWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls()) {
        event->acceptProposedAction();
    }
}

void EditorWindow::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    files->openDropped(*event->mimeData());
}

void EditorWindow::updateTitle()
{
    auto const& file = document.getProjectFile().getPath();
    QString const project =
        file.empty() ? tr("New project") : QString::fromStdString(file.filename().string());
    setWindowTitle(project + "[*] — Remap Color");
    setWindowModified(document.isModified());
}

#include "editor/view/window/moc_EditorWindow.cpp"
