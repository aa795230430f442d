#include "editor/view/parameters/ModeBox.h"

#include "pluginAPI/PiInputPolicy.h"

ModeBox::ModeBox(Document& editedDocument, QWidget* parent)
    : QComboBox(parent), document(editedDocument)
{
    setAccessibleName(tr("Mode"));
    setToolTip(tr("What the tool does before the curves"));
    std::string const name = document.getLink().getModeInputName();
    auto const policy = document.getNode().getValue(name)->getPolicy();
    for (auto const& [number, label] : dynamic_cast<PiEnumPolicy const&>(*policy).getPairs()) {
        addItem(QString::fromStdString(label), number);
    }
    connect(this, &QComboBox::activated, this,
            [this, name] { document.setNumbers("Set " + name, {name}, currentData().toInt()); });
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    refresh();
}

void ModeBox::refresh()
{
    setCurrentIndex(findData(static_cast<int>(document.getMode())));
}

#include "editor/view/parameters/moc_ModeBox.cpp"
