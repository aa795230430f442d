#pragma once

#include "editor/model/document/Document.h"
#include "editor/model/picture/Plate.h"
#include "editor/view/window/MessageBar.h"

#include <QAction>
#include <QList>
#include <QObject>
#include <QWidget>
#include <filesystem>
#include <vector>

class QMimeData;
class RecentFiles;

/// Opening and saving: what is asked of the user, and what is said of it.
class FileActions : public QObject {
    Q_OBJECT

public:
    FileActions(Document& editedDocument, Plate& shownPlate, MessageBar& messageBar,
                QWidget* parentWindow);

    QAction* getOpen() const { return open; }
    QAction* getSave() const { return save; }
    /// For a menu, separators among them.
    QList<QAction*> const& getActions() const { return actions; }

    /// A picture and a project at most; asks before unsaved work goes.
    void openFiles(std::vector<std::filesystem::path> const& chosen);
    void openDropped(QMimeData const& data);

    // These ask nothing; what fails is said.
    void openPicture(std::filesystem::path const& file);
    void openProject(std::filesystem::path const& file);
    void saveProject(std::filesystem::path const& file, Overwrite what = Overwrite::OwnOnly);

    /// Asks where to; whether it was saved.
    bool saveAs();

    /// Whether what is not saved may go; asks if there is something.
    bool mayDiscard();

signals:
    void pictureAwaited(std::filesystem::path const& file);
    /// Something has been done; one sentence.
    void done(QString const& sentence);

private:
    void askForFiles();
    bool saveOrAsk();
    void beginProject();
    void offerOverwriting(std::filesystem::path const& file, QString const& conflict);
    void openChosenProject(std::filesystem::path const& file);

    Document& document;
    Plate& plate;
    MessageBar& bar;
    QWidget* window;
    RecentFiles* recent;
    QAction* open;
    QAction* save;
    QList<QAction*> actions;
    std::filesystem::path awaited; ///< the picture that is being read
    CbFunction<PlateNotice const> plateChanged;
};
