// Presets of curves, saved, applied and put in order by mouse and keys.

#include "editor/view/curves/PresetsDialog.h"

#include "runtime/curves/CurveText.h"
#include "support/TestFolder.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

class PresetsDialogTest : public testing::Test {
protected:
    PresetsDialogTest() { dialog.show(); }
    ~PresetsDialogTest() noexcept override = default;

    void type(char const* text)
    {
        name.selectAll();
        QTest::keyClick(&name, Qt::Key_Delete);
        QTest::keyClicks(&name, text);
    }
    void press(char const* text)
    {
        for (QPushButton* const button : dialog.findChildren<QPushButton*>()) {
            if (button->text() == text) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        FAIL() << "no button " << text;
    }
    void choose(int row)
    {
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                          list.visualItemRect(list.item(row)).center());
    }
    void set(char const* text) { editor.paste(text, CurveEditor::Target::All); }
    std::string reason() const { return dialog.findChild<QLabel*>()->text().toStdString(); }
    CurvePoints curve(char const* text) const { return parseCurve("curve", text); }

    TestFolder home;
    std::filesystem::path folder = home.path / "new" / "curves";
    Document document;
    CurveEditor editor{document};
    PresetsDialog dialog{editor, folder, nullptr};
    QLineEdit& name = *dialog.findChild<QLineEdit*>();
    QListWidget& list = *dialog.findChild<QListWidget*>();
};

TEST_F(PresetsDialogTest, CurvesAreSavedAppliedRenamedDeletedAndPutBack)
{
    set("red=0,0 0.5,0.8 1,1\ngreen=0,0 1,1\nblue=0,0.1 1,1");
    std::array const saved = {document.getCurve(0), document.getCurve(1), document.getCurve(2)};
    type("Warm sun");
    QTest::keyClick(&name, Qt::Key_Return);
    ASSERT_EQ(reason(), "");
    set("0,1 1,0");
    type("flip");
    press("Save");
    ASSERT_EQ(list.count(), 2);
    EXPECT_EQ(list.item(1)->text(), "flip");
    EXPECT_NE(list.item(0)->icon().pixmap(96, 72).toImage(),
              list.item(1)->icon().pixmap(96, 72).toImage());
    choose(0);
    editor.setChannel(2);
    press("Apply");
    EXPECT_EQ(document.getCurve(2), saved[2]);
    EXPECT_EQ(document.getCurve(0), curve("0,1 1,0")) << "only what is edited";
    EXPECT_EQ(document.getHistory().getUndoLabel(), "Apply preset");
    editor.setChannel(CurveDisplay::allChannels);
    press("Apply");
    EXPECT_EQ(document.getCurve(0), saved[0]);
    EXPECT_EQ(document.getCurve(1), saved[1]);
    type("cold");
    press("Rename");
    EXPECT_EQ(list.item(0)->text(), "cold");
    EXPECT_EQ(list.currentItem()->text(), "cold");
    press("Delete");
    EXPECT_EQ(list.count(), 1);
    press("Put back");
    ASSERT_EQ(list.count(), 2);
    set("0,0 1,1");
    choose(0);
    press("Apply");
    EXPECT_EQ(document.getCurve(0), saved[0]);
}

TEST_F(PresetsDialogTest, WhatCannotBeIsSaidInPlaceAndChangesNothing)
{
    type("one");
    press("Save");
    for (auto const& [text, why] :
         {std::pair("", "needs a name"), std::pair("a/b", "no slash"), std::pair(".hidden", "dot"),
          std::pair("one", "of that name")}) {
        for (char const* const button : {"Save", "Rename"}) {
            choose(0);
            type(text);
            press(button);
            EXPECT_NE(reason().find(why), std::string::npos) << text << reason();
        }
    }
    type(std::string(250, 'n').c_str());
    press("Save");
    EXPECT_EQ(reason(), "the name is too long");
    EXPECT_EQ(list.count(), 1);
    std::filesystem::remove_all(folder);
    saveBytes(folder, "no folder");
    type("two");
    press("Save");
    EXPECT_NE(reason().find("cannot "), std::string::npos);
    EXPECT_EQ(loadBytes(folder), "no folder");
}

TEST_F(PresetsDialogTest, DamagedOnesAreToldOnceAndLeftOut)
{
    type("good");
    press("Save");
    saveBytes(folder / "bad.json", "{");
    saveBytes(folder / "worse.json", "");
    std::filesystem::create_directory(folder / "folder.json");
    dialog.hide();
    dialog.show();
    EXPECT_EQ(list.count(), 1);
    EXPECT_NE(reason().find(".json"), std::string::npos) << reason();
    EXPECT_NE(reason().find("1 more"), std::string::npos) << reason();
    dialog.hide();
    dialog.show();
    EXPECT_EQ(reason(), "");
}

} // namespace
