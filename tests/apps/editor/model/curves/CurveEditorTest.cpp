// Curves of a document, edited without a window.

#include "editor/model/curves/CurveEditor.h"

#include "runtime/curves/CurveText.h"

#include <gtest/gtest.h>

namespace {

using CurveEditing::Handles;
using CurveEditing::Selection;
using CurveEditing::Side;
using Coordinate = CurveEditor::Coordinate;
using Target = CurveEditor::Target;

char const* const names[] = {"Adjust Curve.Red", "Adjust Curve.Green", "Adjust Curve.Blue"};

class CurveEditorTest : public testing::Test {
protected:
    void set(int channel, char const* text)
    {
        document.edit("", {{names[channel], parseAnimatedCurve("curve", text)}});
    }
    GePoint2<float> key(int channel, std::size_t index) const
    {
        return CurveEditing::getKey(editor.getCurve(channel), index);
    }
    std::size_t countKeys(int channel) const
    {
        return CurveEditing::countKeys(editor.getCurve(channel));
    }
    float yAt(int channel, float x) const
    {
        return document.getLink().mapThroughCurve(editor.getCurve(channel), {&x, 1}).front();
    }
    HostCommandStack& history() { return document.getHistory(); }

    Document document;
    CurveEditor editor{document};
};

TEST_F(CurveEditorTest, AllGetsTheSameChangeOnEachCurve)
{
    set(0, "0,0 0.25,0.5 0.75,0.8 1,1");
    set(1, "0,0.1 0.75,0.3 1,0.9");
    float const blue = yAt(2, 0.25F);
    editor.select({0, 1});
    EXPECT_EQ(editor.getSelection(1), Selection{}) << "no key at that x";
    std::size_t const steps = history().getNbCommands();
    editor.moveSelected("Move", {0.0F, 0.125F});
    EXPECT_EQ(history().getNbCommands(), steps + 1);
    EXPECT_FLOAT_EQ(key(0, 1).y, 0.625F);
    EXPECT_EQ(countKeys(1), 4U) << "a key where there was none";
    EXPECT_EQ(key(1, 1).x, 0.25F);
    EXPECT_NEAR(key(2, 1).y, blue + 0.125F, 1e-5F);
    editor.select({1, 2});
    EXPECT_EQ(editor.getSelection(0), Selection{2}) << "the key at its side";
    EXPECT_EQ(editor.getLead(), 1);
    // What stops one stops all: red's next key is at 1, blue's too, green's neighbour is nearer.
    set(1, "0,0.1 0.25,0.2 0.75,0.3 0.8,0.4 1,0.9");
    editor.moveSelected("Move", {0.2F});
    for (int const channel : {0, 1}) {
        EXPECT_FLOAT_EQ(key(channel, 2).x, 0.8F) << channel;
    }
}

TEST_F(CurveEditorTest, OneChannelLeavesTheOthers)
{
    editor.setChannel(1);
    CurvePoints const before = editor.getCurve(0);
    editor.insertKey(1, 0.3F);
    editor.moveSelected("Move", {0.0F, 0.2F});
    editor.change("Flip", &CurveEditing::flip);
    editor.removeSelected();
    EXPECT_EQ(editor.getCurve(0), before);
    EXPECT_EQ(editor.getCurve(2), before);
    editor.reset();
    EXPECT_EQ(editor.getCurve(1), before);
    EXPECT_EQ(history().getUndoLabel(), "Reset curve");
}

TEST_F(CurveEditorTest, SelectionStaysWithItsKeys)
{
    set(0, "0,0 0.25,0.5 0.75,0.8 1,1");
    editor.setChannel(0);
    editor.select({0, 2});
    editor.insertKey(0, 0.5F);
    EXPECT_EQ(editor.getSelection(0), Selection{2});
    editor.toggle({0, 3});
    EXPECT_EQ(editor.getSelection(0), (Selection{2, 3}));
    history().undo(); // of the key at 0.5
    EXPECT_EQ(editor.getSelection(0), Selection{2}) << "at 0.75 as before";
    history().redo();
    EXPECT_EQ(editor.getSelection(0), Selection{3});
    EXPECT_TRUE(editor.selectNext());
    EXPECT_FALSE(editor.selectNext()) << "behind the last";
    document.getLink().resetCurves();
    EXPECT_EQ(editor.getSelection(0), Selection{2}) << "the key at 1";
}

TEST_F(CurveEditorTest, TypedSumsKnowTheKeysOwnNumbers)
{
    set(0, "0,0 0.25,0.5 0.5,0.8 1,1");
    editor.setChannel(0);
    editor.select({0, 1});
    struct Case {
        Coordinate coordinate;
        char const* text;
        char const* refusal; ///< a part of it; empty where it is taken
        float x, y;          ///< of key 1 afterwards
    };
    for (auto const& [coordinate, text, refusal, x, y] :
         {Case{Coordinate::Y, "0.18*2", "", 0.25F, 0.36F},
          Case{Coordinate::Y, "y/2", "", 0.25F, 0.18F},
          Case{Coordinate::X, "x+0.05", "", 0.3F, 0.18F},
          Case{Coordinate::X, "0.6", "x is from 0 to 0.5", 0.3F, 0.18F},
          Case{Coordinate::Y, "much", "no number", 0.3F, 0.18F},
          Case{Coordinate::Y, "1e300", "no number", 0.3F, 0.18F}}) {
        std::string const said = editor.place(coordinate, text);
        EXPECT_EQ(said.empty(), *refusal == '\0') << text << said;
        EXPECT_NE(said.find(refusal), std::string::npos) << said;
        EXPECT_EQ(key(0, 1), (GePoint2<float>{x, y})) << text;
    }
    editor.toggle({0, 2});
    EXPECT_EQ(editor.place(Coordinate::Y, "0.4"), "") << "all at one height";
    EXPECT_EQ(key(0, 2).y, 0.4F);
    EXPECT_NE(editor.place(Coordinate::X, "0.4"), "");
    EXPECT_NE(editor.place(Coordinate::X, "1-x"), "") << "they would change places";
    EXPECT_EQ(editor.place(Coordinate::X, "x*1.5"), "");
    EXPECT_FLOAT_EQ(key(0, 2).x, 0.75F);
}

TEST_F(CurveEditorTest, DragIsOneStepAndCanBeTakenBack)
{
    CurvePoints const before = editor.getCurve(0);
    editor.beginDragOfNew(0, 0.25F);
    for (float const y : {0.1F, 0.2F, 0.3F}) {
        editor.dragSelected({0.0F, y});
    }
    editor.endDrag();
    EXPECT_FLOAT_EQ(key(2, 1).y, 0.55F);
    ASSERT_EQ(history().getNbCommands(), 1U);
    EXPECT_EQ(history().getUndoLabel(), "Add key");
    CurvePoints const added = editor.getCurve(0);
    editor.beginDrag("Move handle");
    editor.dragHandle(Side::Outgoing, 0.1F, 0.4F, CurveEditor::Other::Stays);
    EXPECT_EQ(editor.getHandles(), Handles::Broken);
    editor.abandonDrag();
    EXPECT_EQ(editor.getCurve(1), added);
    history().undo();
    EXPECT_EQ(editor.getCurve(0), before);
}

TEST_F(CurveEditorTest, BrokenHandlesMoveAloneUntilAnotherKeyIsSelected)
{
    set(0, "0,0 0.5,0.5 1,1");
    editor.setChannel(0);
    editor.select({0, 1});
    editor.setHandles(Handles::Smooth);
    editor.setHandles(Handles::Broken);
    EXPECT_EQ(editor.getHandles(), Handles::Broken);
    GePoint2<float> const incoming = CurveEditing::getHandle(editor.getCurve(0), 1, Side::Incoming);
    editor.beginDrag("Move handle");
    editor.dragHandle(Side::Outgoing, 0.0F, 0.2F, CurveEditor::Other::Follows);
    editor.endDrag();
    EXPECT_EQ(CurveEditing::getHandle(editor.getCurve(0), 1, Side::Incoming), incoming);
    editor.resetHandles();
    editor.select({0, 1});
    EXPECT_NE(editor.getHandles(), Handles::Broken);
}

TEST_F(CurveEditorTest, KeyframesKeepTheirCurvesWhenKeysComeAndGo)
{
    set(0, "0,0 0.5,0.2 1,1 @1 | 0,0 0.5,0.9 1,1 @11");
    editor.setChannel(0);
    document.setTime(6.0);
    float const before = yAt(0, 0.3F);
    editor.insertKey(0, 0.3F);
    EXPECT_NEAR(yAt(0, 0.3F), before, 1e-4F);
    auto const frames = [&] {
        auto const state = document.getNode().getValue(names[0])->getState();
        return std::get<Animated<CurvePoints>>(*state).getKeys();
    };
    ASSERT_EQ(frames().size(), 2U) << "adding makes no keyframe";
    EXPECT_EQ(frames()[1].value.size(), 12U);
    editor.moveSelected("Move", {0.0F, 0.1F});
    EXPECT_EQ(frames().size(), 3U) << "moving does";
    EXPECT_NEAR(yAt(0, 0.3F), before + 0.1F, 1e-4F);
    editor.removeSelected();
    EXPECT_EQ(frames()[2].value.size(), 9U);
    EXPECT_THROW(editor.paste("0,0 1,1", Target::Edited), std::invalid_argument);
}

TEST_F(CurveEditorTest, CopiesAreTextThatPastesAsItWas)
{
    set(0, "0,0 0.25,0.5 1,1");
    set(2, "0,0.5 1,0.5");
    std::string const three = editor.copy();
    std::array const before = {editor.getCurve(0), editor.getCurve(1), editor.getCurve(2)};
    editor.setChannel(0);
    std::string const red = editor.copy();
    EXPECT_EQ(parseCurve("copy", red), before[0]);
    editor.setChannel(1);
    editor.paste(red, Target::Edited);
    EXPECT_EQ(editor.getCurve(1), before[0]);
    EXPECT_EQ(editor.getCurve(2), before[2]);
    editor.paste("0,0 0.5,0.7 1,1", Target::All);
    EXPECT_TRUE(editor.areAlike());
    editor.setChannel(CurveDisplay::allChannels);
    EXPECT_EQ(parseCurve("copy", editor.copy()), editor.getCurve(2)) << "one for the same three";
    editor.paste(three, Target::Edited);
    for (int channel = 0; channel < 3; ++channel) {
        EXPECT_EQ(editor.getCurve(channel), before[static_cast<std::size_t>(channel)]) << channel;
    }
    std::size_t const steps = history().getNbCommands();
    editor.setChannel(1);
    for (char const* const wrong : {"", "hello", "red=0,0 1,1", "0,0"}) {
        EXPECT_THROW(editor.paste(wrong, Target::Edited), ValueError) << wrong;
    }
    EXPECT_EQ(history().getNbCommands(), steps);
}

TEST_F(CurveEditorTest, KeysOfAColourAreEachAtItsOwnPlaceAndMoveTogether)
{
    editor.insertKeys({0.1F, 0.2F, 0.7F});
    editor.moveSelected("Move", {0.0F, 0.1F});
    EXPECT_EQ(countKeys(0), 4U);
    EXPECT_NEAR(key(0, 1).y, 0.2F, 1e-5F);
    EXPECT_NEAR(key(1, 1).y, 0.3F, 1e-5F);
    EXPECT_NEAR(key(2, 2).y, 0.8F, 1e-5F);
}

TEST_F(CurveEditorTest, DisplayIsStoredWithTheNodeAndIsNoStep)
{
    CurveDisplay const shown{1,    true, true, CurveAxis::Stops, CurveDisplay::Histogram::Result,
                             true, 2.5};
    EXPECT_EQ(readCurveDisplay(document.getLink()), CurveDisplay());
    writeCurveDisplay(document, shown);
    EXPECT_EQ(readCurveDisplay(document.getLink()), shown);
    EXPECT_EQ(editor.getChannel(), 1);
    EXPECT_EQ(document.getNumber("Channel Display"), 1.0);
    EXPECT_EQ(document.getNumber("Histo Zoom"), 2.5);
    EXPECT_FALSE(history().canUndo());
    // What other editors may have stored.
    document.edit("", {{"Curve Display", Animated<int>(99)},
                       {"Histo Display", Animated<int>(-1)},
                       {"Channel Display", Animated<int>(17)},
                       {"Histo Zoom", Animated<double>(0.0)}});
    EXPECT_EQ(readCurveDisplay(document.getLink()), CurveDisplay());

    EXPECT_FALSE(readCurveView(document.getLink()).has_value());
    GraphRange const range{-0.5, 0.25, 2.0, 4.0};
    writeCurveView(document.getLink(), range);
    EXPECT_EQ(readCurveView(document.getLink()), range);
}

} // namespace
