#include "editor/view/window/RecentFiles.h"

#include "editor/model/document/UserThread.h"
#include "editor/view/window/Settings.h"

#include <QFile>
#include <QMenu>
#include <mutex>
#include <thread>

namespace {

QString const key = "recent";
constexpr int mostFiles = 12;
constexpr int mostWidth = 560; // of the menu

QString encode(std::filesystem::path const& file)
{
    return QFile::decodeName(file.c_str());
}

std::filesystem::path decode(QString const& file)
{
    return QFile::encodeName(file).toStdString();
}

} // namespace

/// Outlives the menu if the system is slow: its thread is waited for by nobody.
struct RecentFiles::Check {
    std::mutex mutex;
    bool isDropped = false; // locked by mutex
};

RecentFiles::RecentFiles(QWidget* parent)
    : QObject(parent), menu(new QMenu(tr("Open &recent"), parent))
{
    connect(menu, &QMenu::aboutToShow, this, [this] {
        load(); // another editor may have added some
        showFiles();
        check();
    });
    load();
    showFiles();
}

RecentFiles::~RecentFiles()
{
    if (checking != nullptr) {
        std::lock_guard const guard(checking->mutex);
        checking->isDropped = true;
    }
}

void RecentFiles::load()
{
    files = openSettings()->value(key).toStringList();
    files.removeAll(QString());
}

void RecentFiles::save() const
{
    openSettings()->setValue(key, files);
}

void RecentFiles::add(std::filesystem::path const& file)
{
    load();
    QString const name = encode(file);
    files.removeAll(name);
    files.prepend(name);
    files = files.mid(0, mostFiles);
    save();
    showFiles();
}

void RecentFiles::remove(std::filesystem::path const& file)
{
    load();
    files.removeAll(encode(file));
    save();
    showFiles();
}

void RecentFiles::showFiles()
{
    menu->clear();
    menu->setEnabled(!files.isEmpty());
    for (QString const& name : files) {
        QAction* const action = menu->addAction(
            menu->fontMetrics().elidedText(name, Qt::ElideMiddle, mostWidth).replace('&', "&&"));
        action->setData(name);
        action->setEnabled(!gone.contains(name));
        connect(action, &QAction::triggered, this, [this, name] { emit chosen(decode(name)); });
    }
    if (!files.isEmpty()) {
        menu->addSeparator();
        connect(menu->addAction(tr("&Forget these")), &QAction::triggered, this, [this] {
            files.clear();
            save();
            showFiles();
        });
    }
}

void RecentFiles::check()
{
    if (checking != nullptr) {
        return; // it has not answered yet
    }
    checking = std::make_shared<Check>();
    std::thread([this, check = checking, owner = std::weak_ptr<void>(alive), names = files] {
        QStringList missing;
        for (QString const& name : names) {
            std::error_code failure;
            if (!std::filesystem::exists(decode(name), failure)) {
                missing << name;
            }
        }
        std::lock_guard const guard(check->mutex);
        if (!check->isDropped) {
            callOnUserThread(owner, [this, missing] {
                checking.reset();
                gone = missing;
                for (QAction* const action : menu->actions()) {
                    action->setEnabled(!gone.contains(action->data().toString()));
                }
            });
        }
    }).detach();
}

#include "editor/view/window/moc_RecentFiles.cpp"
