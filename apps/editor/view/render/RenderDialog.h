#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/render/RenderRun.h"
#include "editor/model/time/Timeline.h"

#include <QDialog>

class QAction;
class FittedLabel;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

/// Renders frames by the command line: what, where to, how; how far it is; and the command that
/// does the same. It blocks nothing, and goes on when it is closed.
class RenderDialog : public QDialog {
    Q_OBJECT

public:
    /// `saveAction` saves the project.
    RenderDialog(Document& editedDocument, Plate& shownPlate, Timeline& shownTimeline,
                 QAction* saveAction, QWidget* parent);

    /// Comes to the front; what belongs to another input than last time begins anew.
    void present();

    /// What the choices say.
    RenderWish getWish() const;

signals:
    /// A render has ended while the dialog was closed; one sentence.
    void ended(QString const& sentence, bool hasFailed);

private:
    void addChoices(QFormLayout& form);
    QComboBox* addChoice(QFormLayout& form, QString const& label,
                         std::initializer_list<std::pair<QString, char const*>> words);
    QWidget* makeOutputRow();
    QWidget* makeCommandRow(QAction* saveAction);
    QWidget* makeButtons();
    void askForOutput();
    void begin();
    void showWish();
    void showRun();
    void showDefaults();

    Document& document;
    Plate& plate;
    Timeline& timeline;
    RenderRun run;
    std::string shownInput;
    bool wasRunning = false;

    FittedLabel* input;
    QLineEdit* output;
    QLineEdit* frames;
    QComboBox* existing = nullptr;
    QComboBox* missing = nullptr;
    QComboBox* depth = nullptr;
    QComboBox* compression = nullptr;
    QPlainTextEdit* command;
    QLabel* commandNote;
    QPushButton* copy;
    QPushButton* save;
    QProgressBar* progress;
    QLabel* state;
    QPlainTextEdit* messages;
    QPushButton* start = nullptr;
    QPushButton* cancel = nullptr;

    CbFunction<RenderRun const> runChanged{[this](RenderRun const&) { showRun(); }};
    CbFunction<ProjectFile const> fileChanged{[this](ProjectFile const&) { showWish(); }};
    CbFunction<double const> timeChanged{[this](double const&) { showWish(); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const&) {
        if (isVisible()) {
            showDefaults();
        }
    }};
};
