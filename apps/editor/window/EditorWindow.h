#pragma once

#include "callbacks/CbFunction.h"
#include "editor/curves/CurvePanel.h"
#include "editor/document/Document.h"
#include "editor/parameters/ParameterPanel.h"
#include "editor/picture/HeldPicture.h"
#include "editor/picture/PictureWidget.h"
#include "editor/picture/ViewRenderer.h"

#include <QMainWindow>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>

class QAction;
class QComboBox;
class QDoubleSpinBox;
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
    PictureWidget& getPicture() { return *picture; }
    ParameterPanel& getParameters() { return *parameters; }
    CurvePanel& getCurvePanel() { return *curvePanel; }

    /// Says in the bar what went wrong.
    void tellFailure(std::exception_ptr const& failure);

    /// What the bar says; empty for nothing.
    QString getMessage() const;

signals:
    /// The picture is shown as the values now say, or cannot be.
    void settled();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void takeEventsOver();
    void buildCentre();
    void buildToolBar();
    void buildStatusBar();
    QAction* addAction(class QToolBar& bar, QString const& text, QString const& help,
                       class QKeySequence const& key, std::function<void()> action);
    void askForFile();
    void saveOrAsk();
    void askAndSave();
    bool mayDiscard();
    void takePicture(std::shared_ptr<HeldPicture const> const& loaded,
                     std::exception_ptr const& failure);
    void showView();
    void showHistory(HistoryState const& state);
    void showPixel();
    void requestPixel(int x, int y);
    void tell(QString const& sentence);
    void updateTitle();

    struct Pointed {
        int x;
        int y;
        std::uint64_t pick;
        std::optional<CoRgbaColorTyped<float>> result;
    };

    Document document;
    std::unique_ptr<ViewRenderer> renderer;
    std::unique_ptr<PictureLoader> loader;
    std::filesystem::path loadingFile;
    std::filesystem::path pictureFile;
    std::shared_ptr<HeldPicture const> held;
    PxStrongHndl<SourceImageNode> pickStart; ///< of the chain that picks are sent through
    PxStrongHndl<PxNode const> pickChain;
    std::optional<Pointed> pointed;

    PictureWidget* picture = nullptr;
    ParameterPanel* parameters = nullptr;
    CurvePanel* curvePanel = nullptr;
    QComboBox* modes = nullptr;
    QComboBox* channels = nullptr;
    QDoubleSpinBox* exposure = nullptr;
    QAction* srgb = nullptr;
    QAction* undo = nullptr;
    QAction* redo = nullptr;
    QWidget* bar = nullptr;
    QLabel* message = nullptr;
    QLabel* pixelText = nullptr;
    QLabel* pictureText = nullptr;

    CbFunction<ValueChange const> changed{[this](ValueChange const&) { showView(); }};
    CbFunction<HistoryState const> historyChanged{
        [this](HistoryState const& state) { showHistory(state); }};
    CbFunction<PickAnswer const> picked;
};
