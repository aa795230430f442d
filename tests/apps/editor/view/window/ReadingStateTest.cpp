// Reading that takes long, in the whole window.

#include "editor/view/window/ReadingState.h"

#include "apps/editor/GatedReading.h"
#include "apps/editor/ShotFixture.h"
#include "editor/view/window/EditorWindow.h"

#include <QDockWidget>
#include <QTest>
#include <QToolButton>

namespace {

constexpr int longest = 60000; // milliseconds; no measure of speed

class ReadingStateTest : public ShotFixture {
protected:
    ReadingStateTest()
    {
        write("still.exr", 32);
        write("slow.exr", 40, 8000); // four strips
        window.show();
        window.openPicture(file("still.exr"));
        EXPECT_TRUE(waitFor([&] { return window.getPlate().getPicture() != nullptr; }));
    }
    ~ReadingStateTest() noexcept override { disk.allowAll(); }

    static bool waitFor(auto const& isReached) { return QTest::qWaitFor(isReached, longest); }
    QString text() { return window.getReadingState().getText(); }

    SlowDisk disk;
    EditorWindow window{disk.makeOpener()};
};

} // namespace

TEST_F(ReadingStateTest, LongReadingIsSaidAndEscapeGivesItUpWhereverTheFocusIs)
{
    auto const& shown = window.getPlate().getPicture();
    auto const before = shown;
    QWidget* const field = window.getParameters().findField("Mix");
    QWidget* const button = window.getReadingState().findChild<QToolButton*>();
    window.findChild<QDockWidget*>("parameters")->setFloating(true);
    for (QWidget* const focus :
         std::initializer_list<QWidget*>{&window.getPicture(), &window.getCurvePanel().getCurves(),
                                         &window.getTimePanel().getRuler(), field, button}) {
        EXPECT_EQ(text(), "");
        disk.allow(2);
        window.openPicture(file("slow.exr"));
        EXPECT_TRUE(waitFor([&] { return text() == "reading slow.exr 30 %"; }))
            << text().toStdString();
        focus == button ? QTest::mouseClick(button, Qt::LeftButton)
                        : QTest::keyClick(focus, Qt::Key_Escape);
        EXPECT_EQ(text(), "");
        EXPECT_FALSE(window.isReading());
        EXPECT_EQ(shown, before);
        EXPECT_TRUE(window.getBar().isHidden()) << "nothing is wrong";
        disk.allow(1);
        EXPECT_TRUE(waitFor([&] { return !disk.isAwaited(); }));
    }
    disk.allowAll();
    window.openPicture(file("slow.exr"));
    EXPECT_TRUE(waitFor([&] { return !window.isReading(); }));
    EXPECT_NE(shown, before);
    EXPECT_EQ(text(), "");
}
