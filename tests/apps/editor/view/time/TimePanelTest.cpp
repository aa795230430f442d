// Time in the whole window, by mouse and keys.

#include "editor/view/time/TimePanel.h"

#include "apps/editor/ShotFixture.h"
#include "editor/view/window/EditorWindow.h"
#include "runtime/values/Keyframes.h"

#include <QComboBox>
#include <QTest>

namespace {

std::string const keyedExposure = "EXRDisplay.Exposure.Red";
constexpr int longestPlay = 30000; // milliseconds; no measure of speed

class TimePanelTest : public ShotFixture {
protected:
    TimePanelTest()
    {
        window.show();
        document.setNumbers("", {"Mode"}, 1);
        document.setNumbers("", {"Adjust"}, 0);
    }

    void open(std::string const& name)
    {
        window.openPicture(file(name));
        waitForFrame();
    }
    /// Until the frame that is wanted is shown, or a gap.
    void waitForFrame()
    {
        EXPECT_TRUE(
            QTest::qWaitFor([this] { return !window.getPlate().isReading(); }, longestPlay));
        QTest::qWait(0);
    }
    void setKeys(std::vector<Keyframe<double>> const& keyframes)
    {
        document.getNode().setValues({{keyedExposure, Animated<double>(keyframes)}});
    }
    std::vector<double> keyTimes()
    {
        return getKeyframeTimes(*document.getNode().getValue(keyedExposure)->getState());
    }
    QPoint scaleAt(double frame) { return {ruler.toWidget(frame).toPoint().x(), 8}; }
    QPoint keyAt(double frame) { return ruler.toWidget(frame).toPoint(); }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(&ruler, Qt::LeftButton, modifiers, from);
        for (int step = 1; step <= 4; ++step) {
            QTest::mouseMove(&ruler, from + (to - from) * step / 4);
        }
        QTest::mouseRelease(&ruler, Qt::LeftButton, modifiers, to);
    }
    double time() { return document.getTime(); }
    std::size_t countSteps() { return document.getHistory().getNbCommands(); }

    EditorWindow window;
    Document& document = window.getDocument();
    TimePanel& panel = window.getTimePanel();
    TimeRuler& ruler = panel.getRuler();
};

using Times = std::vector<double>;

} // namespace

TEST_F(TimePanelTest, MouseKeysAndFieldGoToFrames)
{
    writeShot({1001, 1002, 1003, 1005, 1006});
    open(nameOf(1002));
    EXPECT_EQ(time(), 1002);
    drag(scaleAt(1002), scaleAt(1005));
    EXPECT_EQ(time(), 1005) << "scrubbed";
    QTest::mouseClick(&ruler, Qt::LeftButton, {}, scaleAt(1003));
    EXPECT_EQ(time(), 1003);
    struct Case {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        double time;
    };
    setKeys({{1001, 0}, {1005, 1}});
    for (auto const& [key, modifiers, expected] :
         {Case{Qt::Key_Left, {}, 1002}, Case{Qt::Key_Right, {}, 1003},
          Case{Qt::Key_Period, {}, 1004}, Case{Qt::Key_Comma, {}, 1003},
          Case{Qt::Key_End, {}, 1006}, Case{Qt::Key_Right, {}, 1006},
          Case{Qt::Key_Left, Qt::ControlModifier, 1005},
          Case{Qt::Key_Left, Qt::ControlModifier, 1001},
          Case{Qt::Key_Left, Qt::ControlModifier, 1001},
          Case{Qt::Key_Right, Qt::ControlModifier, 1005}, Case{Qt::Key_Home, {}, 1001}}) {
        for (QWidget* const focused :
             {static_cast<QWidget*>(&ruler), static_cast<QWidget*>(&window.getPicture())}) {
            double const before = time();
            focused->setFocus();
            QTest::keyClick(focused, key, modifiers);
            EXPECT_EQ(time(), expected) << key;
            if (focused == &ruler) {
                document.setTime(before); // the same in the picture
            }
        }
    }
    NumberField& field = panel.getFrameField();
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, "1001 + 2*2");
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(time(), 1005);
    QTest::keyClick(&field, Qt::Key_Left);
    EXPECT_EQ(time(), 1005) << "the text's cursor";

    document.setTime(1004);
    waitForFrame();
    EXPECT_EQ(window.getPlate().getGap(), "frame 1004 is missing");
    // The place of the frame before stays empty.
    QImage const shown = window.getPicture().grab().toImage();
    EXPECT_EQ(shown.pixelColor(shown.rect().center() + QPoint(0, 60)),
              shown.pixelColor(QPoint(2, 2)));
}

TEST_F(TimePanelTest, DiamondsAreSelectedMovedCopiedAndRemoved)
{
    writeShot({1, 20});
    open("shot.####.exr");
    setKeys({{2, 0}, {6, 1}, {10, 2}});
    std::size_t const before = countSteps();
    drag(keyAt(6), keyAt(8));
    EXPECT_EQ(keyTimes(), (Times{2, 8, 10}));
    EXPECT_EQ(countSteps(), before + 1) << "one drag";
    drag(keyAt(1) - QPoint(0, 6), keyAt(9)); // a band around two
    EXPECT_EQ(ruler.getSelection(), (Keys::Times{2, 8}));
    drag(keyAt(2), keyAt(5));
    EXPECT_EQ(keyTimes(), (Times{5, 10, 11}));
    document.getHistory().undo();
    document.getHistory().undo();
    EXPECT_EQ(keyTimes(), (Times{2, 6, 10}));

    drag(keyAt(6), keyAt(14), Qt::ControlModifier);
    EXPECT_EQ(keyTimes(), (Times{2, 6, 10, 14}));
    QTest::mouseClick(&ruler, Qt::LeftButton, {}, keyAt(2));
    QTest::mouseClick(&ruler, Qt::LeftButton, Qt::ControlModifier, keyAt(10));
    EXPECT_EQ(ruler.getSelection(), (Keys::Times{2, 10}));
    ruler.setFocus();
    QTest::keyClick(&ruler, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(keyTimes(), (Times{3, 6, 11, 14}));
    QTest::keyClick(&ruler, Qt::Key_Delete);
    EXPECT_EQ(keyTimes(), (Times{6, 14}));
    QTest::keyClick(&ruler, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&ruler, Qt::Key_C, Qt::ControlModifier);
    document.setTime(16);
    QTest::keyClick(&ruler, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(keyTimes(), (Times{6, 14, 16, 24}));

    QTest::mousePress(&ruler, Qt::LeftButton, {}, keyAt(6));
    QTest::mouseMove(&ruler, keyAt(12));
    EXPECT_EQ(keyTimes(), (Times{12, 14, 16, 24}));
    QTest::keyClick(&ruler, Qt::Key_Escape);
    EXPECT_EQ(keyTimes(), (Times{6, 14, 16, 24}));
    QTest::mouseRelease(&ruler, Qt::LeftButton, {}, keyAt(12));
    QTest::mouseDClick(&ruler, Qt::LeftButton, {}, keyAt(14));
    EXPECT_EQ(time(), 14);
}

TEST_F(TimePanelTest, RefusedRangesAndRatesAreSaidInPlace)
{
    struct Case {
        char const* field;
        char const* text;
        bool isTaken;
    };
    for (auto const& [name, text, isTaken] :
         {Case{"First frame", "20", true}, Case{"Last frame", "10", false},
          Case{"Last frame", "20+30", true}, Case{"Frames a second", "0", false},
          Case{"Frames a second", "25", true}}) {
        auto const fields = panel.findChildren<NumberField*>();
        auto const field = std::find_if(fields.begin(), fields.end(), [&](NumberField* one) {
            return one->accessibleName() == name;
        });
        ASSERT_NE(field, fields.end());
        (*field)->setFocus();
        (*field)->selectAll();
        QTest::keyClicks(*field, text);
        QTest::keyClick(*field, Qt::Key_Return);
        EXPECT_EQ((*field)->toolTip().isEmpty(), isTaken) << name << text;
    }
    QTest::mouseClick(&ruler, Qt::LeftButton, {}, scaleAt(50));
    EXPECT_EQ(time(), 50);
}

TEST_F(TimePanelTest, SpacePlaysFramesWithTheirLookAndStopsAtOnce)
{
    writeShot({1, 2, 3, 5, 6});
    open(nameOf(1));
    setKeys({{1, 0}, {6, 5}});
    std::vector<double> shown;
    QObject::connect(window.findChild<PicturePanel*>(), &PicturePanel::imageShown, &window,
                     [&](double at) {
                         double const before = shown.empty() ? 1 : shown.back();
                         if (panel.getPlayer().isPlaying() && at != before) {
                             shown.push_back(at);
                         }
                     });
    ruler.setFocus();
    QTest::keyClick(&ruler, Qt::Key_Space);
    EXPECT_TRUE(panel.getPlayer().isPlaying());
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown.size() > 7; }, longestPlay));
    QTest::keyClick(&window.getPicture(), Qt::Key_Space);
    EXPECT_FALSE(panel.getPlayer().isPlaying());
    EXPECT_EQ(std::vector(shown.begin(), shown.begin() + 6),
              (std::vector<double>{2, 3, 5, 6, 1, 2}));
    double const stopped = time();
    auto const isStill = [this] {
        auto const timers = window.findChildren<QTimer*>();
        return std::none_of(timers.begin(), timers.end(),
                            [](QTimer const* timer) { return timer->isActive(); });
    };
    EXPECT_TRUE(QTest::qWaitFor(isStill, longestPlay));
    EXPECT_EQ(time(), stopped);
}
