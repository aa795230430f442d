#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"

#include <QComboBox>

/// The tool's mode at the moment that is shown.
class ModeBox : public QComboBox {
    Q_OBJECT

public:
    explicit ModeBox(Document& editedDocument, QWidget* parent = nullptr);

private:
    void refresh();

    Document& document;
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { refresh(); }};
    CbFunction<double const> timeChanged{[this](double const&) { refresh(); }};
};
