// The curves offscreen, driven by mouse and keys.

#include "editor/view/curves/CurvePanel.h"

#include "editor/model/curves/CurveHints.h"
#include "editor/view/curves/KeyBar.h"
#include "editor/view/curves/OffsetDialog.h"
#include "editor/view/window/Theme.h"
#include "runtime/curves/CurveText.h"
#include "runtime/project/Project.h"

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>
#include <gtest/gtest.h>

namespace {

using CurveEditing::Handles;
using CurveEditing::Selection;
using CurveEditing::Side;

class CurvePanelTest : public testing::Test {
protected:
    CurvePanelTest()
    {
        panel.resize(430, 420);
        panel.show();
        graph.setFocus();
    }
    ~CurvePanelTest() noexcept override = default;

    void send(QEvent::Type type, QPointF place, Qt::MouseButton button, Qt::KeyboardModifiers keys)
    {
        bool const isMove = type == QEvent::MouseMove; // QTest's own moves know of no buttons
        QMouseEvent event(type, place, graph.mapToGlobal(place), isMove ? Qt::NoButton : button,
                          button, keys);
        QCoreApplication::sendEvent(&graph, &event);
    }
    void press(QPoint place, Qt::KeyboardModifiers keys = {})
    {
        QTest::mousePress(&graph, Qt::LeftButton, keys, place);
    }
    void move(QPoint from, QPoint to, Qt::MouseButton button = Qt::LeftButton,
              Qt::KeyboardModifiers keys = {})
    {
        for (int step = 1; step <= 4; ++step) {
            send(QEvent::MouseMove, QPointF(from + (to - from) * step / 4), button, keys);
        }
    }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers keys = {})
    {
        press(from, keys);
        move(from, to, Qt::LeftButton, keys);
        QTest::mouseRelease(&graph, Qt::LeftButton, keys, to);
    }
    void type(Qt::Key key, Qt::KeyboardModifiers keys = {}) { QTest::keyClick(&graph, key, keys); }
    void turn(QPoint place, QPoint angle, Qt::KeyboardModifiers keys = {})
    {
        QWheelEvent event(QPointF(place), graph.mapToGlobal(QPointF(place)), {}, angle,
                          Qt::NoButton, keys, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&graph, &event);
    }
    QPoint at(float x, float y) const { return graph.toWidget({x, y}).toPoint(); }
    QPoint atKey(std::size_t key, int channel = 0) const
    {
        return graph.toWidget(CurveEditing::getKey(document.getCurve(channel), key)).toPoint();
    }
    GePoint2<float> key(std::size_t index, int channel = 0) const
    {
        return CurveEditing::getKey(document.getCurve(channel), index);
    }
    std::size_t countKeys(int channel = 0) const { return document.getCurve(channel).size() / 3; }
    std::size_t countSteps() const { return document.getHistory().getNbCommands(); }
    void undoAll()
    {
        while (document.getHistory().canUndo()) {
            document.getHistory().undo();
        }
    }
    KeyField& field(int index) { return *panel.findChildren<KeyField*>()[index]; }
    void enter(KeyField& number, char const* text)
    {
        number.setFocus();
        number.selectAll();
        QTest::keyClicks(&number, text);
        QTest::keyClick(&number, Qt::Key_Return);
    }
    void trigger(char const* text)
    {
        for (QAction* const action : graph.actions()) {
            if (action->text().remove('&') == text) {
                action->trigger();
                return;
            }
        }
        FAIL() << "no action " << text;
    }
    void chooseChannel(char const* name)
    {
        for (QToolButton* const button : panel.findChildren<QToolButton*>()) {
            if (button->text() == name) {
                QTest::mouseClick(button, Qt::LeftButton);
            }
        }
    }

    Document document;
    Plate plate{1};
    Picks picks{document, plate};
    CurvePanel panel{document, plate, picks};
    CurveWidget& graph = panel.getCurves();
    CurveEditor& editor = panel.getModel().editor;
    QSignalSpy failures{&panel, &CurvePanel::failed};
};

} // namespace

TEST_F(CurvePanelTest, KeyIsAddedOnTheCurveDraggedNudgedTypedAndRemoved)
{
    QTest::mouseClick(&graph, Qt::LeftButton, {}, at(0.25F, 0.25F));
    ASSERT_EQ(countKeys(), 4U);
    EXPECT_NEAR(key(1).y, key(1).x, 1e-5F) << "the curve is the same";
    QPoint const place = atKey(1);
    drag(place, place + QPoint(10, -60));
    EXPECT_EQ(countSteps(), 2U) << "one for the drag";
    EXPECT_EQ(atKey(1), place + QPoint(10, -60));
    EXPECT_TRUE(editor.areAlike());
    float const dragged = key(1).y;
    type(Qt::Key_Up, Qt::ShiftModifier);
    type(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_NEAR(key(1).y, dragged + 0.0505F, 1e-6F);
    enter(field(0), "0.1+0.2");
    EXPECT_EQ(key(1).x, 0.3F);
    enter(field(1), "0.18*2");
    EXPECT_EQ(key(1).y, 0.36F);
    enter(field(0), "2");
    EXPECT_TRUE(field(0).toolTip().contains("x is from 0 to 0.5")) << "refused in place";
    EXPECT_EQ(failures.count(), 1) << "and said";
    EXPECT_EQ(key(1).x, 0.3F);
    graph.setFocus();
    type(Qt::Key_Delete);
    EXPECT_EQ(countKeys(), 3U);
    undoAll();
    EXPECT_EQ(document.getCurve(0), document.getCurve(1));
    EXPECT_EQ(key(1), (GePoint2<float>{0.5F, 0.5F}));
}

TEST_F(CurvePanelTest, ShiftKeepsToOneAxisAndEscapeTakesBack)
{
    QPoint const place = atKey(1);
    drag(place, place + QPoint(6, -50), Qt::ShiftModifier);
    EXPECT_EQ(key(1).x, 0.5F);
    EXPECT_EQ(atKey(1), place + QPoint(0, -50));
    CurvePoints const before = document.getCurve(0);
    press(atKey(1));
    move(atKey(1), atKey(1) + QPoint(30, 40));
    EXPECT_NE(document.getCurve(0), before);
    type(Qt::Key_Escape);
    EXPECT_EQ(document.getCurve(0), before);
    move(atKey(1), atKey(1) + QPoint(30, 40)); // the button is still down
    QTest::mouseRelease(&graph, Qt::LeftButton, {}, atKey(1));
    EXPECT_EQ(document.getCurve(0), before);
    EXPECT_EQ(countSteps(), 1U);
}

TEST_F(CurvePanelTest, SelectedKeysMoveTogetherOnEitherAxis)
{
    for (CurveAxis const axis : {CurveAxis::Linear, CurveAxis::Stops}) {
        type(Qt::Key_S); // stops first, then not
        ASSERT_NE(panel.getModel().getDisplay().axis, axis);
        CurvePoints const before = document.getCurve(0);
        // A band around the last two keys.
        drag(at(0.4F, 0.95F) - QPoint(0, 20), at(1.0F, 0.35F) + QPoint(10, 0));
        ASSERT_EQ(editor.getSelection(0), (Selection{1, 2}));
        EXPECT_EQ(editor.getSelection(2), (Selection{1, 2}));
        drag(atKey(1), atKey(1) + QPoint(-9, 20));
        CurvePoints const after = document.getCurve(0);
        EXPECT_EQ(after[1], before[1]);
        EXPECT_LT(after[4].y, before[4].y - 0.05F);
        EXPECT_NEAR(after[7].y - before[7].y, after[4].y - before[4].y, 1e-6F);
        if (axis == CurveAxis::Linear) { // which shows stops now
            EXPECT_NEAR(after[7].x / before[7].x, after[4].x / before[4].x, 1e-6F);
        } else {
            EXPECT_NEAR(after[7].x - before[7].x, after[4].x - before[4].x, 1e-6F);
        }
        QTest::mouseClick(&graph, Qt::LeftButton, Qt::ControlModifier, atKey(2));
        EXPECT_EQ(editor.getSelection(0), Selection{1});
        EXPECT_EQ(editor.getSelection(1), Selection{1});
        type(Qt::Key_A, Qt::ControlModifier);
        EXPECT_EQ(editor.countSelected(), 3U);
        document.getLink().resetCurves();
    }
}

TEST_F(CurvePanelTest, OneChannelOrTheSameChangeToEach)
{
    chooseChannel("G");
    EXPECT_EQ(document.getNumber("Channel Display"), 1.0) << "stored with the node";
    QTest::mouseClick(&graph, Qt::LeftButton, {}, at(0.25F, 0.25F));
    drag(atKey(1, 1), atKey(1, 1) - QPoint(0, 40));
    EXPECT_EQ(countKeys(0), 3U);
    EXPECT_EQ(countKeys(1), 4U);
    chooseChannel("All");
    GePoint2<float> const green = key(1, 1);
    drag(atKey(1, 1), atKey(1, 1) - QPoint(0, 25));
    float const moved = key(1, 1).y - green.y;
    EXPECT_GT(moved, 0.05F);
    EXPECT_NEAR(key(1, 2).y, green.x + moved, 1e-4F) << "on the line before";
    drag(atKey(3, 1), atKey(3, 1) + QPoint(0, 15));
    EXPECT_EQ(key(3, 0).y, key(3, 1).y);
}

TEST_F(CurvePanelTest, HandlesFollowBreakAndAreSetReset)
{
    QTest::mouseClick(&graph, Qt::LeftButton, {}, atKey(1));
    auto const handle = [&](Side side) {
        return CurveEditing::getHandle(document.getCurve(0), 1, side);
    };
    auto const place = [&](Side side) { return graph.toWidget(handle(side)).toPoint(); };
    drag(place(Side::Outgoing), place(Side::Outgoing) + QPoint(0, 40));
    EXPECT_EQ(editor.getHandles(), Handles::Smooth);
    GePoint2<float> const incoming = handle(Side::Incoming);
    EXPECT_GT(incoming.y, 0.35F) << "it turns with the other";
    drag(place(Side::Outgoing), place(Side::Outgoing) + QPoint(0, -60), Qt::AltModifier);
    EXPECT_EQ(handle(Side::Incoming), incoming);
    EXPECT_EQ(panel.findChild<QComboBox*>()->currentText(), "Broken");
    QTest::mouseDClick(&graph, Qt::LeftButton, {}, atKey(1));
    EXPECT_NEAR(handle(Side::Incoming).y, 1.0F / 3.0F, 1e-5F) << "as it was";
    trigger("Flat handles");
    EXPECT_EQ(handle(Side::Outgoing).y, 0.5F);
    drag(atKey(1), atKey(1) + QPoint(40, -40), Qt::AltModifier);
    EXPECT_EQ(key(1), (GePoint2<float>{0.5F, 0.5F}));
    EXPECT_EQ(editor.getHandles(), Handles::Mirrored) << "pulled out of the key";
}

TEST_F(CurvePanelTest, HandlesBeyondTheGraphAreHadAtItsEdge)
{
    editor.setChannel(0);
    editor.paste("-1,0 0,0 0.2,0; 0.4,-3 0.5,0.5 0.6,4; 0.9,1 1,1 2,1",
                 CurveEditor::Target::Edited);
    editor.select({0, 1});
    CurveScale const scale = graph.getScale();
    QPointF const place = CurveHits(panel.getModel(), scale).placeHandle({0, 1}, Side::Outgoing);
    ASSERT_TRUE(QRectF(graph.rect()).contains(place));
    float const before = CurveEditing::getHandle(document.getCurve(0), 1, Side::Outgoing).y;
    drag(place.toPoint(), place.toPoint() + QPoint(0, 40));
    float const after = CurveEditing::getHandle(document.getCurve(0), 1, Side::Outgoing).y;
    EXPECT_LT(after, before);
    EXPECT_GT(after, before - 0.5F) << "as far as the hand";
}

TEST_F(CurvePanelTest, CurvesAreCopiedPastedAndReset)
{
    chooseChannel("R");
    graph.setFocus();
    drag(atKey(1), atKey(1) - QPoint(0, 50));
    CurvePoints const red = document.getCurve(0);
    type(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(parseCurve("copied", QGuiApplication::clipboard()->text().toStdString()), red);
    chooseChannel("B");
    graph.setFocus();
    type(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(document.getCurve(2), red);
    EXPECT_NE(document.getCurve(1), red);
    type(Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(editor.areAlike());
    trigger("Flip");
    EXPECT_EQ(document.getCurve(2)[4].y, 1.0F - red[4].y);
    trigger("Offset…");
    auto const fields = panel.findChild<OffsetDialog*>()->findChildren<NumberField*>();
    QTest::keyClicks(fields[1], "0.1+0.15");
    QTest::keyClick(fields[1], Qt::Key_Return);
    EXPECT_EQ(document.getCurve(2)[4].y, 1.25F - red[4].y);
    document.getHistory().undo();
    trigger("Swap red and blue");
    EXPECT_EQ(document.getCurve(2), red);
    trigger("Straight");
    EXPECT_EQ(editor.getHandles(), Handles::Broken) << "nothing is selected";
    trigger("Reset");
    EXPECT_EQ(document.getCurve(2)[4].y, 0.5F);
    EXPECT_NE(document.getCurve(0)[4].y, 0.5F);
    trigger("Reset all");
    EXPECT_EQ(document.getHistory().getUndoLabel(), "Reset Adjusted Curves") << "the tool's step";
    QGuiApplication::clipboard()->setText("0,0 x");
    std::size_t const steps = countSteps();
    type(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(failures.count(), 1);
    EXPECT_TRUE(failures.front().front().toString().contains("the clipboard has no curve"));
    EXPECT_EQ(countSteps(), steps);
    undoAll();
    EXPECT_TRUE(editor.areAlike());
}

TEST_F(CurvePanelTest, WheelZoomsAboutTheCursorAndTheViewStaysWithTheTool)
{
    QPoint const place(150, 100);
    auto const under = [&] {
        CurveScale const scale = graph.getScale();
        return QPointF(scale.toX(place.x()), scale.toY(place.y()));
    };
    QPointF const before = under();
    double const width = graph.getRange().width;
    turn(place, {0, 120});
    turn(place, {0, 15}); // a trackpad's
    EXPECT_LT(graph.getRange().width, width / 1.2);
    EXPECT_NEAR(under().x(), before.x(), 1e-5);
    EXPECT_NEAR(under().y(), before.y(), 1e-5);
    GraphRange const zoomed = graph.getRange();
    turn(place, {0, 120}, Qt::ShiftModifier);
    EXPECT_NEAR(graph.getRange().height, zoomed.height, 1e-6);
    turn(place, {120, 0});
    EXPECT_LT(graph.getRange().left, graph.getRange().left + 1.0);
    QTest::mousePress(&graph, Qt::MiddleButton, {}, place);
    QPointF const gripped = under();
    move(place, place + QPoint(30, 20), Qt::MiddleButton);
    QTest::mouseRelease(&graph, Qt::MiddleButton, {}, place + QPoint(30, 20));
    CurveScale const scale = graph.getScale();
    EXPECT_NEAR(scale.toX(place.x() + 30), gripped.x(), 1e-5);
    EXPECT_NEAR(scale.toY(place.y() + 20), gripped.y(), 1e-5);
    EXPECT_EQ(document.getLink().getViewZoom().x, static_cast<float>(1.0 / graph.getRange().width));
    turn(place, {0, 240}, Qt::AltModifier);
    EXPECT_NEAR(document.getNumber("Histo Zoom"), 1.44, 1e-9);
    EXPECT_EQ(countSteps(), 0U);
    type(Qt::Key_T, Qt::ShiftModifier);
    type(Qt::Key_S);
    CurveDisplay const shown = panel.getModel().getDisplay();
    EXPECT_TRUE(shown.hasBoth);
    std::string const saved = writeProject(document.getNode());
    document.getNode().load({});
    EXPECT_EQ(panel.getModel().getDisplay(), CurveDisplay());
    document.getNode().load(readProject(saved, document.getNode()));
    EXPECT_EQ(panel.getModel().getDisplay(), shown) << "projects keep it";
    type(Qt::Key_F);
    EXPECT_TRUE(QRectF(graph.rect()).contains(atKey(0)));
}

TEST_F(CurvePanelTest, PickStandsOnTheCurveAndMovesWithIt)
{
    document.setNumbers("", {"Linear.Output Level.Max.Red"}, 0.5);
    document.getLink().setPlotColor({0.4F, 0.6F, 5.0F});
    auto const place = [&](int channel) {
        CurveScale const scale = graph.getScale();
        return CurveHits(panel.getModel(), scale)
            .placeMark(panel.getModel().marks.list().front())[static_cast<std::size_t>(channel)];
    };
    // Red goes through the transfer to 0.2 first.
    EXPECT_NEAR(place(0).x(), graph.toWidget({0.2F, 0.2F}).x(), 0.1);
    EXPECT_EQ(graph.grab().toImage().pixelColor(place(1).toPoint()), Theme::channels[1]);
    drag(atKey(1), atKey(1) - QPoint(0, 60));
    EXPECT_LT(place(1).y(), graph.toWidget({0.6F, 0.6F}).y() - 20.0) << "with the curve";
    EXPECT_EQ(graph.grab().toImage().pixelColor(place(1).toPoint()), Theme::channels[1]);
    document.setNumbers("", {"Linear.Output Level.Max.Red"}, 1.0);
    EXPECT_NEAR(place(0).x(), graph.toWidget({0.4F, 0.2F}).x(), 0.1) << "with a parameter";
    QMenu menu;
    panel.addColorActions(menu, {0.4F, 0.6F, 5.0F});
    menu.actions().front()->trigger();
    EXPECT_EQ(key(1, 0).x, 0.4F);
    EXPECT_EQ(key(2, 1).x, 0.6F);
    EXPECT_EQ(key(3, 2).x, 5.0F);
}

TEST_F(CurvePanelTest, WhyCurvesDoNothingIsSaidAndMended)
{
    QPushButton& cure = *panel.findChild<QPushButton*>();
    EXPECT_FALSE(cure.isVisible());
    for (auto const& [name, number] :
         {std::pair("Adjust", 0.0), std::pair("Mix", 0.0), std::pair("Mute", 1.0)}) {
        document.setNumbers("", {name}, number);
        ASSERT_TRUE(cure.isVisible()) << name;
        bool isSaid = false;
        for (QLabel const* const label : panel.findChildren<QLabel*>()) {
            isSaid = isSaid || label->text().contains(name);
        }
        EXPECT_TRUE(isSaid) << name;
        QTest::mouseClick(&cure, Qt::LeftButton);
        EXPECT_FALSE(cure.isVisible()) << name;
        EXPECT_EQ(document.getNumber(name), 1.0 - number);
    }
    editor.paste("0,0 0.001,0.9 0.002,0.1 100,1", CurveEditor::Target::All);
    EXPECT_NE(describeMissedKeys(document).find("misses its key"), std::string::npos);
}

TEST_F(CurvePanelTest, KeysAreAddedAndHandlesMovedByTheKeyboard)
{
    auto const handle = [this](Side side) {
        return CurveEditing::getHandle(document.getCurve(0), 1, side);
    };
    type(Qt::Key_Tab);
    type(Qt::Key_Insert);
    ASSERT_EQ(countKeys(), 4U);
    EXPECT_EQ(key(1).x, 0.25F);
    EXPECT_EQ(editor.getSelection(0), Selection{1});
    auto const before = document.getCurve(0);
    struct Case {
        Qt::KeyboardModifiers keys;
        Side side;
    };
    for (auto const& [keys, side] : {Case{Qt::AltModifier, Side::Outgoing},
                                     Case{Qt::AltModifier | Qt::ShiftModifier, Side::Incoming}}) {
        auto const from = handle(side);
        type(Qt::Key_Up, keys);
        type(Qt::Key_Left, keys);
        EXPECT_FLOAT_EQ(handle(side).y, from.y + 0.005F);
        EXPECT_FLOAT_EQ(handle(side).x, from.x - 0.005F);
        EXPECT_EQ(key(1).x, 0.25F);
        document.getHistory().undo();
        document.getHistory().undo();
        EXPECT_EQ(document.getCurve(0), before);
    }
}

TEST_F(CurvePanelTest, KeysAreReachedByTabAndDescribedUnderTheCursor)
{
    QSignalSpy pointed(&graph, &CurveWidget::pointed);
    type(Qt::Key_Tab);
    EXPECT_EQ(editor.getSelection(0), Selection{0});
    type(Qt::Key_Tab);
    type(Qt::Key_Tab);
    EXPECT_EQ(editor.getSelection(0), Selection{2});
    type(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(editor.getSelection(0), Selection{1});
    send(QEvent::MouseMove, atKey(1), Qt::NoButton, {});
    QString const before = pointed.last().front().toString();
    EXPECT_TRUE(before.contains("key 2 of 3"));
    press(atKey(1));
    move(atKey(1), atKey(1) + QPoint(0, 30));
    EXPECT_NE(pointed.last().front().toString(), before);
    type(Qt::Key_Escape);
    send(QEvent::MouseMove, atKey(1), Qt::NoButton, {});
    type(Qt::Key_Up);
    EXPECT_TRUE(pointed.last().front().toString().contains("y 0.505"));
    document.getHistory().undo();
    EXPECT_EQ(pointed.last().front().toString(), before);
    EXPECT_EQ(graph.cursor().shape(), Qt::SizeAllCursor);
    send(QEvent::MouseMove, at(0.25F, 0.25F), Qt::NoButton, {});
    EXPECT_EQ(graph.cursor().shape(), Qt::PointingHandCursor);
    send(QEvent::MouseMove, at(0.25F, 0.75F), Qt::NoButton, {});
    EXPECT_TRUE(pointed.last().front().toString().contains(QString::fromUtf8(" → ")));
    EXPECT_EQ(graph.cursor().shape(), Qt::ArrowCursor);
}
