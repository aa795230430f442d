#include "editor/view/window/FileNotices.h"

#include "editor/view/window/FileActions.h"
#include "files/PrintableText.h"
#include "session/Failures.h"

#include <QSocketNotifier>

namespace {

using Subject = MessageBar::Subject;

QString nameOf(std::filesystem::path const& file)
{
    return QString::fromStdString(makePrintable(file.filename().string()));
}

} // namespace

FileNotices::FileNotices(Document& editedDocument, Plate& shownPlate, FileActions& fileActions,
                         MessageBar& messageBar, QObject* parent)
    : QObject(parent), document(editedDocument), plate(shownPlate), files(fileActions),
      bar(messageBar)
{
    document.addFileHandler(&fileChanged);
    plate.addHandler(&plateChanged);
    if (watcher.getDescriptor() >= 0) {
        auto* const notifier =
            new QSocketNotifier(watcher.getDescriptor(), QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, [this] {
            auto const touched = watcher.read();
            if (touched.contains(project)) {
                lookAtProject();
            }
            if (touched.contains(picture)) {
                lookAtPicture();
            }
        });
    }
}

void FileNotices::watch()
{
    std::vector<std::filesystem::path> watched;
    for (std::filesystem::path const& file : {project, picture}) {
        if (!file.empty()) {
            watched.push_back(file);
        }
    }
    watcher.watch(watched);
}

void FileNotices::look()
{
    lookAtProject();
    lookAtPicture();
}

void FileNotices::takeProject(ProjectFile const& file)
{
    if (file.getPath() != project) {
        project = file.getPath();
        watch();
        if (file.getOther().empty()) {
            bar.dismiss(Subject::Project);
        } else {
            bar.offer(
                Subject::Project,
                tr("%1 is open in another editor too (%2): whoever saves last wins.")
                    .arg(nameOf(project), QString::fromStdString(makePrintable(file.getOther()))),
                {{tr("Save as…"), [this] { files.saveAs(); }}});
        }
        projectState = ProjectFile::State::AsKnown;
    } else if (projectState != ProjectFile::State::AsKnown) {
        lookAtProject();
    }
    if (!document.isModified()) {
        bar.dismiss(Subject::Save);
    }
}

void FileNotices::lookAtProject()
{
    auto const state = document.getProjectFile().look();
    if (state == projectState) {
        return;
    }
    projectState = state;
    switch (state) {
    case ProjectFile::State::AsKnown: bar.dismiss(Subject::Project); break;
    case ProjectFile::State::Changed:
        bar.offer(Subject::Project,
                  tr("%1 has been changed by another program.").arg(nameOf(project)),
                  {{tr("Open it again"), [this] { files.openProject(project); }}});
        break;
    case ProjectFile::State::Gone:
        bar.offer(Subject::Project, tr("%1 is gone from its folder.").arg(nameOf(project)),
                  {{tr("Save"), [this] { files.saveProject(project); }}});
        break;
    }
}

void FileNotices::takePlate(PlateNotice const& notice)
{
    if (!notice.failure && plate.getPicture() != nullptr) {
        bool const isOther = plate.getFile() != picture;
        picture = plate.getFile();
        pictureStamp = picture == awaited ? awaitedStamp : readFileStamp(picture);
        awaited.clear();
        bar.dismiss(Subject::Picture);
        if (isOther) {
            watch();
        }
        lookAtPicture(); // it may have been written to while it was read
    }
}

void FileNotices::await(std::filesystem::path const& file)
{
    awaited = file;
    awaitedStamp = readFileStamp(file);
}

void FileNotices::lookAtPicture()
{
    FileStamp const stamp = picture.empty() ? pictureStamp : readFileStamp(picture);
    if (stamp == pictureStamp) {
        return;
    }
    pictureStamp = stamp;
    if (stamp.isThere) {
        bar.offer(Subject::Picture,
                  tr("%1 has been changed by another program.").arg(nameOf(picture)),
                  {{tr("Read it again"), [this] {
                        bar.dismiss(Subject::PictureFailure);
                        plate.reload();
                    }}});
    } else {
        bar.offer(Subject::Picture, tr("%1 is gone from its folder.").arg(nameOf(picture)), {});
    }
}

#include "editor/view/window/moc_FileNotices.cpp"
