#include "editor/view/window/FileActions.h"

#include "editor/view/window/Actions.h"

#include <QFileDialog>
#include <QMessageBox>

namespace {

QString toText(std::filesystem::path const& path)
{
    return QString::fromStdString(path.string());
}

} // namespace

FileActions::FileActions(Document& editedDocument, Plate& shownPlate, MessageBar& messageBar,
                         QWidget* parentWindow)
    : QObject(parentWindow), document(editedDocument), plate(shownPlate), bar(messageBar),
      window(parentWindow),
      open(makeAction(
          window,
          {tr("&Open…"), tr("Open a picture or a project"), {QKeySequence::Open}, tr("Open")},
          [this] { askForFile(); })),
      save(makeAction(window,
                      {tr("&Save"), tr("Save the project"), {QKeySequence::Save}, tr("Save")},
                      [this] { saveOrAsk(); }))
{
    actions << open << makeSeparator(window) << save
            << makeAction(window,
                          {tr("Save &as…"),
                           tr("Save the project to another file"),
                           {QKeySequence("Ctrl+Shift+S")}},
                          [this] { askAndSave(); })
            << makeSeparator(window)
            << makeAction(window, {tr("&Quit"), tr("Close the window"), {QKeySequence::Quit}},
                          [this] { window->close(); });
}

void FileActions::openPicture(std::filesystem::path const& file)
{
    plate.open(file);
}

void FileActions::openProject(std::filesystem::path const& file)
{
    try {
        document.openProject(file);
        bar.hide();
    } catch (...) {
        bar.tellFailure(std::current_exception());
    }
    emit projectChanged();
}

void FileActions::saveProject(std::filesystem::path const& file)
{
    try {
        document.saveProject(file);
        bar.hide();
        emit done(tr("Saved %1").arg(toText(file)));
    } catch (...) {
        bar.tellFailure(std::current_exception());
    }
    emit projectChanged();
}

void FileActions::askForFile()
{
    QString const file = QFileDialog::getOpenFileName(
        window, tr("Open a picture or a project"), toText(plate.getFile().parent_path()),
        tr("Pictures and projects (*.exr *.png *.tif *.tiff *.jpg *.jpeg *.dpx *.json);;"
           "All files (*)"));
    if (file.endsWith(".json", Qt::CaseInsensitive)) {
        if (mayDiscard()) {
            openProject(file.toStdString());
        }
    } else if (!file.isEmpty()) {
        openPicture(file.toStdString());
    }
}

bool FileActions::saveOrAsk()
{
    if (document.getProjectFile().empty()) {
        return askAndSave();
    }
    saveProject(document.getProjectFile());
    return !document.isModified();
}

bool FileActions::askAndSave()
{
    QString file = QFileDialog::getSaveFileName(
        window, tr("Save the project"), toText(document.getProjectFile()), tr("Projects (*.json)"));
    if (file.isEmpty()) {
        return false;
    }
    file += file.endsWith(".json", Qt::CaseInsensitive) ? "" : ".json";
    saveProject(file.toStdString());
    return !document.isModified();
}

bool FileActions::mayDiscard()
{
    if (!document.isModified()) {
        return true;
    }
    QString const name = document.getProjectFile().empty()
                             ? tr("The new project")
                             : toText(document.getProjectFile().filename());
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
