#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"
#include "editor/model/document/FileWatch.h"
#include "editor/model/picture/Plate.h"
#include "editor/view/window/MessageBar.h"
#include "shots/FileStamp.h"

#include <QObject>

class FileActions;

/// Says in the bar that a file that is open has been changed by somebody else, and offers to read
/// it again; and that a project is open in another editor.
class FileNotices : public QObject {
    Q_OBJECT

public:
    FileNotices(Document& editedDocument, Plate& shownPlate, FileActions& fileActions,
                MessageBar& messageBar, QObject* parent);

    /// A picture is about to be read.
    void await(std::filesystem::path const& file);

    /// For files of machines that give no notices: called when the user comes back to the window.
    void look();

private:
    void watch();
    void takeProject(ProjectFile const& file);
    void takePlate(PlateNotice const& notice);
    void lookAtProject();
    void lookAtPicture();

    Document& document;
    Plate& plate;
    FileActions& files;
    MessageBar& bar;
    FileWatch watcher;
    std::filesystem::path project;
    std::filesystem::path picture;
    FileStamp pictureStamp;
    std::filesystem::path awaited;
    FileStamp awaitedStamp;
    ProjectFile::State projectState = ProjectFile::State::AsKnown;
    CbFunction<ProjectFile const> fileChanged{
        [this](ProjectFile const& file) { takeProject(file); }};
    CbFunction<PlateNotice const> plateChanged{
        [this](PlateNotice const& notice) { takePlate(notice); }};
};
