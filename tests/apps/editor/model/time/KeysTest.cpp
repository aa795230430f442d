#include "editor/model/time/Keys.h"

#include "runtime/values/Keyframes.h"

#include <gtest/gtest.h>

namespace {

std::string const exposure = "EXRDisplay.Exposure.Red";
std::string const mix = "Mix";

class KeysTest : public testing::Test {
protected:
    void setKeys(std::string const& name, std::vector<Keyframe<double>> const& keyframes)
    {
        document.getNode().setValues({{name, Animated<double>(keyframes)}});
    }
    std::vector<Keyframe<double>> keysOf(std::string const& name) const
    {
        auto const state = document.getNode().getValue(name)->getState();
        auto const& animated = std::get<Animated<double>>(*state);
        return animated.isAnimated() ? animated.getKeys() : std::vector<Keyframe<double>>();
    }
    std::size_t countSteps() { return document.getHistory().getNbCommands(); }

    Document document;
    Keys keys{document};
};

using List = std::vector<Keyframe<double>>;

} // namespace

TEST_F(KeysTest, DiamondSetsAndRemovesKeysOfSeveralValuesAtTheMoment)
{
    std::string const curve = document.getLink().getCurveInputName(1);
    Keys::Names const names = {exposure, curve};
    document.setNumbers("", {exposure}, 2.0);
    document.setTime(12);
    EXPECT_EQ(keys.find(names), Keys::Presence::None);
    EXPECT_EQ(keys.find({"GammaLink"}), Keys::Presence::Never);
    std::size_t const before = countSteps();
    keys.toggle("both", names);
    EXPECT_EQ(countSteps(), before + 1);
    EXPECT_EQ(keys.find(names), Keys::Presence::Here);
    EXPECT_EQ(keysOf(exposure), (List{{12, 2}}));
    document.setTime(20);
    EXPECT_EQ(keys.find(names), Keys::Presence::Elsewhere);
    document.setNumbers("", {exposure}, 4.0); // a value at another frame is a key
    EXPECT_EQ(keysOf(exposure), (List{{12, 2}, {20, 4}}));
    EXPECT_EQ(keys.find(names), Keys::Presence::Elsewhere) << "one of the two";
    EXPECT_EQ(keys.find({curve, exposure}), Keys::Presence::Elsewhere);
    keys.toggle("both", names);
    EXPECT_EQ(keys.find(names), Keys::Presence::Here);
    keys.toggle("both", names);
    document.setTime(12);
    keys.toggle("both", names);
    EXPECT_EQ(keys.find(names), Keys::Presence::None);
    EXPECT_EQ(document.getNumber(exposure), 2.0) << "the last key's value stays";
}

TEST_F(KeysTest, KeysAreFoundFromTheMomentOn)
{
    setKeys(exposure, {{2, 0}, {7, 1}});
    setKeys(mix, {{4.5, 0.5}, {7, 1}});
    struct Case {
        double time;
        std::optional<double> before;
        std::optional<double> after;
    };
    for (auto const& [time, before, after] :
         {Case{0, {}, 2}, Case{2, {}, 4.5}, Case{5, 4.5, 7}, Case{7, 4.5, {}}, Case{9, 7, {}}}) {
        document.setTime(time);
        EXPECT_EQ(keys.findNext(-1), before) << time;
        EXPECT_EQ(keys.findNext(1), after) << time;
    }
    EXPECT_EQ(keys.list().at(7), (Keys::Names{exposure, mix}));
    EXPECT_EQ(keys.list({mix}).size(), 2U);
}

TEST_F(KeysTest, SeveralAreMovedAndCopiedByOneDrag)
{
    List const start = {{2, 0}, {4, 1}, {9, 2}};
    setKeys(exposure, start);
    setKeys(mix, {{4, 0.5}});
    std::size_t const before = countSteps();
    keys.beginDrag({}, {2, 4}, Keys::Drag::Move);
    for (double const by : {1.0, 7.0, 5.0}) { // on its way over another key
        keys.drag(by);
    }
    document.endDrag();
    EXPECT_EQ(keysOf(exposure), (List{{7, 0}, {9, 1}})) << "in the place of the one at 9";
    EXPECT_EQ(keysOf(mix), (List{{9, 0.5}}));
    EXPECT_EQ(countSteps(), before + 1);
    document.getHistory().undo();
    EXPECT_EQ(keysOf(exposure), start);

    keys.beginDrag({exposure}, {4}, Keys::Drag::Copy);
    keys.drag(1.0);
    keys.drag(2.0);
    document.endDrag();
    EXPECT_EQ(keysOf(exposure), (List{{2, 0}, {4, 1}, {6, 1}, {9, 2}}));
    EXPECT_EQ(keysOf(mix), (List{{4, 0.5}}));

    keys.beginDrag({}, {2, 4, 6, 9}, Keys::Drag::Move);
    keys.drag(-3.0);
    document.abandonDrag();
    EXPECT_EQ(keysOf(exposure), (List{{2, 0}, {4, 1}, {6, 1}, {9, 2}}));
}

TEST_F(KeysTest, SeveralAreRemovedAndPasted)
{
    setKeys(exposure, {{2, 0}, {4, 1}, {9, 2}});
    setKeys(mix, {{4, 0.5}});
    EXPECT_FALSE(keys.canPaste());
    keys.copy({}, {4, 9});
    document.setTime(20);
    EXPECT_EQ(keys.paste(), (Keys::Times{20, 25}));
    EXPECT_EQ(keysOf(exposure), (List{{2, 0}, {4, 1}, {9, 2}, {20, 1}, {25, 2}}));
    EXPECT_EQ(keysOf(mix), (List{{4, 0.5}, {20, 0.5}}));
    document.setTime(10);
    keys.remove({}, {4, 20, 3});
    EXPECT_EQ(keysOf(exposure), (List{{2, 0}, {9, 2}, {25, 2}}));
    EXPECT_EQ(keysOf(mix), List());
    EXPECT_EQ(document.getNumber(mix), 0.5);
    document.getHistory().undo();
    EXPECT_EQ(keysOf(mix).size(), 2U);

    // A curve that has become another one does not take its old keys back.
    std::string const curve = document.getLink().getCurveInputName(0);
    keys.toggle("curve", {curve});
    keys.copy({curve}, {10});
    auto const state = document.getNode().getValue(curve)->getState();
    document.edit(
        "", {{curve, withEachValue(std::get<Animated<CurvePoints>>(*state), [](CurvePoints points) {
                  points.insert(points.end(), 3, {2.0F, 1.0F});
                  return points;
              })}});
    document.setTime(30);
    EXPECT_THROW(keys.paste(), ValueError);
}
