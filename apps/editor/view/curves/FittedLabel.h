#pragma once

#include <QLabel>

/// Lines that ask for no room: what does not fit ends in dots and is whole in the tip.
class FittedLabel : public QLabel {
    Q_OBJECT

public:
    explicit FittedLabel(QWidget* parent);

    void setLines(QString const& lines);

    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }
    QSize sizeHint() const override { return minimumSizeHint(); }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit();

    QString whole;
};
