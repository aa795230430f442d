// The whole window, offscreen, driven by mouse and keys as a person does.

#include "editor/view/window/EditorWindow.h"

#include "editor/model/document/UserFolders.h"
#include "editor/view/window/FileActions.h"

#include <QDockWidget>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QWheelEvent>
#include <fstream>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using Subject = MessageBar::Subject;
constexpr int longestWaitMilliseconds = 30000; // milliseconds; no measure of speed
fs::path const scene = fs::path(EXAMPLES) / "scene.exr";

class EditorWindowTest : public testing::Test {
protected:
    EditorWindowTest()
        : window(std::make_unique<EditorWindow>()), settled(window.get(), &EditorWindow::settled)
    {
        window->show();
        fs::create_directories(folder);
    }
    ~EditorWindowTest() override
    {
        window.reset();
        fs::remove_all(folder);
    }

    void open(fs::path const& picture)
    {
        settled.clear();
        window->openPicture(picture);
        EXPECT_TRUE(settled.count() > 0 || settled.wait(longestWaitMilliseconds));
    }
    NumberField& findField(char const* name) { return *window->getParameters().findField(name); }
    double number(char const* name) { return window->getDocument().getNumber(name); }
    std::size_t countSteps() { return window->getDocument().getHistory().getNbCommands(); }
    void drag(QWidget& widget, QPoint from, QPoint to)
    {
        QTest::mousePress(&widget, Qt::LeftButton, {}, from);
        for (int step = 1; step <= 8; ++step) {
            QTest::mouseMove(&widget, from + (to - from) * step / 8);
        }
        QTest::mouseRelease(&widget, Qt::LeftButton, {}, to);
    }

    fs::path const folder = fs::temp_directory_path() / ("editor" + std::to_string(getpid()));
    std::unique_ptr<EditorWindow> window;
    QSignalSpy settled;
};

} // namespace

TEST_F(EditorWindowTest, DragOfAParameterIsOneStepAndEscapeTakesItBack)
{
    window->getDocument().setNumbers("", {"InputMinLink"}, 1);
    NumberField& field = findField("Linear.Input Level.Min.Red");
    std::size_t const before = countSteps();
    drag(field, {10, 8}, {50, 8});
    EXPECT_EQ(countSteps(), before + 1);
    EXPECT_NE(number("Linear.Input Level.Min.Red"), 0.0);
    EXPECT_EQ(number("Linear.Input Level.Min.Blue"), number("Linear.Input Level.Min.Red"))
        << "linked";
    window->getDocument().getHistory().undo();
    EXPECT_EQ(number("Linear.Input Level.Min.Red"), 0.0);

    QTest::mousePress(&field, Qt::LeftButton, {}, {10, 8});
    QTest::mouseMove(&field, {60, 8});
    EXPECT_NE(number("Linear.Input Level.Min.Red"), 0.0);
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_EQ(number("Linear.Input Level.Min.Red"), 0.0);
}

TEST_F(EditorWindowTest, FieldTakesSumsAndRefusesInPlace)
{
    NumberField& field = findField("Mix");
    auto const type = [&](char const* text) {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    };
    type("(1 + 0.5) / 4");
    EXPECT_EQ(number("Mix"), 0.375);
    for (char const* const refused : {"1.5", "1/0", "2*", "half"}) {
        type(refused);
        EXPECT_EQ(number("Mix"), 0.375) << refused;
        EXPECT_NE(field.toolTip(), "Mix") << refused;
    }
}

TEST_F(EditorWindowTest, ProjectIsSavedAndOpened)
{
    Document& document = window->getDocument();
    document.setNumbers("", {"Linear.Gamma.Green"}, 1.7);
    EXPECT_TRUE(window->isWindowModified());
    window->saveProject(folder / "look.json");
    EXPECT_FALSE(window->isWindowModified());
    document.setNumbers("", {"Linear.Gamma.Green"}, 3.0);
    window->openProject(folder / "look.json");
    EXPECT_EQ(number("Linear.Gamma.Green"), 1.7);
    document.getHistory().undo();
    EXPECT_EQ(number("Linear.Gamma.Green"), 3.0) << "opening is a step";
}

TEST_F(EditorWindowTest, WhatCannotBeReadIsSaidAndWhatWasOpenStays)
{
    open(scene);
    QString const shown = window->windowTitle();
    std::ofstream(folder / "torn.exr", std::ios::binary)
        << std::ifstream(scene, std::ios::binary).rdbuf();
    fs::resize_file(folder / "torn.exr", fs::file_size(scene) / 2);
    std::ofstream(folder / "wrong.json") << "{\"format\": 1}";
    for (fs::path const& file : {folder / "none.exr", folder / "torn.exr"}) {
        window->openPicture(file);
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                return window->getBar()
                    .getText(Subject::PictureFailure)
                    .contains(QString::fromStdString(file.filename().string()));
            },
            longestWaitMilliseconds));
    }
    settled.clear();
    window->getFiles().openFiles({folder / "none.exr", folder / "wrong.json"});
    EXPECT_TRUE(settled.wait(longestWaitMilliseconds));
    EXPECT_TRUE(window->getBar().getText(Subject::PictureFailure).contains("none.exr"));
    EXPECT_TRUE(window->getBar().getText().contains("wrong.json"));
    window->saveProject(folder / "no folder" / "look.json");
    EXPECT_TRUE(window->getBar().getText().contains("look.json"));
    QTest::qWait(0);
    EXPECT_EQ(window->windowTitle(), shown);
}

TEST_F(EditorWindowTest, LongNamesTakeNoRoomFromWhatMattersMore)
{
    std::string const longName(200, 'n');
    fs::copy_file(scene, folder / (longName + ".exr"));
    open(folder / (longName + ".exr"));
    window->openPicture(folder / (longName + ".gone"));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return !window->getBar().getText(Subject::PictureFailure).isEmpty(); },
        longestWaitMilliseconds));
    window->resize(700, 560);
    QTest::qWait(0);
    for (QLabel* const label : window->getBar().findChildren<QLabel*>()) {
        QRect const wrapped = label->fontMetrics().boundingRect({0, 0, label->width(), 10000},
                                                                Qt::TextWordWrap, label->text());
        EXPECT_LE(wrapped.width(), label->width()) << label->text().toStdString();
    }
    constexpr int ofThePixel = 300; // of 700
    EXPECT_GE(window->statusBar()->findChildren<QLabel*>().front()->width(), ofThePixel);
}

TEST_F(EditorWindowTest, WhatIsDroppedIsOpened)
{
    window->getDocument().setNumbers("", {"Linear.Gamma.Green"}, 1.7);
    window->saveProject(folder / "look.json");
    window->getDocument().setNumbers("", {"Linear.Gamma.Green"}, 3.0);
    window->saveProject(folder / "other.json");
    QMimeData dropped;
    dropped.setUrls(
        {QUrl::fromLocalFile((folder / "look.json").c_str()), QUrl::fromLocalFile(scene.c_str())});
    QDragEnterEvent entering({100, 100}, Qt::CopyAction, &dropped, Qt::LeftButton, {});
    QCoreApplication::sendEvent(window.get(), &entering);
    EXPECT_TRUE(entering.isAccepted());
    QDropEvent event({100, 100}, Qt::CopyAction, &dropped, Qt::LeftButton, {});
    settled.clear();
    QCoreApplication::sendEvent(window.get(), &event);
    EXPECT_TRUE(settled.count() > 0 || settled.wait(longestWaitMilliseconds));
    EXPECT_EQ(number("Linear.Gamma.Green"), 1.7);
    EXPECT_EQ(window->getPlate().getFile(), scene);

    auto* const panel = window->findChild<QDockWidget*>("curves");
    panel->setFloating(true);
    dropped.setUrls({QUrl::fromLocalFile((folder / "other.json").c_str())});
    QDragEnterEvent enteringPanel({100, 100}, Qt::CopyAction, &dropped, Qt::LeftButton, {});
    QCoreApplication::sendEvent(panel, &enteringPanel);
    EXPECT_TRUE(panel->acceptDrops() && enteringPanel.isAccepted());
    QDropEvent onPanel({100, 100}, Qt::CopyAction, &dropped, Qt::LeftButton, {});
    QCoreApplication::sendEvent(panel, &onPanel);
    EXPECT_EQ(number("Linear.Gamma.Green"), 3.0);
}

TEST_F(EditorWindowTest, WorkThatWasLeftIsOfferedAtTheNextStart)
{
    window->getDocument().setNumbers("", {"Linear.Gamma.Green"}, 2.5);
    fs::path const left = getStateFolder() / "recovery";
    EXPECT_TRUE(QTest::qWaitFor([&] { return fs::exists(left) && !fs::is_empty(left); },
                                longestWaitMilliseconds));
    window = nullptr; // without an end in order
    window = std::make_unique<EditorWindow>();
    window->goOn();
    window->show();
    EXPECT_EQ(number("Linear.Gamma.Green"), 1.0);
    EXPECT_TRUE(window->getBar().getText(Subject::Recovery).contains("Unsaved work"));
    for (auto* const button : window->getBar().findChildren<QPushButton*>()) {
        if (button->text() == "Restore") {
            QTest::mouseClick(button, Qt::LeftButton);
        }
    }
    EXPECT_EQ(number("Linear.Gamma.Green"), 2.5);
    EXPECT_TRUE(window->isWindowModified());
    window->saveProject(folder / "saved.json"); // nothing is left
    window = nullptr;
    window = std::make_unique<EditorWindow>();
    window->goOn();
    EXPECT_TRUE(window->getBar().getText(Subject::Recovery).isEmpty());
}
