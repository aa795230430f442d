#pragma once

#include <QLabel>

/// Lines that ask for no room: of what does not fit, dots stand for a part, and the tip has all.
class FittedLabel : public QLabel {
    Q_OBJECT

public:
    explicit FittedLabel(QWidget* parent, Qt::TextElideMode leftOut = Qt::ElideRight);

    void setLines(QString const& lines);

    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }
    QSize sizeHint() const override { return minimumSizeHint(); }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit();

    QString whole;
    Qt::TextElideMode mode;
};
