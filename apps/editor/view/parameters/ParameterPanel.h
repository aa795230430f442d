#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"
#include "editor/model/parameters/ParameterRows.h"
#include "editor/view/parameters/NumberField.h"

#include <QWidget>
#include <functional>
#include <map>
#include <string>
#include <vector>

class QGridLayout;
class QLabel;

/// The node's parameters as a table; those of the other mode are hidden. A refused value is marked
/// where it was typed.
class ParameterPanel : public QWidget {
    Q_OBJECT

public:
    ParameterPanel(Document& editedDocument, std::vector<ParameterRow> const& parameters,
                   QWidget* parent = nullptr);

    /// The field of a value; null where there is none.
    NumberField* findField(std::string const& name) const;

private:
    struct ShownRow {
        ParameterRow row;
        std::vector<QWidget*> widgets;
        std::vector<NumberField*> fields;
        std::function<void()> refresh;
    };

    void addHeader(QGridLayout& grid);
    void addHeading(QGridLayout& grid, int place, std::string const& group);
    void addRow(QGridLayout& grid, int place, ParameterRow const& row);
    void addFields(QGridLayout& grid, int place, ShownRow& shown);
    void addLink(QGridLayout& grid, int place, ShownRow& shown);
    void addSwitch(QGridLayout& grid, int place, ShownRow& shown);
    void addChoice(QGridLayout& grid, int place, ShownRow& shown);
    void addReset(QGridLayout& grid, int place, ShownRow& shown);
    void connectField(NumberField* field, ParameterRow const& row, std::string const& name);
    void setNumber(NumberField* field, ParameterRow const& row, std::string const& name,
                   double number);
    std::vector<std::string> listTogether(ParameterRow const& row, std::string const& name) const;
    void reset(std::string const& title, std::vector<std::string> const& names);
    bool isDefault(std::string const& name) const;
    void refresh();

    Document& document;
    NodeValues defaults;
    std::vector<ShownRow> rows;
    std::map<std::string, QLabel*> headings; ///< of groups
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { refresh(); }};
    CbFunction<double const> timeChanged{[this](double const&) { refresh(); }};
};
