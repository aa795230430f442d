#include "editor/view/curves/KeyBar.h"

#include "editor/view/curves/CurveWidget.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace {

using CurveEditing::Move;

constexpr double keyStep = 0.005;

} // namespace

// ---- KeyField ----

KeyField::KeyField(CurveEditor& itsEditor, CurveEditor::Coordinate itsCoordinate, QWidget* parent)
    : NumberField(keyStep, parent), editor(itsEditor), coordinate(itsCoordinate)
{
    connect(this, &NumberField::entered, this, [this](double number) {
        editor.moveSelected("Nudge", makeMove(number - getNumber()));
    });
    connect(this, &NumberField::dragBegan, this, [this] {
        start = getNumber();
        editor.beginDrag("Place key");
    });
    connect(this, &NumberField::dragged, this,
            [this](double number) { editor.dragSelected(makeMove(number - start)); });
    connect(this, &NumberField::dragEnded, this, [this] { editor.endDrag(); });
    connect(this, &NumberField::dragAbandoned, this, [this] { editor.abandonDrag(); });
}

Move KeyField::makeMove(double by) const
{
    auto const distance = static_cast<float>(by);
    return coordinate == CurveEditor::Coordinate::X ? Move{distance, 0.0F} : Move{0.0F, distance};
}

void KeyField::refresh()
{
    std::size_t const count = editor.countSelected();
    setEnabled(count > 0);
    setPlaceholderText(count > 1 ? tr("several") : QString());
    if (count > 0) {
        int const lead = editor.getLead();
        GePoint2<float> const first =
            CurveEditing::getKey(editor.getCurve(lead), editor.getSelection(lead).front());
        double const number = coordinate == CurveEditor::Coordinate::X ? first.x : first.y;
        if (!isModified() || number != getNumber()) {
            showNumber(number);
        }
    }
    if (count != 1) {
        clear();
    }
}

void KeyField::take(QString const& text)
{
    std::string const refusal = editor.place(coordinate, text.toStdString());
    if (refusal.empty()) {
        refresh();
    } else {
        refuse(QString::fromStdString(refusal));
        emit refused(QString::fromStdString(refusal));
    }
}

// ---- KeyBar ----

KeyBar::KeyBar(CurveEditor& itsEditor, CurveWidget& graph, QWidget* parent)
    : QWidget(parent), editor(itsEditor), title(new QLabel(this)),
      keyX(new KeyField(editor, CurveEditor::Coordinate::X, this)),
      keyY(new KeyField(editor, CurveEditor::Coordinate::Y, this)), handles(new QComboBox(this)),
      remove(nullptr)
{
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    title->setMinimumWidth(title->fontMetrics().horizontalAdvance(tr("00 keys")));
    layout->addWidget(title);
    for (auto const& [text, field] : {std::pair(tr("x"), keyX), std::pair(tr("y"), keyY)}) {
        field->setAccessibleName(tr("Key's %1").arg(text));
        layout->addWidget(new QLabel(text, this));
        layout->addWidget(field, 1);
        connect(field, &KeyField::refused, this, &KeyBar::refused);
    }
    handles->setAccessibleName(tr("Handles"));
    handles->addItems({tr("Smooth"), tr("Mirrored"), tr("Broken"), tr("Flat"), tr("Straight")});
    connect(handles, &QComboBox::activated, this, [this, &graph](int kind) {
        graph.attempt([&] { editor.setHandles(static_cast<CurveEditing::Handles>(kind)); });
    });
    layout->addWidget(handles);
    auto* const button = new QToolButton(this);
    button->setText(QString::fromUtf8("×"));
    button->setToolTip(tr("Remove the keys (Delete)"));
    button->setAccessibleName(tr("Remove the keys"));
    connect(button, &QToolButton::clicked, this,
            [this, &graph] { graph.attempt([&] { editor.removeSelected(); }); });
    layout->addWidget(button);
    remove = button;
    editor.addHandler(&edited);
    refresh();
}

void KeyBar::refresh()
{
    std::size_t const count = editor.countSelected();
    title->setText(count > 1 ? tr("%1 keys").arg(count) : tr("Key"));
    keyX->refresh();
    keyY->refresh();
    handles->setEnabled(count > 0);
    remove->setEnabled(count > 0);
    handles->setCurrentIndex(count == 1 ? static_cast<int>(editor.getHandles()) : -1);
}

#include "editor/view/curves/moc_KeyBar.cpp"
