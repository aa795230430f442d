// remapcolor-editor: the desktop program.

#include "editor/model/document/CommandLine.h"
#include "editor/view/window/EditorWindow.h"
#include "editor/view/window/FileActions.h"
#include "editor/view/window/Theme.h"
#include "files/FileError.h"
#include "session/Failures.h"
#include "session/FreedMemory.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

int fail(Failure const& failure)
{
    std::fprintf(stderr, "remapcolor-editor: %s\n", failure.text.c_str());
    return failure.status;
}

/// A failure that nobody has handled is said, and the work goes on.
class Application : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        try {
            return QApplication::notify(receiver, event);
        } catch (...) {
            auto const windows = topLevelWidgets();
            for (QWidget* const window : windows) {
                if (auto* const editor = qobject_cast<EditorWindow*>(window)) {
                    editor->getBar().tellFailure(std::current_exception());
                    return true;
                }
            }
            throw;
        }
    }
};

/// The toolkit ends the process where it finds no display; it is told in one sentence.
void tellToolkitMessage(QtMsgType type, QMessageLogContext const&, QString const& text)
{
    if (type == QtFatalMsg) {
        std::fputs("remapcolor-editor: no window can be opened; is there a display (DISPLAY)?\n",
                   stderr);
        std::_Exit(static_cast<int>(ExitStatus::Surroundings));
    }
    bool const isNote = type == QtDebugMsg || type == QtInfoMsg || text.contains("XDG_RUNTIME_DIR");
    if (!isNote && !text.contains("propagateSizeHints") &&
        !text.startsWith("could not connect to display") &&
        !text.startsWith("Could not load the Qt platform plugin")) {
        std::fprintf(stderr, "remapcolor-editor: %s\n", text.toUtf8().constData());
    }
}

int signalPipe[2] = {-1, -1};

/// Asked to end, the editor ends in order and keeps what is unsaved for the next start.
void endOnSignals(EditorWindow& window)
{
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // what is unsaved is set aside all the same, a second later at most
    }
    auto* const notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &window);
    QObject::connect(notifier, &QSocketNotifier::activated, &window, [&window] {
        unsigned char number = 0;
        if (::read(signalPipe[0], &number, 1) == 1) {
            window.endNow(static_cast<int>(ExitStatus::SignalReceived) + number);
        }
    });
    struct sigaction action {};
    action.sa_handler = [](int number) {
        int const before = errno;
        auto const byte = static_cast<unsigned char>(number);
        [[maybe_unused]] ssize_t const written = ::write(signalPipe[1], &byte, 1);
        errno = before;
    };
    for (int const number : {SIGINT, SIGTERM, SIGHUP}) {
        ::sigaction(number, &action, nullptr);
    }
}

void saveScreenshot(EditorWindow& window, std::filesystem::path const& file)
{
    errno = 0;
    bool const isSaved = window.grab().save(QString::fromStdString(file.string()), "PNG");
    QApplication::exit(isSaved ? 0
                               : fail({static_cast<int>(ExitStatus::Surroundings),
                                       "cannot write the screenshot " + quote(file.string()) +
                                           ": " + describeSystemError(errno)}));
}

int run(CommandLine const& line, QApplication const& application)
{
    EditorWindow window;
    if (line.size.has_value()) {
        window.resize(line.size->width, line.size->height);
    }
    if (line.screenshot.empty()) {
        endOnSignals(window);
        window.goOn();
    }
    window.getFiles().openFiles(line.files);
    window.show();
    bool isSettled = false;
    if (!line.screenshot.empty()) { // the same for everybody
        auto const save = [&] {
            if (!window.getCurvePanel().isCounting()) {
                saveScreenshot(window, line.screenshot);
            }
        };
        if (window.isReading()) {
            QObject::connect(&window, &EditorWindow::settled, &window, [&isSettled, save] {
                isSettled = true;
                save();
            });
            QObject::connect(&window.getCurvePanel(), &CurvePanel::counted, &window,
                             [&isSettled, save] {
                                 if (isSettled) {
                                     save();
                                 }
                             });
        } else {
            QTimer::singleShot(0, &window, save);
        }
    }
    return application.exec();
}

} // namespace

int main(int nbArguments, char** arguments)
{
    keepFreedMemory();
    try {
        CommandLine const line = parseCommandLine({arguments + 1, arguments + nbArguments});
        if (line.isHelpWanted || line.isVersionWanted) {
            std::fputs(line.isHelpWanted ? commandLineHelp
                                         : "remapcolor-editor " REMAPCOLOR_VERSION "\n",
                       stdout);
            return std::fflush(stdout) == 0 ? 0 : static_cast<int>(ExitStatus::Surroundings);
        }
        qInstallMessageHandler(&tellToolkitMessage);
        int nbNames = 1;
        Application application(nbNames, arguments);
        QApplication::setApplicationName("remapcolor-editor");
        QGuiApplication::setDesktopFileName("remapcolor-editor"); // has the icon
        QApplication::setCursorFlashTime(0); // nothing runs when nothing changes
        Theme::apply(application);
        return run(line, application);
    } catch (...) {
        return fail(describeCurrentFailure());
    }
}
