// What is left of work in the editor when it is killed, when its disk is full, and when another
// editor has the project open. Says what is wrong and ends with 1 then.
//
//   editorFaults kills FOLDER TIMES    an editor that is edited is killed at random moments; the
//   next
//                                      start has all but the last two seconds of what was done
//   editorFaults disk FOLDER           FOLDER is the root of a small disk
//   editorFaults two FOLDER            another editor has the project open until it is killed

#include "editor/view/window/EditorWindow.h"
#include "editor/view/window/FileActions.h"
#include "editor/view/window/Theme.h"
#include "runtime/project/Project.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Subject = MessageBar::Subject;
using Seconds = std::chrono::duration<double>;

constexpr char const* counted = "Mix";
constexpr double counts = 1 << 20; ///< that Mix tells apart
constexpr Seconds mayBeLost{2.0};
constexpr int longest = 60000; // milliseconds; no measure of speed

int nbBad = 0;

void check(bool isRight, std::string const& what)
{
    if (!isRight) {
        std::fprintf(stderr, "%s\n", what.c_str());
        ++nbBad;
    }
}

double now()
{
    return Seconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// How much had been done when.
struct Done {
    double time;
    double count;
};

fs::path projectOf(fs::path const& folder)
{
    return folder / "look.json";
}

void waitUntil(std::function<bool()> const& isReached, char const* what)
{
    QElapsedTimer clock;
    clock.start();
    while (!isReached() && clock.elapsed() < longest) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    check(isReached(), std::string("never came: ") + what);
}

/// Edits by chance, for ever; each raises the count, which goes to the log once it is done.
class Worker : public QObject {
public:
    explicit Worker(fs::path const& itsFolder)
        : folder(itsFolder),
          log(::open((folder / "log").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600))
    {
        window.goOn();
        window.openPicture(SMALL_PICTURE);
        window.getDocument().setNumbers("Nothing done", {counted}, 0.0);
        window.saveProject(projectOf(folder));
        window.show();
        connect(&timer, &QTimer::timeout, this, &Worker::act);
        timer.setSingleShot(true);
        timer.start(0);
    }

private:
    void act()
    {
        std::uniform_int_distribution<int> chance(0, 99);
        int const kind = chance(random);
        Document& document = window.getDocument();
        if (kind < 4 && !document.isDragging()) {
            window.saveProject(projectOf(folder));
        } else if (kind < 8) {
            document.isDragging() ? document.endDrag() : document.beginDrag("Drag");
        } else if (kind < 12 && !document.isDragging()) {
            auto& curves = window.getCurvePanel().getModel().editor;
            curves.insertKey(0, static_cast<float>(chance(random)) / 100.0F);
        }
        ++count;
        document.setNumbers("Count", {counted}, count / counts);
        Done const done{now(), count};
        [[maybe_unused]] auto const written = ::write(log, &done, sizeof done);
        timer.start(kind == 99 ? 2500 : chance(random) / 5);
    }

    fs::path folder;
    int log;
    EditorWindow window;
    QTimer timer;
    std::mt19937 random{std::random_device()()};
    double count = 0.0;
};

double readCount(EditorWindow& window)
{
    return window.getDocument().getNumber(counted) * counts;
}

/// The next start: how much of the work the user gets, from what is offered or from the project.
double restore(fs::path const& folder)
{
    double count = 0.0;
    {
        EditorWindow window;
        window.goOn();
        window.show();
        QString const offer = window.getBar().getText(Subject::Recovery);
        check(!offer.contains("damaged"), offer.toStdString());
        if (!offer.isEmpty()) {
            window.getBar().choose(Subject::Recovery, 0);
            check(window.getDocument().isModified(), "what is restored is not to be saved");
            count = readCount(window);
        }
        window.openProject(projectOf(folder)); // and what is restored is not wanted
        count = std::max(count, readCount(window));
        check(window.getBar().getText().isEmpty(), window.getBar().getText().toStdString());
        window.close();
    }
    for (auto const& entry : fs::directory_iterator(folder / "state/remapcolor/recovery")) {
        check(false, "left: " + entry.path().string());
    }
    return count;
}

/// This program as another process.
pid_t spawn(std::vector<std::string> const& words)
{
    pid_t const child = ::fork();
    if (child == 0) {
        std::vector<char*> arguments{const_cast<char*>("editorFaults")};
        for (std::string const& word : words) {
            arguments.push_back(const_cast<char*>(word.c_str()));
        }
        arguments.push_back(nullptr);
        ::execv("/proc/self/exe", arguments.data());
        ::_exit(127);
    }
    return child;
}

int waitForEnd(pid_t child)
{
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<Done> readLog(fs::path const& folder)
{
    std::string const bytes = loadTextFile(folder / "log");
    std::vector<Done> all(bytes.size() / sizeof(Done));
    std::memcpy(all.data(), bytes.data(), all.size() * sizeof(Done));
    return all;
}

void killAtMoments(fs::path const& folder, int times)
{
    std::mt19937 random(std::random_device{}());
    std::uniform_real_distribution<double> moment(0.3, 5.0);
    for (int time = 0; time < times; ++time) {
        fs::remove(folder / "log");
        pid_t const child = spawn({"work", folder.string()});
        while (!fs::exists(folder / "log") || fs::file_size(folder / "log") == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        std::this_thread::sleep_for(Seconds(moment(random)));
        ::kill(child, SIGKILL);
        double const end = now();
        waitForEnd(child);
        double needed = 0.0;
        for (Done const& done : readLog(folder)) {
            needed = done.time <= end - mayBeLost.count() ? done.count : needed;
        }
        pid_t const next =
            spawn({"restore", folder.string(), std::to_string(static_cast<long>(needed))});
        check(waitForEnd(next) == 0, "kill " + std::to_string(time) + ": see above");
    }
}

/// Leaves so many blocks of the disk.
void fill(fs::path const& folder, int nbBlocks)
{
    constexpr std::size_t block = 4096;
    fs::path const filler = folder / "filler";
    fs::remove(filler);
    int const file = ::open(filler.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    std::vector<char> const bytes(block, 'x');
    std::size_t size = 0;
    while (::write(file, bytes.data(), block) == static_cast<ssize_t>(block)) {
        size += block;
    }
    check(::ftruncate(file, static_cast<off_t>(size - std::size_t(nbBlocks) * block)) == 0, "fill");
    ::close(file);
}

/// Without folders: settings and recovery have theirs.
std::size_t countFiles(fs::path const& folder)
{
    return static_cast<std::size_t>(
        std::count_if(fs::directory_iterator(folder), fs::directory_iterator(),
                      [](fs::directory_entry const& entry) { return entry.is_regular_file(); }));
}

void fillDisk(fs::path const& folder)
{
    EditorWindow window;
    window.show();
    MessageBar& bar = window.getBar();
    fs::path const project = projectOf(folder);
    auto const set = [&](double number) {
        window.getDocument().setNumbers("Edit", {counted}, number);
    };
    set(0.25);
    window.saveProject(project);
    check(bar.getText().isEmpty(), "cannot save at first");
    std::string old = loadTextFile(project);
    fill(folder, 0);
    std::size_t const nbFiles = countFiles(folder);
    set(0.5);
    waitUntil([&] { return !bar.getText(Subject::RecoveryFailure).isEmpty(); },
              "that work cannot be set aside");
    std::fprintf(stderr, "%s\n", bar.getText(Subject::RecoveryFailure).toUtf8().constData());
    bool isSaved = false;
    for (int nbBlocks = 0; !isSaved && nbBlocks < 100; ++nbBlocks) {
        fill(folder, nbBlocks);
        window.saveProject(project);
        isSaved = !window.getDocument().isModified();
        check(bar.getText().isEmpty() == isSaved, "it is not said whether it was saved");
        check(isSaved || loadTextFile(project) == old, "the old file is gone");
        check(countFiles(folder) == nbFiles, "something is left beside the project");
        if (nbBlocks == 0) {
            std::fprintf(stderr, "%s\n", bar.getText().toUtf8().constData());
        }
    }
    check(isSaved && loadTextFile(project) != old, "never saved");
    fill(folder, 0);
    set(0.75);
    waitUntil([&] { return !bar.getText(Subject::RecoveryFailure).isEmpty(); },
              "that work cannot be set aside again");
    fs::remove(folder / "filler");
    set(0.875);
    waitUntil([&] { return bar.getText(Subject::RecoveryFailure).isEmpty(); },
              "that work can be set aside again");
}

void openTwice(fs::path const& folder)
{
    fs::path const project = projectOf(folder);
    fs::remove(folder / "log");
    pid_t const other = spawn({"work", folder.string()});
    while (!fs::exists(folder / "log") || fs::file_size(folder / "log") == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ::kill(other, SIGSTOP); // its work stands still
    int names = 1;
    char name[] = "editorFaults";
    char* arguments[] = {name, nullptr};
    QApplication const application(names, arguments);
    EditorWindow window;
    window.goOn();
    window.show();
    MessageBar& bar = window.getBar();
    check(bar.getText(Subject::Recovery).isEmpty(), "work of a running editor is offered");
    window.openProject(project);
    QString const told = bar.getText(Subject::Project);
    check(told.contains("open in another editor"), "the second is not told");
    std::fprintf(stderr, "%s\n", told.toUtf8().constData());
    std::string const old = loadTextFile(project);
    window.getDocument().setNumbers("Edit", {"Linear.Gamma.Red"}, 3.0);
    window.saveProject(project);
    check(!bar.getText(Subject::Save).isEmpty(), "nothing is said of a save");
    check(loadTextFile(project) == old, "it was saved over the other's");
    ::kill(other, SIGKILL);
    waitForEnd(other);
    window.saveProject(project);
    check(!window.getDocument().isModified() && loadTextFile(project) != old,
          "not saved when the other is gone");
}

int runWith(std::function<void()> const& work, bool isForEver = false)
{
    int names = 1;
    char name[] = "editorFaults";
    char* arguments[] = {name, nullptr};
    QApplication application(names, arguments);
    Theme::apply(application);
    work();
    if (isForEver) {
        return QApplication::exec();
    }
    return nbBad == 0 ? 0 : 1;
}

void setHome(fs::path const& folder)
{
    for (char const* const kind : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
        ::setenv(kind, folder.c_str(), 1);
    }
    ::setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
}

} // namespace

int main(int nbArguments, char** arguments)
{
    std::vector<std::string> const words(arguments + 1, arguments + nbArguments);
    if (words.size() < 2) {
        std::fputs("editorFaults kills FOLDER TIMES | disk FOLDER | two FOLDER\n", stderr);
        return 2;
    }
    std::string const& part = words[0];
    fs::path const folder = words[1];
    setHome(folder);
    if (part == "kills") {
        killAtMoments(folder, std::stoi(words.at(2)));
    } else if (part == "two") {
        openTwice(folder);
    } else if (part == "disk") {
        return runWith([&] { fillDisk(folder); });
    } else if (part == "work") {
        std::unique_ptr<Worker> worker;
        return runWith([&] { worker = std::make_unique<Worker>(folder); }, true);
    } else if (part == "restore") {
        double const needed = std::stod(words.at(2));
        return runWith([&] {
            double const got = restore(folder);
            std::fprintf(stderr, "needed %.0f, got %.0f\n", needed, got);
            check(got >= needed, "work is lost");
        });
    }
    return nbBad == 0 ? 0 : 1;
}
