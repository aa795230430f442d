// Render… in the whole window, by mouse and keys; the command line that lies beside the program
// renders.

#include "editor/view/render/RenderDialog.h"

#include "apps/editor/ShotFixture.h"
#include "editor/view/window/EditorWindow.h"
#include "editor/view/window/Theme.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

constexpr int longestRender = 60000; // milliseconds; no measure of speed

class RenderDialogTest : public ShotFixture {
protected:
    RenderDialogTest()
    {
        writeShot({1, 2, 3, 4});
        window.show();
        window.activateWindow();
        window.openPicture(file("shot.####.exr"));
        EXPECT_TRUE(
            QTest::qWaitFor([this] { return !window.getPlate().isReading(); }, longestRender));
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window, longestRender));
        QTest::keyClick(&window, Qt::Key_R, Qt::ControlModifier);
        dialog = window.findChild<RenderDialog*>();
    }

    template <typename Widget>
    Widget& find(QString const& name)
    {
        for (Widget* const widget : dialog->findChildren<Widget*>()) {
            if (widget->accessibleName() == name) {
                return *widget;
            }
        }
        throw std::runtime_error("there is no " + name.toStdString());
    }
    QPushButton& button(QString const& text)
    {
        for (auto* const one : dialog->findChildren<QPushButton*>()) {
            if (one->text().remove('&') == text) {
                return *one;
            }
        }
        throw std::runtime_error("there is no button " + text.toStdString());
    }
    void type(QString const& name, QString const& text)
    {
        auto& field = find<QLineEdit>(name);
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
    }
    void click(QString const& text) { QTest::mouseClick(&button(text), Qt::LeftButton); }
    QString command()
    {
        return find<QPlainTextEdit>("The command line that does the same").toPlainText();
    }
    QLabel& state() { return find<QLabel>("State of the render"); }
    void waitForEnd()
    {
        EXPECT_TRUE(
            QTest::qWaitFor([this] { return button("Render").isEnabled(); }, longestRender));
    }
    std::string outputs(std::string const& pattern) { return file(pattern).string(); }
    std::string readWhole(std::string const& name)
    {
        std::ostringstream bytes;
        bytes << std::ifstream(file(name), std::ios::binary).rdbuf();
        return bytes.str();
    }

    EditorWindow window;
    RenderDialog* dialog = nullptr;
};

} // namespace

TEST_F(RenderDialogTest, FramesAreWrittenAndTheCommandThatIsShownWritesTheSame)
{
    type("Output", outputs("out.####.exr").c_str());
    type("Frames", "2-3");
    EXPECT_EQ(command(), "") << "nothing to render with is in a file";
    EXPECT_TRUE(button("Save project").isVisible());
    window.getDocument().setNumbers("", {"Linear.Gamma.Red"}, 2.0);
    window.saveProject(file("look.json"));
    EXPECT_NE(command(), "");
    EXPECT_FALSE(button("Save project").isVisible());

    click("Copy");
    click("Render");
    EXPECT_FALSE(button("Render").isEnabled());
    window.getDocument().setNumbers("", {"Linear.Gamma.Red"}, 3.0); // after the start
    EXPECT_EQ(command(), "");
    waitForEnd();
    EXPECT_TRUE(state().text().startsWith("2 of 2 frames")) << state().text().toStdString();
    EXPECT_FALSE(std::filesystem::exists(file("out.0001.exr")));
    std::map<std::string, std::string> rendered;
    for (std::string const name : {"out.0002.exr", "out.0003.exr"}) {
        rendered[name] = readWhole(name);
        std::filesystem::remove(file(name));
    }

    std::string const programs = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::string const copied = QGuiApplication::clipboard()->text().toStdString();
    EXPECT_EQ(std::system(("PATH=" + programs + " " + copied + " </dev/null 2>&1").c_str()), 0);
    for (auto const& [name, bytes] : rendered) {
        EXPECT_FALSE(bytes.empty()) << name;
        EXPECT_TRUE(readWhole(name) == bytes) << name;
    }
}

TEST_F(RenderDialogTest, WhatFailsIsOneSentenceHereOrInTheBar)
{
    type("Output", outputs("one.exr").c_str()); // for four frames
    click("Render");
    waitForEnd();
    EXPECT_TRUE(state().text().contains("one.exr")) << state().text().toStdString();
    EXPECT_FALSE(state().text().contains('\n'));
    EXPECT_EQ(state().palette().color(QPalette::WindowText), Theme::failure);
    EXPECT_FALSE(find<QPlainTextEdit>("What was said").isVisible());
    EXPECT_FALSE(std::filesystem::exists(file("one.exr")));

    click("Render");
    click("Close");
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([this] { return window.getBar().getText().contains("one.exr"); },
                                longestRender));
}

TEST_F(RenderDialogTest, CancelEndsTheRenderAndLeavesNothingHalf)
{
    type("Output", outputs("out.####.exr").c_str());
    EXPECT_FALSE(button("Cancel render").isEnabled());
    click("Render");
    EXPECT_TRUE(button("Cancel render").isEnabled());
    click("Cancel render"); // whatever the command line does by then
    EXPECT_FALSE(button("Cancel render").isEnabled());
    EXPECT_FALSE(button("Render").isEnabled());
    waitForEnd();
    EXPECT_NE(state().palette().color(QPalette::WindowText), Theme::failure);
    EXPECT_FALSE(state().text().isEmpty());
    EXPECT_FALSE(state().text().startsWith("stopping"));
    for (auto const& entry : std::filesystem::directory_iterator(folder.path)) {
        std::string const name = entry.path().filename();
        EXPECT_FALSE(name.starts_with('.')) << name;
        if (name.starts_with("out.")) {
            EXPECT_FALSE(loadExr(entry.path()).empty()) << name;
        }
    }
}
