#pragma once

#include "editor/view/curves/CurveWidget.h"
#include "editor/view/parameters/NumberField.h"
#include "editor/view/window/Actions.h"

#include <QWidget>

class QComboBox;
class QMenu;

/// The curves with what belongs to them: which channel is edited, the selected key's numbers and
/// handles, copies and resets.
class CurvePanel : public QWidget {
    Q_OBJECT

public:
    CurvePanel(Document& editedDocument, QWidget* parent = nullptr);

    CurveWidget& getCurves() { return *curves; }

    /// For a menu, separators among them.
    QList<QAction*> getActions() const;
    KeyHelps getKeyHelps() const;

signals:
    /// Something could not be done.
    void failed(QString const& sentence);

private:
    QWidget* makeChannelBar();
    QWidget* makeKeyBar();
    void addMenuAction(QWidget& menu, QString const& text, std::function<void()> action);
    void copy();
    void paste();
    void swapCurves(int one, int other);
    void reset();
    void placeKey(NumberField const* changedField, double number);
    void showSelection();

    Document& document;
    CurveWidget* curves;
    QMenu* menu = nullptr;
    NumberField* keyX = nullptr;
    NumberField* keyY = nullptr;
    QComboBox* handles = nullptr;
};
