#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/picture/Plate.h"

#include <QTimer>
#include <QWidget>

class QLabel;

/// Says in the line below what is being read and how far it is, once that takes long, with a button
/// that gives it up.
class ReadingState : public QWidget {
    Q_OBJECT

public:
    explicit ReadingState(Plate& readPlate, QWidget* parent = nullptr);

    /// Empty for nothing.
    QString getText() const;

private:
    void refresh();
    void showText();

    Plate& plate;
    QLabel* text;
    QTimer patience; ///< runs while something is read and not said yet
    CbFunction<Plate const> progressed{[this](Plate const&) { refresh(); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const&) { refresh(); }};
};
