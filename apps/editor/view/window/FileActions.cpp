#include "editor/view/window/FileActions.h"

#include "editor/view/window/Actions.h"
#include "editor/view/window/RecentFiles.h"
#include "session/Failures.h"

#include <QFile>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QUrl>
#include <algorithm>
#include <array>
#include <cctype>

namespace {

using Subject = MessageBar::Subject;
namespace fs = std::filesystem;

QString toText(fs::path const& path)
{
    return QFile::decodeName(path.c_str());
}

fs::path toPath(QString const& text)
{
    std::error_code failure;
    fs::path const path = QFile::encodeName(text).toStdString();
    fs::path const whole = fs::absolute(path, failure);
    return (failure ? path : whole).lexically_normal();
}

bool isProject(fs::path const& file)
{
    std::string ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    return ending == ".json";
}

} // namespace

FileActions::FileActions(Document& editedDocument, Plate& shownPlate, MessageBar& messageBar,
                         QWidget* parentWindow)
    : QObject(parentWindow), document(editedDocument), plate(shownPlate), bar(messageBar),
      window(parentWindow), recent(new RecentFiles(parentWindow)),
      open(makeAction(
          window,
          {tr("&Open…"), tr("Open a picture or a project"), {QKeySequence::Open}, tr("Open")},
          [this] { askForFiles(); })),
      save(makeAction(window,
                      {tr("&Save"), tr("Save the project"), {QKeySequence::Save}, tr("Save")},
                      [this] { saveOrAsk(); })),
      plateChanged([this](PlateNotice const& notice) {
          if (!notice.failure && (plate.getFile() == awaited || plate.getName() == awaited)) {
              recent->add(awaited);
          }
          awaited.clear();
      })
{
    connect(recent, &RecentFiles::chosen, this,
            [this](fs::path const& file) { openFiles({file}); });
    plate.addHandler(&plateChanged);
    actions << makeAction(window,
                          {tr("&New project"),
                           tr("All values at their defaults, and no file"),
                           {QKeySequence::New}},
                          [this] { beginProject(); })
            << open << recent->getMenu()->menuAction() << makeSeparator(window) << save
            << makeAction(window,
                          {tr("Save &as…"),
                           tr("Save the project to another file"),
                           {QKeySequence("Ctrl+Shift+S")}},
                          [this] { saveAs(); })
            << makeSeparator(window)
            << makeAction(window, {tr("&Quit"), tr("Close the window"), {QKeySequence("Ctrl+Q")}},
                          [this] { window->close(); });
}

void FileActions::openFiles(std::vector<fs::path> const& chosen)
{
    std::vector<fs::path> projects;
    std::vector<fs::path> pictures;
    for (fs::path const& file : chosen) {
        (isProject(file) ? projects : pictures).push_back(toPath(toText(file)));
    }
    if (!pictures.empty()) {
        openPicture(pictures.front());
    }
    if (!projects.empty()) {
        openChosenProject(projects.front());
    }
    if (pictures.size() > 1 || projects.size() > 1) {
        bar.tell(tr("One picture and one project are open at a time; opened the first of %1 files.")
                     .arg(chosen.size()));
    }
}

void FileActions::openChosenProject(fs::path const& file)
{
    if (mayDiscard()) {
        openProject(file);
    }
}

void FileActions::openDropped(QMimeData const& data)
{
    std::vector<fs::path> files;
    for (QUrl const& url : data.urls()) {
        if (url.isLocalFile()) {
            files.push_back(toPath(url.toLocalFile()));
        } else {
            bar.tell(tr("%1 is no file of this machine.").arg(url.toDisplayString()));
        }
    }
    openFiles(files);
}

void FileActions::openPicture(fs::path const& file)
{
    bar.dismiss(Subject::Failure);
    bar.dismiss(Subject::PictureFailure);
    awaited = file;
    emit pictureAwaited(file);
    plate.open(file);
}

void FileActions::openProject(fs::path const& file)
{
    try {
        document.openProject(file);
        bar.dismiss(Subject::Failure);
        recent->add(file);
    } catch (...) {
        bar.tellFailure(std::current_exception());
    }
}

void FileActions::saveProject(fs::path const& file, Overwrite what)
{
    try {
        document.saveProject(file, what);
        bar.dismiss(Subject::Failure);
        recent->add(file);
        emit done(tr("Saved %1").arg(toText(file)));
    } catch (SaveConflict const& conflict) {
        offerOverwriting(file, QString::fromStdString(conflict.what()));
    } catch (...) {
        bar.tellFailure(std::current_exception());
    }
}

void FileActions::offerOverwriting(fs::path const& file, QString const& conflict)
{
    bar.offer(Subject::Save, tr("Not saved: %1.").arg(conflict),
              {{tr("Save as…"), [this] { saveAs(); }},
               {tr("Replace it"), [this, file] { saveProject(file, Overwrite::Anything); }}});
}

void FileActions::beginProject()
{
    if (mayDiscard()) {
        document.beginProject();
        bar.dismiss(Subject::Failure);
    }
}

void FileActions::askForFiles()
{
    QStringList const names = QFileDialog::getOpenFileNames(
        window, tr("Open a picture or a project"), toText(plate.getFile().parent_path()),
        tr("Pictures and projects (*.exr *.png *.tif *.tiff *.jpg *.jpeg *.dpx *.json);;"
           "All files (*)"));
    std::vector<fs::path> files;
    std::transform(names.begin(), names.end(), std::back_inserter(files), toPath);
    openFiles(files);
}

bool FileActions::saveOrAsk()
{
    fs::path const file = document.getProjectFile().getPath();
    if (file.empty()) {
        return saveAs();
    }
    saveProject(file);
    return !document.isModified();
}

bool FileActions::saveAs()
{
    fs::path const before = document.getProjectFile().getPath();
    QFileDialog dialog(window, tr("Save the project"), {}, tr("Projects (*.json)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix("json"); // what is asked about is what would be replaced
    dialog.setDirectory(
        toText(before.empty() ? plate.getFile().parent_path() : before.parent_path()));
    dialog.selectFile(toText(before.filename()));
    if (dialog.exec() != QDialog::Accepted) {
        return false;
    }
    saveProject(toPath(dialog.selectedFiles().first()));
    return !document.isModified();
}

bool FileActions::mayDiscard()
{
    if (!document.isModified()) {
        return true;
    }
    fs::path const file = document.getProjectFile().getPath();
    QString const name = file.empty() ? tr("The new project") : toText(file.filename());
    QMessageBox question(QMessageBox::NoIcon, tr("Remap Color"),
                         tr("%1 has changes that are not saved.").arg(name),
                         QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, window);
    question.setDefaultButton(QMessageBox::Save);
    switch (question.exec()) {
    case QMessageBox::Save: return saveOrAsk();
    case QMessageBox::Discard: return true;
    default: return false;
    }
}

#include "editor/view/window/moc_FileActions.cpp"
