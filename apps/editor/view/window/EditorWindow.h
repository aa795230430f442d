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

class EditActions;
class FileActions;
class QDockWidget;
class WindowLayout;

/// The editor: picture, curves and parameters of one node, put together. What goes wrong is said in
/// one sentence in a bar; what was open stays. One at a time: it takes the process's events over.
class EditorWindow : public QMainWindow {
    Q_OBJECT

public:
    /// Throws ToolLoadError, UsageError.
    EditorWindow();
    ~EditorWindow() noexcept override;

    void openPicture(std::filesystem::path const& file);
    void openProject(std::filesystem::path const& file);
    void saveProject(std::filesystem::path const& file);

    /// Size, place and panels as the user had them.
    void restoreLayout();

    Document& getDocument() { return document; }
    PicturePanel& getPicturePanel() { return *picture; }
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
    void buildPanels();
    QDockWidget* makePanel(QString const& title, QString const& name, QWidget* panel);
    void buildMenus();
    void buildToolBar();
    void buildStatusBar();
    void showShortcuts();
    void updateTitle();

    Document document;
    Plate plate;
    Picks picks{document, plate};

    MessageBar* bar = nullptr;
    PicturePanel* picture = nullptr;
    ParameterPanel* parameters = nullptr;
    CurvePanel* curvePanel = nullptr;
    FileActions* files = nullptr;
    EditActions* edits = nullptr;
    WindowLayout* layout = nullptr;

    CbFunction<HistoryState const> historyChanged{[this](HistoryState const&) { updateTitle(); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const& notice) {
        if (!notice.failure) {
            bar->hide();
        }
    }};
};
