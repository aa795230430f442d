#pragma once

#include "editor/view/curves/CurveActions.h"
#include "editor/view/curves/CurveWidget.h"
#include "editor/view/window/Actions.h"

#include <QWidget>

class FittedLabel;
class KeyBar;
class QMenu;
class QPushButton;
class QToolButton;

/// The curves with what belongs to them: which channel is edited, what is shown, the selected keys'
/// numbers, and a line that says what is under the cursor, or why the curves change nothing.
class CurvePanel : public QWidget {
    Q_OBJECT

public:
    CurvePanel(Document& editedDocument, Plate& plate, Picks& picks, QWidget* parent = nullptr);
    ~CurvePanel() noexcept override;

    CurveModel& getModel() { return model; }
    CurveWidget& getCurves() { return *graph; }

    /// While frames follow one another the histogram stays as it is.
    void setPlaying(bool isPlaying) { model.histogram.setPaused(isPlaying); }

    /// The histogram is not yet that of what is shown.
    bool isCounting() const { return model.histogram.isStale(); }

    /// For a menu, separators among them.
    QList<QAction*> getActions() const { return actions->getAll(); }
    KeyHelps getKeyHelps() const;

    /// Adds to a menu what curves do with a pick, or with a colour of the source.
    void addPickActions(QMenu& menu, int number);
    void addColorActions(QMenu& menu, CurveLines::Color const& color);

signals:
    /// The histogram is that of what is shown.
    void counted();
    /// Something could not be done.
    void failed(QString const& sentence);

private:
    QWidget* makeBar();
    QToolButton* makeMenuButton(QString const& text, QString const& help,
                                QList<QAction*> const& offered);
    QWidget* makeLine();
    void refresh();
    void showLine();
    QString describeHistogram() const;

    CurveModel model;
    CurveWidget* graph;
    CurveActions* actions;
    QList<QToolButton*> channels;
    FittedLabel* line = nullptr;
    QPushButton* cure = nullptr;
    QString pointedText;
    CbFunction<CurveEditor const> edited{[this](CurveEditor const&) { refresh(); }};
    CbFunction<CurveHistogram const> histogramChanged{[this](CurveHistogram const&) {
        showLine();
        if (!isCounting()) {
            emit counted();
        }
    }};
};
