// remapcolor-editor: the desktop program.

#include "editor/view/window/EditorWindow.h"
#include "editor/view/window/Theme.h"
#include "session/Failures.h"

#include <QApplication>
#include <QCommandLineParser>
#include <cstdio>
#include <cstdlib>

namespace {

/// A failure that nobody has handled is said, and the work goes on.
class Application : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        try {
            return QApplication::notify(receiver, event);
        } catch (...) {
            auto* const window = qobject_cast<EditorWindow*>(activeWindow());
            if (window == nullptr) {
                throw;
            }
            window->getBar().tellFailure(std::current_exception());
            return true;
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

void openFile(EditorWindow& window, QString const& file)
{
    if (file.endsWith(".json", Qt::CaseInsensitive)) {
        window.openProject(file.toStdString());
    } else {
        window.openPicture(file.toStdString());
    }
}

} // namespace

int main(int nbArguments, char** arguments)
{
    qInstallMessageHandler(&tellToolkitMessage);
    Application application(nbArguments, arguments);
    QApplication::setApplicationName("remapcolor-editor");
    QApplication::setApplicationVersion(REMAPCOLOR_VERSION);
    QApplication::setCursorFlashTime(0); // nothing runs when nothing changes
    Theme::apply(application);
    QCommandLineParser parser;
    parser.setApplicationDescription("Remaps the colours of a picture by curves.");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument("FILE", "A picture, a project (.json), or one of each",
                                 "[FILE...]");
    QCommandLineOption const shot("screenshot", "Save the window as PNG when it is shown, and end.",
                                  "FILE.png");
    parser.addOption(shot);
    parser.process(application);
    try {
        EditorWindow window;
        if (parser.isSet(shot)) { // the same for everybody
            QObject::connect(&window, &EditorWindow::settled, &window, [&] {
                bool const isSaved = window.grab().save(parser.value(shot));
                QApplication::exit(isSaved ? 0 : 1);
            });
        } else {
            window.restoreLayout();
        }
        for (QString const& file : parser.positionalArguments()) {
            openFile(window, file);
        }
        window.show();
        return QApplication::exec();
    } catch (...) {
        Failure const failure = describeCurrentFailure();
        std::fprintf(stderr, "remapcolor-editor: %s\n", failure.text.c_str());
        return failure.status;
    }
}
