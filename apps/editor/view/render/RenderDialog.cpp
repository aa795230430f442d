#include "editor/view/render/RenderDialog.h"

#include "editor/view/window/FittedLabel.h"
#include "editor/view/window/Theme.h"
#include "files/PrintableText.h"
#include "session/Failures.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace {

constexpr int linesOfCommand = 6;
constexpr int linesOfMessages = 5;

QPlainTextEdit* makeText(QString const& name, int lines, QFont const& font, QWidget* parent)
{
    auto* const text = new QPlainTextEdit(parent);
    text->setFont(font);
    text->setReadOnly(true);
    text->setAccessibleName(name);
    text->setTabChangesFocus(true);
    text->setFixedHeight(text->fontMetrics().lineSpacing() * lines + 12);
    return text;
}

std::string getWord(QComboBox const* choice)
{
    return choice->currentData().toString().toStdString();
}

} // namespace

RenderDialog::RenderDialog(Document& editedDocument, Plate& shownPlate, Timeline& shownTimeline,
                           QAction* saveAction, QWidget* parent)
    : QDialog(parent), document(editedDocument), plate(shownPlate), timeline(shownTimeline),
      input(new FittedLabel(this, Qt::ElideMiddle)), output(new QLineEdit(this)),
      frames(new QLineEdit(this)),
      command(makeText(tr("The command line that does the same"), linesOfCommand,
                       QFontDatabase::systemFont(QFontDatabase::FixedFont), this)),
      commandNote(new QLabel(this)), copy(new QPushButton(tr("&Copy"), this)),
      save(new QPushButton(tr("&Save project"), this)), progress(new QProgressBar(this)),
      state(new QLabel(this)),
      messages(makeText(tr("What was said"), linesOfMessages, font(), this))
{
    setWindowTitle(tr("Render"));
    resize(640, 480);
    auto* const whole = new QVBoxLayout(this);
    auto* const form = new QFormLayout();
    whole->addLayout(form);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignRight);
    input->setTextInteractionFlags(Qt::TextSelectableByMouse);
    input->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    state->setTextFormat(Qt::PlainText);
    state->setWordWrap(true);
    state->setAccessibleName(tr("State of the render"));
    form->addRow(tr("Input"), input);
    form->addRow(tr("&Output"), makeOutputRow());
    addChoices(*form);
    form->addRow(tr("Command"), makeCommandRow(saveAction));
    for (QWidget* const widget : std::initializer_list<QWidget*>{progress, state, messages}) {
        whole->addWidget(widget);
    }
    whole->addStretch(1);
    whole->addWidget(makeButtons());
    connect(output, &QLineEdit::textChanged, this, &RenderDialog::showWish);
    connect(frames, &QLineEdit::textChanged, this, &RenderDialog::showWish);
    run.addHandler(&runChanged);
    document.addFileHandler(&fileChanged);
    document.addTimeHandler(&timeChanged);
    plate.addHandler(&plateChanged);
    showRun();
}

void RenderDialog::addChoices(QFormLayout& form)
{
    frames->setAccessibleName(tr("Frames"));
    frames->setToolTip(tr("Such as 1-10,15,20-40x5; none: all that there are"));
    form.addRow(tr("&Frames"), frames);
    existing = addChoice(form, tr("Files that are &there"),
                         {{tr("are written again"), ""},
                          {tr("stay if they are whole and fit"), "skip"},
                          {tr("are an error"), "error"}});
    missing = addChoice(form, tr("&Missing frames"),
                        {{tr("fail; the others go on"), ""},
                         {tr("are left out"), "skip"},
                         {tr("end the render"), "stop"}});
    depth = addChoice(form, tr("&Depth"),
                      {{tr("as \"Output Depth\" says"), ""},
                       {tr("8 bit"), "8"},
                       {tr("16 bit float"), "16"},
                       {tr("32 bit float"), "32"},
                       {tr("the input's"), "input"}});
    compression = addChoice(form, tr("Com&pression of EXR"),
                            {{tr("the input's"), ""},
                             {tr("none"), "none"},
                             {"RLE", "rle"},
                             {"ZIPS", "zips"},
                             {"ZIP", "zip"},
                             {"PIZ", "piz"},
                             {"PXR24", "pxr24"},
                             {"B44", "b44"},
                             {"B44A", "b44a"},
                             {"DWAA", "dwaa"},
                             {"DWAB", "dwab"}});
}

QComboBox* RenderDialog::addChoice(QFormLayout& form, QString const& label,
                                   std::initializer_list<std::pair<QString, char const*>> words)
{
    auto* const choice = new QComboBox(this);
    for (auto const& [text, word] : words) {
        choice->addItem(text, word);
    }
    choice->setAccessibleName(QString(label).remove('&'));
    form.addRow(label, choice);
    connect(choice, &QComboBox::currentIndexChanged, this, &RenderDialog::showWish);
    return choice;
}

QWidget* RenderDialog::makeOutputRow()
{
    auto* const row = new QWidget(this);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    output->setAccessibleName(tr("Output"));
    output->setToolTip(tr("A file, or a pattern such as shot.####.exr; the extension says the "
                          "format"));
    auto* const browse = new QPushButton(QString::fromUtf8("…"), row);
    browse->setAccessibleName(tr("Choose the output"));
    browse->setFixedWidth(36);
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, &RenderDialog::askForOutput);
    layout->addWidget(output, 1);
    layout->addWidget(browse);
    row->setFocusProxy(output);
    return row;
}

QWidget* RenderDialog::makeCommandRow(QAction* saveAction)
{
    auto* const whole = new QWidget(this);
    whole->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* const column = new QVBoxLayout(whole);
    column->setContentsMargins(0, 0, 0, 0);
    command->setPlaceholderText(tr("is shown once the project is saved"));
    column->addWidget(command);
    auto* const row = new QHBoxLayout();
    commandNote->setWordWrap(true);
    row->addWidget(commandNote, 1);
    row->addWidget(save);
    row->addWidget(copy);
    column->addLayout(row);
    for (QPushButton* const button : {save, copy}) {
        button->setAutoDefault(false);
    }
    connect(save, &QPushButton::clicked, saveAction, &QAction::trigger);
    connect(copy, &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(command->toPlainText()); });
    return whole;
}

QWidget* RenderDialog::makeButtons()
{
    auto* const row = new QWidget(this);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    start = new QPushButton(tr("&Render"), row);
    cancel = new QPushButton(tr("C&ancel render"), row);
    auto* const close = new QPushButton(tr("C&lose"), row);
    start->setDefault(true);
    cancel->setAutoDefault(false);
    close->setAutoDefault(false);
    layout->addStretch(1);
    layout->addWidget(cancel);
    layout->addWidget(start);
    layout->addWidget(close);
    connect(start, &QPushButton::clicked, this, &RenderDialog::begin);
    connect(cancel, &QPushButton::clicked, this, [this] { run.cancel(); });
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    return row;
}

void RenderDialog::present()
{
    showDefaults();
    show();
    raise();
    activateWindow();
    output->setFocus();
}

/// Of the plate that is shown now.
void RenderDialog::showDefaults()
{
    std::string const name = plate.getOpening() > 0 ? plate.getName() : std::string();
    if (name != shownInput) {
        shownInput = name;
        std::filesystem::path const suggested =
            name.empty() ? "" : std::filesystem::absolute(suggestOutput(name)).lexically_normal();
        output->setText(QString::fromStdString(suggested.string()));
        frames->clear();
    }
    input->setLines(name.empty() ? tr("no picture is open")
                                 : QString::fromStdString(makePrintable(name)));
    frames->setEnabled(plate.isSequence());
    frames->setPlaceholderText(plate.isSequence() ? tr("all that there are")
                                                  : tr("the picture that is shown"));
    missing->setEnabled(plate.isSequence());
    showWish();
    showRun();
}

RenderWish RenderDialog::getWish() const
{
    RenderWish wish;
    wish.input = shownInput;
    wish.output = output->text().toStdString();
    if (plate.isSequence()) {
        wish.frames = frames->text().simplified().replace(' ', ',').toStdString();
        wish.missing = getWord(missing);
    } else {
        wish.time = timeline.getTime();
    }
    wish.existing = getWord(existing);
    wish.depth = getWord(depth);
    wish.compression = getWord(compression);
    return wish;
}

void RenderDialog::showWish()
{
    std::filesystem::path const& project = document.getProjectFile().getPath();
    bool const isSaved = !project.empty() && !document.isModified();
    bool const isComplete = !shownInput.empty() && !output->text().isEmpty();
    QString text;
    if (isSaved && isComplete) {
        std::vector<std::string> words = makeRenderWords(getWish(), project);
        words.insert(words.begin(), "remapcolor");
        text = QString::fromStdString(formatShellLine(words));
    }
    command->setPlainText(text);
    commandNote->setText(text.isEmpty() ? QString()
                                        : tr("renders the same with the saved project"));
    copy->setEnabled(!text.isEmpty());
    save->setVisible(!isSaved);
    start->setEnabled(isComplete && !run.isRunning());
}

void RenderDialog::askForOutput()
{
    QString const file =
        QFileDialog::getSaveFileName(this, tr("Output"), output->text(),
                                     tr("Pictures (*.exr *.png *.tif *.tiff *.jpg *.dpx);;"
                                        "All files (*)"),
                                     nullptr, QFileDialog::DontConfirmOverwrite);
    if (!file.isEmpty()) {
        output->setText(file);
    }
}

void RenderDialog::begin()
{
    try {
        run.start(document, getWish());
    } catch (...) {
        state->setText(QString::fromStdString(describeCurrentFailure().text));
    }
}

void RenderDialog::showRun()
{
    bool const isRunning = run.isRunning();
    auto const nbFrames = static_cast<int>(run.countFrames());
    // One picture is on its way until it is there.
    progress->setRange(0, isRunning && nbFrames <= 1 ? 0 : std::max(nbFrames, 1));
    progress->setValue(static_cast<int>(run.countDone()));
    progress->setVisible(isRunning);
    QString text = QString::fromStdString(run.getOutcome());
    if (isRunning) {
        text = run.isCancelled() ? tr("stopping…")
               : nbFrames > 1    ? QString::fromStdString(run.describePace())
                                 : tr("rendering…");
    }
    state->setText(text);
    QPalette palette = state->palette();
    palette.setColor(QPalette::WindowText, run.hasFailed() ? Theme::failure : Theme::text);
    state->setPalette(palette);
    QStringList lines;
    for (std::string const& message : run.getMessages()) {
        lines << QString::fromStdString(message);
    }
    if (messages->toPlainText() != lines.join('\n')) {
        messages->setPlainText(lines.join('\n'));
    }
    messages->setVisible(!lines.isEmpty());
    start->setEnabled(!isRunning && !shownInput.empty() && !output->text().isEmpty());
    cancel->setEnabled(isRunning && !run.isCancelled());
    if (std::exchange(wasRunning, isRunning) && !isRunning && !isVisible()) {
        emit ended(tr("Render: %1").arg(text), run.hasFailed());
    }
}

#include "editor/view/render/moc_RenderDialog.cpp"
