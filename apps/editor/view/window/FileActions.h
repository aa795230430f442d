#pragma once

#include "editor/model/document/Document.h"
#include "editor/model/picture/Plate.h"
#include "editor/view/window/MessageBar.h"

#include <QAction>
#include <QList>
#include <QObject>
#include <QWidget>
#include <filesystem>

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

    void openPicture(std::filesystem::path const& file);
    void openProject(std::filesystem::path const& file);
    void saveProject(std::filesystem::path const& file);

    /// Whether what is not saved may go; asks if there is something.
    bool mayDiscard();

signals:
    /// The project has another file, or is as its file.
    void projectChanged();
    /// Something has been done; one sentence.
    void done(QString const& sentence);

private:
    void askForFile();
    bool saveOrAsk();
    bool askAndSave();

    Document& document;
    Plate& plate;
    MessageBar& bar;
    QWidget* window;
    QAction* open;
    QAction* save;
    QList<QAction*> actions;
};
