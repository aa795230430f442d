#pragma once

#include <QLabel>

/// What a row is called; a double click on it is told.
class RowLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

signals:
    void doubleClicked();

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};
