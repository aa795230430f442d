#include "editor/view/curves/OffsetDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>

namespace {

constexpr int leastWidth = 300; // has room for the title

} // namespace

OffsetDialog::OffsetDialog(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(tr("Offset of the curve"));
    setLayout(new QFormLayout);
    NumberField* const x = addField(tr("along x"));
    NumberField* const y = addField(tr("along y"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* const move = buttons->addButton(tr("&Move"), QDialogButtonBox::ApplyRole);
    move->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(move, &QPushButton::clicked, this,
            [this, x, y] { emit asked(x->getNumber(), y->getNumber()); });
    static_cast<QFormLayout*>(layout())->addRow(buttons);
    setMinimumWidth(leastWidth);
}

NumberField* OffsetDialog::addField(QString const& text)
{
    constexpr double step = 0.01;
    auto* const field = new NumberField(step, this);
    field->setAccessibleName(text);
    field->showNumber(0.0);
    connect(field, &NumberField::entered, field, &NumberField::showNumber);
    connect(field, &NumberField::dragged, field, &NumberField::showNumber);
    static_cast<QFormLayout*>(layout())->addRow(text, field);
    return field;
}

#include "editor/view/curves/moc_OffsetDialog.cpp"
