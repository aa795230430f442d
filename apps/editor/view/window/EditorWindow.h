#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"
#include "editor/model/picture/Plate.h"
#include "editor/view/curves/CurvePanel.h"
#include "editor/view/parameters/ParameterPanel.h"
#include "editor/view/picture/PicturePanel.h"
#include "editor/view/window/MessageBar.h"

#include <QMainWindow>
#include <filesystem>
#include <functional>

class QAction;
class QComboBox;
class QDoubleSpinBox;
class QDockWidget;
class QLabel;

/// The editor: picture, curves and parameters of one node. What goes wrong is said in one sentence
/// in a bar; what was open stays. One at a time: it takes the process's events over.
class EditorWindow : public QMainWindow {
    Q_OBJECT

public:
    /// Throws ToolLoadError, UsageError.
    EditorWindow();
    ~EditorWindow() noexcept override;

    void openPicture(std::filesystem::path const& file);
    void openProject(std::filesystem::path const& file);
    void saveProject(std::filesystem::path const& file);

    Document& getDocument() { return document; }
    PictureWidget& getPicture() { return picture->getPicture(); }
    ParameterPanel& getParameters() { return *parameters; }
    CurvePanel& getCurvePanel() { return *curvePanel; }

    MessageBar& getBar() { return *bar; }

signals:
    /// The picture is shown as the values now say, or cannot be.
    void settled();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void takeEventsOver();
    void buildCentre();
    QDockWidget* addPanel(QString const& title, QString const& name, QWidget* panel);
    void buildToolBar();
    void buildStatusBar();
    QAction* addAction(class QToolBar& tools, QString const& text, QString const& help,
                       class QKeySequence const& key, std::function<void()> action);
    void askForFile();
    void saveOrAsk();
    void askAndSave();
    bool mayDiscard();
    void takeView();
    void showMode();
    void showHistory(HistoryState const& state);
    void updateTitle();

    Document document;
    Plate plate;
    Picks picks{document, plate};

    MessageBar* bar = nullptr;
    PicturePanel* picture = nullptr;
    ParameterPanel* parameters = nullptr;
    CurvePanel* curvePanel = nullptr;
    QComboBox* modes = nullptr;
    QComboBox* channels = nullptr;
    QDoubleSpinBox* exposure = nullptr;
    QAction* srgb = nullptr;
    QAction* undo = nullptr;
    QAction* redo = nullptr;
    QLabel* pixelText = nullptr;
    QLabel* pictureText = nullptr;

    CbFunction<ValueChange const> changed{[this](ValueChange const&) { showMode(); }};
    CbFunction<double const> timeChanged{[this](double const&) { showMode(); }};
    CbFunction<HistoryState const> historyChanged{
        [this](HistoryState const& state) { showHistory(state); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const& notice) {
        if (!notice.failure) {
            bar->hide();
        }
    }};
};
