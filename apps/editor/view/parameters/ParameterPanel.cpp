#include "editor/view/parameters/ParameterPanel.h"

#include "editor/view/parameters/RowLabel.h"
#include "editor/view/time/KeyButton.h"
#include "editor/view/window/Theme.h"
#include "pluginAPI/PiInputPolicy.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QToolButton>
#include <algorithm>
#include <iterator>

namespace {

enum Column { Label, FirstChannel, Link = 4, Key = 5, Reset = 6 };
constexpr int nbChannels = 3;

std::string makeEditLabel(std::string const& name)
{
    return "Set " + name;
}

/// The row's name if it is set as a whole.
std::string const& nameTogether(ParameterRow const& row, std::vector<std::string> const& together)
{
    return together.size() > 1 ? row.name : together.front();
}

QString const channelLetters[] = {"R", "G", "B"};

bool isOfMode(ParameterRow const& row, std::string const& mode)
{
    return row.mode.empty() || row.mode == mode;
}

} // namespace

ParameterPanel::ParameterPanel(Document& editedDocument,
                               std::vector<ParameterRow> const& parameters, QWidget* parent)
    : QWidget(parent), document(editedDocument),
      defaults(getDefaultValues(document.getNode().getTool()))
{
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(10, 6, 10, 10);
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(5);
    addHeader(*grid);
    int place = 1;
    for (ParameterRow const& row : parameters) {
        if (!row.group.empty() && !headings.contains(row.group)) {
            addHeading(*grid, place++, row.group);
        }
        addRow(*grid, place++, row);
    }
    grid->setRowStretch(place, 1);
    for (int channel = 0; channel < nbChannels; ++channel) {
        grid->setColumnStretch(FirstChannel + channel, 1);
    }
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    refresh();
}

NumberField* ParameterPanel::findField(std::string const& name) const
{
    for (ShownRow const& shown : rows) {
        for (std::size_t index = 0; index < shown.fields.size(); ++index) {
            if (shown.row.names[index] == name) {
                return shown.fields[index];
            }
        }
    }
    return nullptr;
}

void ParameterPanel::addHeader(QGridLayout& grid)
{
    for (int channel = 0; channel < nbChannels; ++channel) {
        auto* const label = new QLabel(channelLetters[channel], this);
        label->setAlignment(Qt::AlignCenter);
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, Theme::channels[channel]);
        label->setPalette(palette);
        grid.addWidget(label, 0, FirstChannel + channel);
    }
    auto* const link = new QLabel(tr("link"), this);
    link->setToolTip(tr("Linked channels are set together"));
    grid.addWidget(link, 0, Link);
    auto* const key = new QLabel(tr("key"), this);
    key->setToolTip(tr("Keys at the frame that is shown"));
    grid.addWidget(key, 0, Key);
}

void ParameterPanel::addHeading(QGridLayout& grid, int place, std::string const& group)
{
    auto* const heading = new QLabel(QString::fromStdString(group), this);
    QPalette palette = heading->palette();
    palette.setColor(QPalette::WindowText, Theme::dimText);
    heading->setPalette(palette);
    heading->setContentsMargins(0, place == 1 ? 0 : 6, 0, 0);
    grid.addWidget(heading, place, Label, 1, Reset + 1);
    headings.emplace(group, heading);
}

void ParameterPanel::addRow(QGridLayout& grid, int place, ParameterRow const& row)
{
    ShownRow shown{row, {}, {}, {}};
    auto* const label = new RowLabel(QString::fromStdString(row.label), this);
    label->setToolTip(tr("Double click to reset"));
    connect(label, &RowLabel::doubleClicked, this, [this, row] { reset(row.name, row.names); });
    grid.addWidget(label, place, Label);
    shown.widgets.push_back(label);
    switch (row.kind) {
    case ParameterRow::Numbers:
    case ParameterRow::Number: addFields(grid, place, shown); break;
    case ParameterRow::Switch: addSwitch(grid, place, shown); break;
    case ParameterRow::Choice: addChoice(grid, place, shown); break;
    }
    auto* const key = new KeyButton(document, row.label, row.names, this);
    grid.addWidget(key, place, Key, Qt::AlignCenter);
    shown.widgets.push_back(key);
    addReset(grid, place, shown);
    rows.push_back(std::move(shown));
}

void ParameterPanel::addFields(QGridLayout& grid, int place, ShownRow& shown)
{
    for (std::size_t index = 0; index < shown.row.names.size(); ++index) {
        auto* const field = new NumberField(shown.row.step, this);
        if (shown.row.slider.has_value()) {
            field->setSlider(shown.row.slider->from, shown.row.slider->to);
        }
        QString const name = QString::fromStdString(shown.row.names[index]);
        field->setAccessibleName(name);
        field->setHelp(name); // as the command line calls it
        grid.addWidget(field, place, FirstChannel + static_cast<int>(index));
        connectField(field, shown.row, shown.row.names[index]);
        shown.fields.push_back(field);
        shown.widgets.push_back(field);
    }
    shown.refresh = [this, fields = shown.fields, names = shown.row.names] {
        for (std::size_t index = 0; index < fields.size(); ++index) {
            fields[index]->showNumber(document.getNumber(names[index]));
        }
    };
    if (!shown.row.link.empty()) {
        addLink(grid, place, shown);
    }
}

void ParameterPanel::addLink(QGridLayout& grid, int place, ShownRow& shown)
{
    auto* const box = new QCheckBox(this);
    std::string const link = shown.row.link;
    box->setAccessibleName(tr("Link the channels of %1").arg(shown.row.label.c_str()));
    box->setToolTip(tr("Linked channels are set together"));
    connect(box, &QCheckBox::clicked, this, [this, link](bool isOn) {
        document.setNumbers(isOn ? "Link channels" : "Unlink channels", {link}, isOn);
    });
    grid.addWidget(box, place, Link, Qt::AlignCenter);
    shown.widgets.push_back(box);
    shown.refresh = [this, box, link, before = shown.refresh] {
        before();
        box->setChecked(document.getNumber(link) != 0.0);
    };
}

void ParameterPanel::addSwitch(QGridLayout& grid, int place, ShownRow& shown)
{
    auto* const box = new QCheckBox(this);
    std::string const name = shown.row.name;
    box->setAccessibleName(QString::fromStdString(name));
    connect(box, &QCheckBox::clicked, this,
            [this, name](bool isOn) { document.setNumbers(makeEditLabel(name), {name}, isOn); });
    grid.addWidget(box, place, FirstChannel);
    shown.widgets.push_back(box);
    shown.refresh = [this, box, name] { box->setChecked(document.getNumber(name) != 0.0); };
}

void ParameterPanel::addChoice(QGridLayout& grid, int place, ShownRow& shown)
{
    auto* const box = new QComboBox(this);
    std::string const name = shown.row.name;
    box->setAccessibleName(QString::fromStdString(name));
    auto const value = document.getNode().getValue(name);
    for (auto const& [number, label] :
         dynamic_cast<PiEnumPolicy const&>(*value->getPolicy()).getPairs()) {
        box->addItem(QString::fromStdString(label), number);
    }
    connect(box, &QComboBox::activated, this, [this, box, name] {
        document.setNumbers(makeEditLabel(name), {name}, box->currentData().toInt());
    });
    grid.addWidget(box, place, FirstChannel, 1, nbChannels);
    shown.widgets.push_back(box);
    shown.refresh = [this, box, name] {
        box->setCurrentIndex(box->findData(static_cast<int>(document.getNumber(name))));
    };
}

void ParameterPanel::addReset(QGridLayout& grid, int place, ShownRow& shown)
{
    auto* const button = new QToolButton(this);
    button->setText(QString::fromUtf8("↺"));
    button->setAutoRaise(true);
    button->setToolTip(tr("Reset %1").arg(QString::fromStdString(shown.row.label)));
    button->setAccessibleName(button->toolTip());
    connect(button, &QToolButton::clicked, this,
            [this, row = shown.row] { reset(row.name, row.names); });
    grid.addWidget(button, place, Reset);
    shown.widgets.push_back(button);
    shown.refresh = [this, button, row = shown.row, before = shown.refresh] {
        before();
        button->setEnabled(
            !std::all_of(row.names.begin(), row.names.end(),
                         [this](std::string const& name) { return isDefault(name); }));
    };
}

void ParameterPanel::connectField(NumberField* field, ParameterRow const& row,
                                  std::string const& name)
{
    auto const set = [this, field, row, name](double number) {
        setNumber(field, row, name, number);
    };
    connect(field, &NumberField::entered, this, set);
    connect(field, &NumberField::dragged, this, set);
    connect(field, &NumberField::doubleClicked, this, [this, row, name] {
        std::vector<std::string> const together = listTogether(row, name);
        reset(nameTogether(row, together), together);
    });
    connect(field, &NumberField::dragBegan, this,
            [this, row] { document.beginDrag(makeEditLabel(row.name)); });
    connect(field, &NumberField::dragEnded, this, [this] { document.endDrag(); });
    connect(field, &NumberField::dragAbandoned, this, [this] { document.abandonDrag(); });
}

void ParameterPanel::setNumber(NumberField* field, ParameterRow const& row, std::string const& name,
                               double number)
{
    std::vector<std::string> const together = listTogether(row, name);
    try {
        document.setNumbers(makeEditLabel(nameTogether(row, together)), together, number);
        field->showNumber(document.getNumber(name)); // "1+1" that is 2 already
    } catch (ValueError const& error) {
        field->refuse(QString::fromStdString(error.what()));
    }
}

/// What is set with the value: itself first, then those that are linked to it.
std::vector<std::string> ParameterPanel::listTogether(ParameterRow const& row,
                                                      std::string const& name) const
{
    std::vector<std::string> together{name};
    if (!row.link.empty() && document.getNumber(row.link) != 0.0) {
        std::copy_if(row.names.begin(), row.names.end(), std::back_inserter(together),
                     [&](std::string const& other) { return other != name; });
    }
    return together;
}

void ParameterPanel::reset(std::string const& title, std::vector<std::string> const& names)
{
    NodeValues states;
    bool isChanged = false;
    for (std::string const& name : names) {
        states.emplace(name, defaults.at(name));
        isChanged = isChanged || !isDefault(name);
    }
    if (isChanged) {
        document.edit("Reset " + title, states);
    }
}

bool ParameterPanel::isDefault(std::string const& name) const
{
    return isSameState(*document.getNode().getValue(name)->getState(), defaults.at(name));
}

void ParameterPanel::refresh()
{
    std::string const mode = document.getLink().getModeName(document.getMode());
    for (auto const& [group, heading] : headings) {
        heading->setVisible(std::any_of(rows.begin(), rows.end(), [&](ShownRow const& shown) {
            return shown.row.group == group && isOfMode(shown.row, mode);
        }));
    }
    for (ShownRow const& shown : rows) {
        for (QWidget* const widget : shown.widgets) {
            widget->setVisible(isOfMode(shown.row, mode));
        }
        shown.refresh();
    }
}

#include "editor/view/parameters/moc_ParameterPanel.cpp"
