#pragma once

#include "editor/model/time/Player.h"
#include "editor/view/parameters/NumberField.h"
#include "editor/view/time/TimeRuler.h"

#include <QAction>
#include <QList>
#include <QTimer>
#include <QWidget>

class QComboBox;
class QLabel;
class QMenu;
class QToolButton;

/// The moments of the document: steps and play, the frame as a number, the ruler with frames and
/// keys, range and rate. Its timer runs while it plays and no longer.
class TimePanel : public QWidget {
    Q_OBJECT

public:
    TimePanel(Document& editedDocument, Plate& shownPlate, Timeline& shownTimeline,
              QWidget* parent = nullptr);

    TimeRuler& getRuler() { return *ruler; }
    Player& getPlayer() { return player; }
    NumberField& getFrameField() { return *frame; }

    /// For a menu, separators among them.
    QList<QAction*> const& getActions() const { return actions; }

    /// The keys of steps and play count in that widget, too.
    void serve(QWidget& widget) const;

    /// What the panel says of frames in memory and of play; empty for nothing.
    QString getStateText() const;

signals:
    void playingChanged(bool isPlaying);
    void failed(QString const& sentence);

private:
    QAction* add(ActionText const& text, std::function<void()> function);
    void makeActions();
    QWidget* makeSteps();
    QWidget* makeRange();
    NumberField* makeField(QString const& name, int width, std::function<void(double)> const& take);
    void fillNames();
    void goToKey(int direction);
    void askForMemory();
    void togglePlay(int direction);
    void refresh();
    void showPlayer();
    void showState();

    Document& document;
    Plate& plate;
    Timeline& timeline;
    Keys keys;
    QTimer playTimer;
    Player player;

    TimeRuler* ruler;
    NumberField* frame = nullptr;
    NumberField* first = nullptr;
    NumberField* last = nullptr;
    NumberField* rate = nullptr;
    QComboBox* names = nullptr;
    QLabel* state = nullptr;
    QToolButton* playButton = nullptr;
    QAction* playAction = nullptr;
    QAction* loopAction = nullptr;
    QAction* stillAction = nullptr;
    QList<QAction*> actions;
    QList<QAction*> keyed; ///< those with keys of their own
    bool wasPlaying = false;

    CbFunction<double const> timeChanged{[this](double const&) { refresh(); }};
    CbFunction<Timeline const> timelineChanged{[this](Timeline const&) { refresh(); }};
    CbFunction<Plate const> framesChanged{[this](Plate const&) { refresh(); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const&) { refresh(); }};
    CbFunction<Player const> playerChanged{[this](Player const&) { showPlayer(); }};
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { fillNames(); }};
};
