#include "editor/view/curves/PresetsDialog.h"

#include "editor/view/curves/CurvePainter.h"
#include "editor/view/window/Theme.h"
#include "session/Failures.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr QSize presetSize(96, 72);
constexpr double presetMargin = 6.0;

} // namespace

PresetsDialog::PresetsDialog(CurveEditor& itsEditor, std::filesystem::path const& folder,
                             QWidget* parent)
    : QDialog(parent), editor(itsEditor), presets(editor.getDocument(), folder),
      list(new QListWidget(this)), name(new QLineEdit(this)), reason(new QLabel(this))
{
    setWindowTitle(tr("Presets of curves"));
    list->setAccessibleName(tr("Presets"));
    list->setViewMode(QListView::IconMode);
    list->setMovement(QListView::Static);
    list->setResizeMode(QListView::Adjust);
    list->setUniformItemSizes(true);
    list->setIconSize(presetSize);
    list->setGridSize(presetSize + QSize(24, 2 * fontMetrics().height()));
    name->setAccessibleName(tr("Name"));
    name->setPlaceholderText(tr("Name"));
    reason->setTextFormat(Qt::PlainText);
    reason->setWordWrap(true);
    reason->setMinimumHeight(2 * fontMetrics().height());
    reason->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(list, 1);
    layout->addWidget(name);
    layout->addWidget(reason);
    buildButtons();
    connect(list, &QListWidget::itemSelectionChanged, this, [this] { choose(); });
    connect(list, &QListWidget::itemActivated, this, [this] { attempt([this] { apply(); }); });
    connect(name, &QLineEdit::returnPressed, this, [this] { attempt([this] { save(); }); });
    connect(name, &QLineEdit::textEdited, this, [this] { say({}); });
    resize(420, 380);
}

void PresetsDialog::buildButtons()
{
    auto* const row = new QHBoxLayout;
    QPushButton* const save = addButton(tr("Save"), [this] { this->save(); });
    save->setToolTip(tr("The curves as they are now, by the name above"));
    back = addButton(tr("Put back"), [this] { putBack(); });
    back->setToolTip(tr("The preset that was deleted last"));
    QPushButton* const apply = addButton(tr("Apply"), [this] { this->apply(); });
    apply->setToolTip(tr("To the curves that are edited"));
    ofChosen = {addButton(tr("Rename"), [this] { rename(); }),
                addButton(tr("Delete"), [this] { remove(); }), apply};
    for (QPushButton* const button : {save, ofChosen[0], ofChosen[1], back}) {
        row->addWidget(button);
    }
    row->addStretch(1);
    row->addWidget(apply);
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

QPushButton* PresetsDialog::addButton(QString const& text, std::function<void()> function)
{
    auto* const button = new QPushButton(text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this,
            [this, called = std::move(function)] { attempt(called); });
    return button;
}

void PresetsDialog::attempt(std::function<void()> const& function)
{
    try {
        say({});
        function();
    } catch (std::exception const&) {
        say(QString::fromStdString(describeCurrentFailure().text));
    }
}

/// Why not; empty for nothing.
void PresetsDialog::say(QString const& sentence)
{
    QPalette palette = reason->palette();
    palette.setColor(QPalette::WindowText, Theme::failure);
    reason->setPalette(palette);
    reason->setText(sentence);
    name->setProperty("refused", !sentence.isEmpty());
    name->style()->unpolish(name);
    name->style()->polish(name);
}

void PresetsDialog::showEvent(QShowEvent* event)
{
    attempt([this] { fill(); });
    QDialog::showEvent(event);
}

/// Another program may have saved one meanwhile.
bool PresetsDialog::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate) {
        attempt([this] { fill(); });
    }
    return QDialog::event(event);
}

void PresetsDialog::fill()
{
    CurvePresets::Preset const* const chosen = getChosen();
    std::string const before = chosen != nullptr ? chosen->name : std::string();
    std::vector<CurvePresets::Preset> listed = presets.list();
    QSignalBlocker const silent(list);
    list->clear();
    shown = std::move(listed);
    for (CurvePresets::Preset const& preset : shown) {
        QString const text = QString::fromStdString(preset.name);
        auto* const item = new QListWidgetItem(draw(preset.curves), text, list);
        item->setToolTip(text);
    }
    select(before);
    std::string const complaint = presets.takeComplaint();
    if (!complaint.empty()) {
        say(QString::fromStdString(complaint));
    }
}

void PresetsDialog::select(std::string const& wanted)
{
    auto const place = std::find_if(shown.begin(), shown.end(),
                                    [&](auto const& one) { return one.name == wanted; });
    list->setCurrentRow(place == shown.end() ? -1 : static_cast<int>(place - shown.begin()));
    choose();
}

void PresetsDialog::choose()
{
    CurvePresets::Preset const* const chosen = getChosen();
    for (QPushButton* const button : ofChosen) {
        button->setEnabled(chosen != nullptr);
    }
    back->setEnabled(!deleted.empty());
    if (chosen != nullptr) {
        name->setText(QString::fromStdString(chosen->name));
    }
}

CurvePresets::Preset const* PresetsDialog::getChosen() const
{
    int const row = list->selectedItems().isEmpty() ? -1 : list->currentRow();
    return row >= 0 && row < static_cast<int>(shown.size()) ? &shown[static_cast<std::size_t>(row)]
                                                            : nullptr;
}

std::string PresetsDialog::getName() const
{
    return name->text().trimmed().toStdString();
}

void PresetsDialog::apply()
{
    if (CurvePresets::Preset const* const chosen = getChosen()) {
        editor.put("Apply preset", chosen->curves);
    }
}

void PresetsDialog::save()
{
    std::string const wanted = getName();
    presets.save({wanted, {editor.getCurve(0), editor.getCurve(1), editor.getCurve(2)}});
    fill();
    select(wanted);
}

void PresetsDialog::rename()
{
    if (CurvePresets::Preset const* const chosen = getChosen()) {
        std::string const wanted = getName();
        presets.rename(chosen->name, wanted);
        fill();
        select(wanted);
    }
}

void PresetsDialog::remove()
{
    if (CurvePresets::Preset const* const chosen = getChosen()) {
        CurvePresets::Preset const preset = *chosen;
        presets.remove(preset.name);
        deleted.push_back(preset);
        fill();
    }
}

void PresetsDialog::putBack()
{
    CurvePresets::Preset const preset = deleted.back();
    presets.save(preset);
    deleted.pop_back();
    fill();
    select(preset.name);
}

/// The unit square with the three lines, as the graph draws them.
QPixmap PresetsDialog::draw(CurvePresets::Curves const& curves) const
{
    QPixmap pixmap(presetSize * devicePixelRatioF());
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    pixmap.fill(Theme::field);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF const square = QRectF(QPointF(0, 0), presetSize)
                              .adjusted(presetMargin, presetMargin, -presetMargin, -presetMargin);
    painter.setPen(Theme::frame);
    painter.drawRect(square);
    std::vector<float> xs;
    constexpr int nbSteps = 64;
    for (int step = 0; step <= nbSteps; ++step) {
        xs.push_back(static_cast<float>(step) / nbSteps);
    }
    bool const areAlike = curves[0] == curves[1] && curves[0] == curves[2];
    ControllerLink const& link = editor.getDocument().getLink();
    for (int channel = areAlike ? 2 : 0; channel < CurveEditor::nbChannels; ++channel) {
        std::vector<float> const ys =
            link.mapThroughCurve(curves[static_cast<std::size_t>(channel)], xs);
        QPolygonF line;
        for (std::size_t index = 0; index < xs.size(); ++index) {
            double const y = std::clamp(double{ys[index]}, -1.0, 2.0);
            line << QPointF(square.left() + double{xs[index]} * square.width(),
                            square.bottom() - y * square.height());
        }
        QColor const color = areAlike ? Theme::text : Theme::channels[channel];
        painter.setPen(
            QPen(color, 1.6, areAlike ? Qt::SolidLine : CurvePainter::getStyle(channel)));
        painter.drawPolyline(line);
    }
    return pixmap;
}

#include "editor/view/curves/moc_PresetsDialog.cpp"
