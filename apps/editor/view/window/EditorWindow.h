#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"
#include "editor/model/picture/Plate.h"
#include "editor/view/curves/CurvePanel.h"
#include "editor/view/parameters/ParameterPanel.h"
#include "editor/view/picture/PicturePanel.h"
#include "editor/view/time/TimePanel.h"
#include "editor/view/window/MessageBar.h"

#include <QMainWindow>
#include <filesystem>

class EditActions;
class FileActions;
class FileNotices;
class QDockWidget;
class ReadingState;
class RecoveryKeeper;
class RenderDialog;
class WindowLayout;

/// The editor: picture, curves and parameters of one node, put together. What goes wrong is said in
/// one sentence in a bar; what was open stays. One at a time: it takes the process's events over.
class EditorWindow : public QMainWindow {
    Q_OBJECT

public:
    /// Throws ToolLoadError, UsageError.
    explicit EditorWindow(PictureLoader::Opener opener = &PictureLoader::openPlainly);
    ~EditorWindow() noexcept override;

    // As of the files.
    void openPicture(std::filesystem::path const& file);
    void openProject(std::filesystem::path const& file);
    void saveProject(std::filesystem::path const& file);

    FileActions& getFiles() { return *files; }

    /// Size, place and panels as the user had them; what an earlier run left is offered.
    void goOn();

    /// Ends the program without asking; what is unsaved is offered at the next start.
    void endNow(int status);

    bool isReading() const { return plate.isReading(); }

    Document& getDocument() { return document; }
    PicturePanel& getPicturePanel() { return *picture; }
    PictureWidget& getPicture() { return picture->getPicture(); }
    ParameterPanel& getParameters() { return *parameters; }
    CurvePanel& getCurvePanel() { return *curvePanel; }
    TimePanel& getTimePanel() { return *timePanel; }
    Plate& getPlate() { return plate; }

    MessageBar& getBar() { return *bar; }
    ReadingState& getReadingState() { return *reading; }

signals:
    /// The picture is shown as the values now say, or cannot be.
    void settled();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void takeEventsOver();
    void buildCentre();
    void buildFiles();
    void buildPanels();
    QWidget* makeTimePanel();
    std::vector<ParameterRow> layOutParametersOrTell();
    QDockWidget* makePanel(QString const& title, QString const& name, QWidget* panel);
    void buildMenus();
    void buildToolBar();
    void buildStatusBar();
    void showRender();
    void showShortcuts();
    void updateTitle();

    Document document;
    Plate plate;
    Timeline timeline{document, plate};
    Picks picks{document, plate};

    MessageBar* bar = nullptr;
    PicturePanel* picture = nullptr;
    ParameterPanel* parameters = nullptr;
    CurvePanel* curvePanel = nullptr;
    TimePanel* timePanel = nullptr;
    RenderDialog* render = nullptr; ///< once it is asked for
    FileActions* files = nullptr;
    FileNotices* notices = nullptr;
    RecoveryKeeper* recovery = nullptr;
    EditActions* edits = nullptr;
    ReadingState* reading = nullptr;
    WindowLayout* layout = nullptr;

    CbFunction<ProjectFile const> fileChanged{[this](ProjectFile const&) { updateTitle(); }};
};
