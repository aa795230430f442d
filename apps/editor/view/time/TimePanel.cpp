#include "editor/view/time/TimePanel.h"

#include "editor/view/window/Settings.h"
#include "session/Failures.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double bytesOfGigabyte = 1024.0 * 1024.0 * 1024.0;
constexpr double leastMemory = 0.1; // gigabytes
constexpr double mostMemory = 1024.0;
QString const memoryKey = "time/memory";

QToolButton* makeStepButton(QWidget* parent, QAction* action)
{
    auto* const button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(action->toolTip());
    return button;
}

/// A widget of two rows.
struct Rows {
    QWidget* box;
    QHBoxLayout* above = new QHBoxLayout();
    QHBoxLayout* below = new QHBoxLayout();
};

Rows makeRows(QWidget* parent)
{
    Rows const rows{new QWidget(parent)};
    auto* const column = new QVBoxLayout(rows.box);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addLayout(rows.above);
    column->addLayout(rows.below);
    return rows;
}

QString formatMemory(std::size_t bytes)
{
    constexpr double megabytes = 1024.0;
    double const gigabytes = static_cast<double>(bytes) / bytesOfGigabyte;
    return gigabytes < 1.0 ? QString("%1 MB").arg(gigabytes * megabytes, 0, 'f', 0)
                           : QString("%1 GB").arg(gigabytes, 0, 'f', 1);
}

} // namespace

TimePanel::TimePanel(Document& editedDocument, Plate& shownPlate, Timeline& shownTimeline,
                     QWidget* parent)
    : QWidget(parent), document(editedDocument), plate(shownPlate), timeline(shownTimeline),
      keys(document), player(timeline, document, plate,
                             {[] { return Player::Clock::now(); },
                              [this](std::chrono::milliseconds time) { playTimer.start(time); }}),
      ruler(new TimeRuler(document, plate, timeline, this))
{
    playTimer.setSingleShot(true);
    playTimer.setTimerType(Qt::PreciseTimer);
    connect(&playTimer, &QTimer::timeout, this, [this] { player.wake(); });
    connect(ruler, &TimeRuler::failed, this, &TimePanel::failed);
    makeActions();
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(10, 4, 10, 6);
    row->setSpacing(10);
    row->addWidget(makeSteps());
    row->addWidget(ruler, 1);
    row->addWidget(makeRange());
    document.addTimeHandler(&timeChanged);
    document.getNode().addHandler(&changed);
    timeline.addHandler(&timelineChanged);
    plate.addFramesHandler(&framesChanged);
    plate.addHandler(&plateChanged);
    player.addHandler(&playerChanged);
    double const memory = openSettings()->value(memoryKey).toDouble();
    if (memory >= leastMemory && memory <= mostMemory) {
        plate.setBound(static_cast<std::size_t>(memory * bytesOfGigabyte));
    }
    fillNames();
    refresh();
    showPlayer();
}

QAction* TimePanel::add(ActionText const& text, std::function<void()> function)
{
    auto* const action = makeAction(ruler, text, std::move(function), Qt::WidgetShortcut);
    actions << action;
    keyed << action;
    return action;
}

void TimePanel::makeActions()
{
    playAction =
        add({tr("&Play"), tr("Play"), {QKeySequence(Qt::Key_Space)}, QString::fromUtf8("▶")},
            [this] { togglePlay(1); });
    add({tr("Play &backwards"), tr("Play backwards"), {QKeySequence("Shift+Space")}},
        [this] { togglePlay(-1); });
    actions << makeSeparator(ruler);
    add({tr("P&revious frame"),
         tr("Previous frame"),
         {QKeySequence(Qt::Key_Left), QKeySequence(",")},
         QString::fromUtf8("◂")},
        [this] { timeline.step(-1); });
    add({tr("&Next frame"),
         tr("Next frame"),
         {QKeySequence(Qt::Key_Right), QKeySequence(".")},
         QString::fromUtf8("▸")},
        [this] { timeline.step(1); });
    add({tr("&First frame"), tr("First frame"), {QKeySequence(Qt::Key_Home)}},
        [this] { timeline.goToStart(); });
    add({tr("&Last frame"), tr("Last frame"), {QKeySequence(Qt::Key_End)}},
        [this] { timeline.goToEnd(); });
    add({tr("Pre&vious key"),
         tr("Previous key"),
         {QKeySequence("Ctrl+Left")},
         QString::fromUtf8("◆◂")},
        [this] { goToKey(-1); });
    add({tr("Next &key"), tr("Next key"), {QKeySequence("Ctrl+Right")}, QString::fromUtf8("▸◆")},
        [this] { goToKey(1); });
    actions << makeSeparator(ruler);
    add({tr("Key of the &curves"),
         tr("Set a key of the three curves at this frame, or remove it"),
         {QKeySequence("K")}},
        [this] { keys.toggle("the curves", document.listCurveNames()); });
    actions << makeSeparator(ruler);
    loopAction = makeSwitch(ruler, {tr("L&oop"), tr("Play the range again and again")},
                            [this](bool isOn) { timeline.setLooping(isOn); });
    actions << loopAction;
    actions << makeAction(ruler, {tr("All frames as the &range"), tr("As the sequence has them")},
                          [this] { timeline.resetRange(); });
    stillAction = makeSwitch(
        ruler, {tr("&Sequence"), tr("The picture with the frames beside it, or by itself")},
        [this](bool isOn) {
            isOn ? plate.open(plate.getFile()) : plate.openStill(plate.getFile());
        });
    actions << stillAction;
    actions << makeAction(ruler, {tr("Read a&gain"), tr("Look for frames and read them again")},
                          [this] { plate.reload(); });
    actions << makeAction(ruler, {tr("&Memory for frames…"), tr("How many frames are kept")},
                          [this] { askForMemory(); });
}

void TimePanel::serve(QWidget& widget) const
{
    widget.addActions(keyed);
}

QWidget* TimePanel::makeSteps()
{
    auto const [box, above, below] = makeRows(this);
    for (QAction* const action : keyed) {
        QString const sign = action->iconText();
        if (action == playAction) {
            playButton = makeStepButton(this, action);
        } else if (sign.size() == 1) {
            above->addWidget(makeStepButton(this, action));
        } else if (sign.contains(QString::fromUtf8("◆"))) {
            below->addWidget(makeStepButton(this, action));
        }
    }
    above->addWidget(playButton);
    frame = makeField(tr("Frame"), 72, [this](double number) { timeline.goTo(number); });
    above->addWidget(frame);
    names = new QComboBox(this);
    names->setAccessibleName(tr("Whose keys are shown"));
    names->setToolTip(tr("Whose keys are shown and edited in the ruler"));
    names->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    names->setMinimumContentsLength(10);
    connect(names, &QComboBox::activated, this, [this] {
        std::string const name = names->currentData().toString().toStdString();
        ruler->setNames(name.empty() ? Keys::Names() : Keys::Names{name});
    });
    below->addWidget(names, 1);
    return box;
}

NumberField* TimePanel::makeField(QString const& name, int width,
                                  std::function<void(double)> const& take)
{
    auto* const field = new NumberField(1.0, this);
    field->setAccessibleName(name);
    field->setFixedWidth(width);
    auto const set = [this, field, take](double number) {
        try {
            take(number);
            refresh();
        } catch (UsageError const& error) {
            field->refuse(QString::fromStdString(error.what()));
        }
    };
    connect(field, &NumberField::entered, this, set);
    connect(field, &NumberField::dragged, this, set);
    return field;
}

QWidget* TimePanel::makeRange()
{
    auto const [box, above, below] = makeRows(this);
    constexpr int width = 64;
    auto const toFrame = [](double number) { return static_cast<Frame>(std::llround(number)); };
    first = makeField(tr("First frame"), width, [this, toFrame](double number) {
        timeline.setRange({toFrame(number), timeline.getRange().last});
    });
    last = makeField(tr("Last frame"), width, [this, toFrame](double number) {
        timeline.setRange({timeline.getRange().first, toFrame(number)});
    });
    rate = makeField(tr("Frames a second"), width,
                     [this](double number) { timeline.setRate(number); });
    above->addWidget(first);
    above->addWidget(new QLabel(QString::fromUtf8("–"), this));
    above->addWidget(last);
    above->addWidget(rate);
    above->addWidget(new QLabel(tr("fps"), this));
    auto* const more = new QToolButton(this);
    more->setText(QString::fromUtf8("⋯"));
    more->setAccessibleName(tr("More about time"));
    more->setToolTip(tr("Loop, range, memory and more"));
    // Made anew each time: the actions' keys are none of the button's.
    connect(more, &QToolButton::clicked, this, [this, more] {
        auto* const menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->addActions(actions);
        menu->popup(more->mapToGlobal(QPoint(0, more->height())));
    });
    above->addWidget(more);
    state = new QLabel(this);
    state->setTextFormat(Qt::PlainText);
    below->addWidget(state, 1);
    return box;
}

/// The values that have keyframes.
void TimePanel::fillNames()
{
    QStringList found{QString()};
    for (auto const& slot : document.getNode().getValues()) {
        if (!keys.list({slot.name}).empty()) {
            found << QString::fromStdString(slot.name);
        }
    }
    QStringList shown;
    for (int index = 0; index < names->count(); ++index) {
        shown << names->itemData(index).toString();
    }
    if (shown == found) {
        return;
    }
    QString const chosen = names->currentData().toString();
    names->clear();
    for (QString const& name : found) {
        names->addItem(name.isEmpty() ? tr("All keys") : name, name);
    }
    int const index = std::max(names->findData(chosen), 0);
    names->setCurrentIndex(index);
    if (index == 0 && !ruler->getNames().empty()) {
        ruler->setNames({});
    }
}

void TimePanel::goToKey(int direction)
{
    if (auto const key = keys.findNext(direction)) {
        // Whole frames of sequences: on in the direction of the key.
        timeline.goTo(plate.isSequence() ? direction > 0 ? std::ceil(*key) : std::floor(*key)
                                         : *key);
    }
}

void TimePanel::togglePlay(int direction)
{
    if (player.isPlaying()) {
        player.stop();
    } else {
        player.play(direction);
    }
}

void TimePanel::askForMemory()
{
    auto* const question = new QInputDialog(this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setWindowTitle(tr("Memory for frames"));
    question->setLabelText(tr("Gigabytes for frames of a sequence (%1 are used now):")
                               .arg(formatMemory(plate.getHeldBytes())));
    question->setInputMode(QInputDialog::DoubleInput);
    question->setDoubleRange(leastMemory, mostMemory);
    question->setDoubleDecimals(1);
    question->setDoubleValue(static_cast<double>(plate.getBound()) / bytesOfGigabyte);
    connect(question, &QInputDialog::doubleValueSelected, this, [this](double gigabytes) {
        plate.setBound(static_cast<std::size_t>(gigabytes * bytesOfGigabyte));
        openSettings()->setValue(memoryKey, gigabytes);
    });
    question->open();
}

void TimePanel::refresh()
{
    auto const show = [](NumberField& field, double number) {
        if (!field.isModified()) { // not while somebody types
            field.showNumber(number);
        }
    };
    show(*frame, timeline.getTime());
    show(*first, static_cast<double>(timeline.getRange().first));
    show(*last, static_cast<double>(timeline.getRange().last));
    show(*rate, timeline.getRate());
    loopAction->setChecked(timeline.isLooping());
    stillAction->setChecked(plate.isSequence());
    stillAction->setEnabled(plate.getOpening() > 0);
    showState();
}

void TimePanel::showPlayer()
{
    bool const isPlaying = player.isPlaying();
    playAction->setIconText(QString::fromUtf8(isPlaying ? "■" : "▶"));
    playAction->setText(isPlaying ? tr("Sto&p") : tr("&Play"));
    setHelp(*playAction, isPlaying ? tr("Stop") : tr("Play"));
    if (!isPlaying) {
        playTimer.stop();
        if (!player.getReason().empty()) {
            emit failed(QString::fromStdString(player.getReason()));
        }
    }
    if (std::exchange(wasPlaying, isPlaying) != isPlaying) {
        emit playingChanged(isPlaying);
    }
    showState();
}

QString TimePanel::getStateText() const
{
    if (player.isPlaying() && player.isSlow()) {
        return tr("%1 of %2 fps")
            .arg(QString::number(player.getMeasuredRate(), 'f', 1),
                 QString::number(timeline.getRate(), 'g', 5));
    }
    if (player.isPlaying() && player.getMeasuredRate() > 0.0) {
        return tr("%1 fps").arg(QString::number(player.getMeasuredRate(), 'f', 1));
    }
    return plate.isSequence()
               ? tr("%1 of %2")
                     .arg(formatMemory(plate.getHeldBytes()), formatMemory(plate.getBound()))
               : QString();
}

void TimePanel::showState()
{
    state->setText(getStateText());
}

#include "editor/view/time/moc_TimePanel.cpp"
