#pragma once

#include "editor/model/curves/CurveEditor.h"
#include "editor/view/parameters/NumberField.h"

#include <QWidget>

class CurveWidget;
class QComboBox;
class QLabel;

/// A coordinate of the selected keys: one number, or a sum that may name the key's own x and y,
/// which is how several keys are moved.
class KeyField : public NumberField {
    Q_OBJECT

public:
    KeyField(CurveEditor& itsEditor, CurveEditor::Coordinate itsCoordinate, QWidget* parent);

    void refresh();

signals:
    void refused(QString const& reason);

protected:
    void take(QString const& text) override;

private:
    CurveEditing::Move makeMove(double by) const;

    CurveEditor& editor;
    CurveEditor::Coordinate coordinate;
    double start = 0.0; ///< where a drag began
};

/// The numbers and handles of the selected keys.
class KeyBar : public QWidget {
    Q_OBJECT

public:
    KeyBar(CurveEditor& itsEditor, CurveWidget& graph, QWidget* parent);

signals:
    /// What was typed cannot be.
    void refused(QString const& reason);

private:
    void refresh();

    CurveEditor& editor;
    QLabel* title;
    KeyField* keyX;
    KeyField* keyY;
    QComboBox* handles;
    QWidget* remove;
    CbFunction<CurveEditor const> edited{[this](CurveEditor const&) { refresh(); }};
};
