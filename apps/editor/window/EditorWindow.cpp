#include "editor/window/EditorWindow.h"

#include "base/EvEventManager.h"
#include "editor/window/Theme.h"
#include "pluginAPI/PiInputPolicy.h"
#include "runtime/engine/RenderPool.h"
#include "runtime/values/NumberText.h"
#include "session/Failures.h"
#include "shots/MachineLimits.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QMetaObject>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>

namespace {

QString toText(std::filesystem::path const& path)
{
    return QString::fromStdString(path.string());
}

/// Six digits; what is no number by name.
QString formatValue(float value)
{
    return std::isnan(value)   ? QStringLiteral("nan")
           : std::isinf(value) ? QString(value > 0 ? "inf" : "-inf")
                               : QString::number(static_cast<double>(value), 'g', 6);
}

QString formatColour(CoRgbaColorTyped<float> const& colour)
{
    return formatValue(colour.red) + "  " + formatValue(colour.green) + "  " +
           formatValue(colour.blue) + "  a " + formatValue(colour.alpha);
}

QString formatWindow(GeRectangle<int> const& window)
{
    return QString("%1 × %2").arg(window.getWidth()).arg(window.getHeight());
}

QWidget* makeGap(QWidget* parent)
{
    auto* const gap = new QWidget(parent);
    gap->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    return gap;
}

} // namespace

EditorWindow::EditorWindow()
    : renderer(std::make_unique<ViewRenderer>(
          document.getNode().getTool(), countUsableCores(),
          ViewRenderer::Callbacks{[this](ViewImage const& image, bool isFinal) {
                                      picture->showImage(image);
                                      if (isFinal && !renderer->isBusy()) {
                                          emit settled();
                                      }
                                  },
                                  [this](std::exception_ptr const& failure) {
                                      tellFailure(failure);
                                      emit settled();
                                  }})),
      picked([this](PickAnswer const& answer) {
          if (pointed.has_value() && held != nullptr && answer.pick == pointed->pick &&
              answer.outcome == PickAnswer::Done) {
              pointed->result = document.getNode().finishPixel(
                  PxTimeContext(0.0), held->getPixel(pointed->x, pointed->y), answer.result);
              showPixel();
          }
      })
{
    buildCentre();
    buildToolBar();
    buildStatusBar();
    document.getNode().addHandler(&changed);
    document.getHistory().addHistoryHandler(&historyChanged);
    document.getLink().addPickHandler(&picked);
    connect(picture, &PictureWidget::viewChanged, this, &EditorWindow::showView);
    connect(picture, &PictureWidget::pixelPointed, this, &EditorWindow::requestPixel);
    connect(picture, &PictureWidget::pointerLeft, this, [this] {
        pointed.reset();
        showPixel();
    });
    connect(curvePanel, &CurvePanel::failed, this, &EditorWindow::tell);
    takeEventsOver();
    showHistory(document.getHistory().getHistoryState());
    resize(1280, 800);
}

EditorWindow::~EditorWindow() noexcept
{
    EvEventManager::getInstance().setWakeUp({});
    EvEventManager::getInstance().setFailureReporter({});
    // What shows the document goes before it, and so does what is on its way.
    delete takeCentralWidget();
    loader.reset();
    renderer.reset();
    EvEventManager::getInstance().discardEvents();
}

/// What workers post wakes the toolkit's loop.
void EditorWindow::takeEventsOver()
{
    EvEventManager& events = EvEventManager::getInstance();
    events.setFailureReporter(
        [this](std::string const& text) { tell(QString::fromStdString(makePrintable(text))); });
    events.setWakeUp([this] {
        QMetaObject::invokeMethod(
            this, [] { EvEventManager::getInstance().processEvents(); }, Qt::QueuedConnection);
    });
}

void EditorWindow::buildCentre()
{
    picture = new PictureWidget(this);
    parameters = new ParameterPanel(document, this);
    curvePanel = new CurvePanel(document, this);
    auto* const scroll = new QScrollArea(this);
    scroll->setWidget(parameters);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setMinimumWidth(390);
    auto* const side = new QSplitter(Qt::Vertical, this);
    side->addWidget(curvePanel);
    side->addWidget(scroll);
    side->setSizes({420, 340});
    auto* const centre = new QSplitter(Qt::Horizontal, this);
    centre->addWidget(picture);
    centre->addWidget(side);
    centre->setStretchFactor(0, 1);
    centre->setSizes({850, 430});

    bar = new QWidget(this);
    auto* const barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(10, 4, 6, 4);
    message = new QLabel(bar);
    message->setWordWrap(true);
    message->setTextFormat(Qt::PlainText);
    QPalette palette = message->palette();
    palette.setColor(QPalette::WindowText, Theme::failure);
    message->setPalette(palette);
    auto* const close = new QToolButton(bar);
    close->setText(QString::fromUtf8("×"));
    close->setAutoRaise(true);
    close->setAccessibleName(tr("Close the message"));
    connect(close, &QToolButton::clicked, bar, &QWidget::hide);
    barLayout->addWidget(message, 1);
    barLayout->addWidget(close);
    bar->hide();

    auto* const whole = new QWidget(this);
    auto* const layout = new QVBoxLayout(whole);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(centre, 1);
    setCentralWidget(whole);
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
              [this] { picture->fit(); });
    addAction(tools, tr("1:1"), tr("Show pixel for pixel (1 in the picture)"), {},
              [this] { picture->showPixels(); });
    tools.addSeparator();
    channels = new QComboBox(this);
    channels->setAccessibleName(tr("Channels"));
    channels->addItems({tr("RGB"), tr("R"), tr("G"), tr("B"), tr("A")});
    connect(channels, &QComboBox::activated, this, &EditorWindow::showView);
    tools.addWidget(channels);
    exposure = new QDoubleSpinBox(this);
    exposure->setAccessibleName(tr("View exposure in stops"));
    exposure->setToolTip(tr("Exposure of the view only, in stops"));
    exposure->setRange(-20.0, 20.0);
    exposure->setSingleStep(0.25);
    exposure->setSuffix(tr(" stops"));
    connect(exposure, &QDoubleSpinBox::valueChanged, this, &EditorWindow::showView);
    tools.addWidget(exposure);
    srgb = addAction(tools, tr("sRGB"), tr("Show linear values by the sRGB curve; the view only"),
                     {}, [this] { showView(); });
    srgb->setCheckable(true);
}

void EditorWindow::buildStatusBar()
{
    pixelText = new QLabel(this);
    pictureText = new QLabel(this);
    pixelText->setTextFormat(Qt::PlainText);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setContentsMargins(8, 0, 10, 0);
    statusBar()->addWidget(pixelText, 1);
    statusBar()->addPermanentWidget(pictureText);
}

void EditorWindow::openPicture(std::filesystem::path const& file)
{
    try {
        loadingFile = file;
        loader = std::make_unique<PictureLoader>(
            file, countUsableCores(),
            [this](auto const& loaded, auto const& failure) { takePicture(loaded, failure); });
    } catch (...) {
        tellFailure(std::current_exception());
        emit settled();
    }
}

void EditorWindow::takePicture(std::shared_ptr<HeldPicture const> const& loaded,
                               std::exception_ptr const& failure)
{
    loader.reset(); // closes the file
    if (failure) {
        tellFailure(failure);
        emit settled();
        return;
    }
    bar->hide();
    held = loaded;
    pictureFile = loadingFile;
    pointed.reset();
    pickStart = makeNode<SourceImageNode>(held->info);
    pickChain = document.getNode().buildChain(PxNodePtr<PxImageProtocol const>(pickStart));
    renderer->setPicture(held);
    picture->setWindows(held->info.dataWindow, held->info.displayWindow);
    updateTitle();
}

void EditorWindow::openProject(std::filesystem::path const& file)
{
    try {
        document.openProject(file);
        bar->hide();
    } catch (...) {
        tellFailure(std::current_exception());
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
        tellFailure(std::current_exception());
    }
    updateTitle();
}

void EditorWindow::askForFile()
{
    QString const file = QFileDialog::getOpenFileName(
        this, tr("Open a picture or a project"), toText(pictureFile.parent_path()),
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

void EditorWindow::showView()
{
    // Each place of a list is a state of the view alone, whatever the tool has.
    modes->setCurrentIndex(modes->findData(static_cast<int>(document.getMode())));
    ViewRequest request = picture->getNeeded();
    request.transform = {static_cast<ViewTransform::Channels>(channels->currentIndex()),
                         exposure->value(), srgb->isChecked()};
    renderer->request(request, document.getNode());
    if (pointed.has_value()) {
        requestPixel(pointed->x, pointed->y);
    }
    if (held != nullptr) {
        bool const isNeutral = request.transform == ViewTransform();
        pictureText->setText(
            toText(pictureFile.filename()) + "   " + formatWindow(held->info.dataWindow) + "   " +
            QString::number(picture->getZoom() * 100.0, 'f', 0) + " %   " +
            (isNeutral ? tr("neutral view") : tr("view: adjusted, the result is not")));
    }
}

void EditorWindow::requestPixel(int x, int y)
{
    auto const before =
        pointed.has_value() && pointed->x == x && pointed->y == y ? pointed->result : std::nullopt;
    std::uint64_t const pick =
        document.getLink().processSinglePixel(PxTimeContext(0.0), held->getPixel(x, y));
    pointed = Pointed{x, y, pick, before};
    showPixel();
}

void EditorWindow::showPixel()
{
    if (!pointed.has_value() || held == nullptr) {
        pixelText->clear();
        return;
    }
    QString text = QString("x %1  y %2     in  %3")
                       .arg(pointed->x)
                       .arg(pointed->y)
                       .arg(formatColour(held->getPixel(pointed->x, pointed->y)));
    if (pointed->result.has_value()) {
        text += "     out  " + formatColour(*pointed->result);
    }
    pixelText->setText(text);
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

QString EditorWindow::getMessage() const
{
    return bar->isHidden() ? QString() : message->text();
}

void EditorWindow::tell(QString const& sentence)
{
    message->setText(sentence);
    bar->show();
}

void EditorWindow::tellFailure(std::exception_ptr const& failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (RenderCancelled const&) { // nothing is wrong
    } catch (...) {
        tell(QString::fromStdString(describeCurrentFailure().text));
    }
}
