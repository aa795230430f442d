#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/time/Keys.h"

#include <QAbstractButton>
#include <string>

/// The diamond beside some values: hollow without keyframes, with an accent where there are some at
/// other moments, filled where each has one at the document's moment. A click sets them or takes
/// them away. Values that can have none have no diamond.
class KeyButton : public QAbstractButton {
    Q_OBJECT

public:
    /// `title` is what a person calls the values.
    KeyButton(Document& editedDocument, std::string title, Keys::Names valueNames,
              QWidget* parent = nullptr);

    QSize sizeHint() const override { return {20, 20}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();

    Document& document;
    Keys keys;
    std::string const title;
    Keys::Names const names;
    Keys::Presence presence = Keys::Presence::Never;
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { refresh(); }};
    CbFunction<double const> timeChanged{[this](double const&) { refresh(); }};
};

class QPainter;
class QPointF;

/// The shape of a keyframe; pen and brush are the painter's.
void drawDiamond(QPainter& painter, QPointF const& centre, double radius);
