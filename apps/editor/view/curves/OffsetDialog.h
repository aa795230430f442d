#pragma once

#include "editor/view/parameters/NumberField.h"

#include <QDialog>

/// Asks how far the edited curves are to move, as often as wanted.
class OffsetDialog : public QDialog {
    Q_OBJECT

public:
    explicit OffsetDialog(QWidget* parent);

signals:
    void asked(double dx, double dy);

private:
    NumberField* addField(QString const& text);
};
