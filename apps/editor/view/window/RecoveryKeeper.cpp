#include "editor/view/window/RecoveryKeeper.h"

#include "editor/model/document/UserFolders.h"
#include "editor/view/window/FileActions.h"
#include "files/PrintableText.h"
#include "runtime/project/Project.h"
#include "session/Failures.h"

#include <QDateTime>
#include <chrono>

namespace {

using Subject = MessageBar::Subject;
using namespace std::chrono_literals;

constexpr auto longestUnkept = 1s;

std::filesystem::path findFolder()
{
    std::filesystem::path const state = getStateFolder();
    return state.empty() ? state : state / "recovery";
}

QString toText(std::string const& text)
{
    return QString::fromStdString(makePrintable(text));
}

} // namespace

RecoveryKeeper::RecoveryKeeper(Document& editedDocument, Plate& shownPlate,
                               FileActions& fileActions, MessageBar& messageBar, QObject* parent)
    : QObject(parent), document(editedDocument), plate(shownPlate), files(fileActions),
      bar(messageBar), recovery(findFolder(), [this](std::string const& failure) {
          bar.dismiss(Subject::RecoveryFailure);
          if (!failure.empty()) {
              bar.offer(Subject::RecoveryFailure,
                        tr("Unsaved work cannot be set aside: %1.").arg(toText(failure)), {});
          }
      })
{
    pause.setSingleShot(true);
    pause.setInterval(longestUnkept);
    connect(&pause, &QTimer::timeout, this, &RecoveryKeeper::keepNow);
    document.getNode().addHandler(&changed);
    document.addFileHandler(&fileChanged);
}

void RecoveryKeeper::plan()
{
    if (document.isModified()) {
        if (!pause.isActive()) {
            pause.start(); // a drag does not put it off
        }
    } else {
        end();
    }
}

void RecoveryKeeper::end()
{
    pause.stop();
    if (std::exchange(isKept, false)) {
        recovery.drop();
    }
}

void RecoveryKeeper::keepNow()
{
    pause.stop();
    if (document.isModified()) {
        isKept = true;
        ProjectFile const& file = document.getProjectFile();
        recovery.keep({writeProject(document.getNode()), file.getPath(), file.getText(),
                       plate.getFile(),
                       QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss").toStdString()});
    }
}

void RecoveryKeeper::offerLeft()
{
    for (LeftWork& one : recovery.claim()) {
        left.push_back(std::move(one));
    }
    offerNext();
}

void RecoveryKeeper::offerNext()
{
    if (left.empty()) {
        return;
    }
    auto const& work = left.front().work;
    if (!work.has_value()) {
        bar.offer(Subject::Recovery,
                  tr("Unsaved work was left, but its file is damaged: %1")
                      .arg(toText(left.front().place.string())),
                  {{tr("Remove it"), [this] { discard(); }}});
        return;
    }
    QString const name =
        work->file.empty() ? tr("a new project") : toText(work->file.filename().string());
    QString const more = left.size() > 1 ? tr(" (1 of %1)").arg(left.size()) : QString();
    bar.offer(Subject::Recovery,
              tr("Unsaved work on %1 of %2 was left by an editor that did not end in order%3.")
                  .arg(name, toText(work->time), more),
              {{tr("Restore"), [this] { restore(); }}, {tr("Discard"), [this] { discard(); }}});
}

void RecoveryKeeper::restore()
{
    UnsavedWork const work = *left.front().work;
    if (!files.mayDiscard()) {
        offerNext();
        return;
    }
    try {
        document.recoverProject(work.project, work.file, work.knownText);
    } catch (...) {
        bar.tellFailure(std::current_exception());
        offerNext();
        return;
    }
    keepNow();
    discard();
    if (plate.getFile() != work.picture && !work.picture.empty()) {
        files.openPicture(work.picture);
    }
}

void RecoveryKeeper::discard()
{
    recovery.remove(std::move(left.front()));
    left.pop_front();
    offerNext();
}

#include "editor/view/window/moc_RecoveryKeeper.cpp"
