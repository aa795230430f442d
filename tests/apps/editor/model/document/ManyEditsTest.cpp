// Edits of every kind by chance, undone and redone one by one. What a step leads from and to is
// kept as text beside the history.

#include "apps/editor/ShotFixture.h"
#include "editor/model/curves/CurveEditor.h"
#include "editor/model/time/Keys.h"
#include "editor/model/time/Player.h"
#include "runtime/project/Project.h"
#include "session/Failures.h"

#include <random>

namespace {

using NoticeKind = ControllerNotice::Kind;

/// Values as a project holds them. What is shown of the curves leaves no step when it is changed
/// by itself.
struct Look {
    std::string edited;
    std::map<std::string, std::string> shown;

    bool operator==(Look const&) const = default;
};

class ManyEditsTest : public ShotFixture, public testing::WithParamInterface<unsigned> {
protected:
    void SetUp() override
    {
        for (NoticeKind const kind :
             {NoticeKind::CurveDisplay, NoticeKind::ChannelDisplay, NoticeKind::HistoDisplay,
              NoticeKind::HistoZoom, NoticeKind::PlotColor}) {
            shownNames.push_back(document.getLink().getValueName(kind));
        }
        shownNames.push_back(document.getLink().getPlotColorEnabledName());
        for (auto const& slot : document.getNode().getValues()) {
            if (std::ranges::find(shownNames, slot.name) == shownNames.end()) {
                editedNames.push_back(slot.name);
            }
        }
        writeShot({1, 2, 3, 4, 5});
        plate.open(file("shot.####.exr"));
        waitUntil([this] { return !plate.isReading(); });
    }

    // ---- Chance ----

    std::size_t choose(std::size_t count) { return random() % count; }
    bool isHeads() { return choose(2) == 0; }
    float chooseFloat(float low, float high)
    {
        return low + (high - low) * static_cast<float>(choose(1025)) / 1024.0F;
    }
    Keys::Names chooseNames()
    {
        Keys::Names names;
        for (std::size_t count = 1 + choose(6); count > 0; --count) {
            names.push_back(editedNames[choose(editedNames.size())]);
        }
        return names;
    }
    Keys::Times chooseTimes()
    {
        Keys::Times times;
        for (std::size_t count = 1 + choose(3); count > 0; --count) {
            times.insert(static_cast<double>(choose(7)));
        }
        return times;
    }
    CurveEditing::Move chooseMove()
    {
        return {chooseFloat(-0.25F, 0.25F), chooseFloat(-1.0F, 1.0F)};
    }

    // ---- What is done, some of which is refused ----

    void setNumbers() { document.setNumbers("Numbers", chooseNames(), chooseFloat(-1.0F, 3.0F)); }

    /// All that some earlier moment had, in one step.
    void setMany()
    {
        NodeValues values = readProject(texts[choose(texts.size())], document.getNode());
        std::erase_if(values, [this](auto const&) { return isHeads(); });
        document.edit("Many", values);
    }

    void select()
    {
        curves.setChannel(static_cast<int>(choose(4)));
        int const channel = static_cast<int>(choose(3));
        std::size_t const nbKeys = CurveEditing::countKeys(curves.getCurve(channel));
        isHeads() ? curves.select({channel, choose(nbKeys)}) : curves.selectAll();
    }

    void editCurves()
    {
        int const lead = curves.getLead();
        switch (choose(14)) {
        case 0: curves.insertKey(lead, chooseFloat(-0.5F, 1.5F)); break;
        case 1: curves.removeSelected(); break;
        case 2: curves.moveSelected("Move", chooseMove()); break;
        case 3: curves.setHandles(static_cast<CurveEditing::Handles>(choose(5))); break;
        case 4: curves.resetHandles(); break;
        case 5: curves.place(CurveEditor::Coordinate::Y, "y*0.5+0.25"); break;
        case 6: curves.change("Flip", &CurveEditing::flip); break;
        case 7: curves.change("Straight", &CurveEditing::straighten); break;
        case 8: curves.swap(0, 1 + static_cast<int>(choose(2))); break;
        case 9: curves.reset(); break;
        case 10: curves.resetAll(); break;
        case 11: curves.paste(curves.copy(), CurveEditor::Target::All); break;
        case 12: curves.paste("0,0 0.25,0.5 1,1", CurveEditor::Target::Edited); break;
        default: curves.put("Preset", {curves.getCurve(2), curves.getCurve(0), curves.getCurve(1)});
        }
    }

    void dragCurves()
    {
        bool const isNew = isHeads();
        isNew ? curves.beginDragOfNew(curves.getLead(), chooseFloat(0.0F, 1.0F))
              : curves.beginDrag("Drag");
        bool const isHandle = !isNew && curves.getOnlyKey().has_value();
        for (int move = 0; move < 3; ++move) {
            if (isHandle) {
                curves.dragHandle(CurveEditing::Side::Outgoing, chooseFloat(0.0F, 0.25F),
                                  chooseFloat(-0.5F, 0.5F), CurveEditor::Other::Follows);
            } else {
                curves.dragSelected(chooseMove());
            }
        }
        isHeads() ? curves.endDrag() : curves.abandonDrag();
    }

    void dragNumbers()
    {
        Keys::Names const names = chooseNames();
        document.beginDrag("Drag numbers");
        for (int move = 0; move < 3; ++move) {
            document.setNumbers("Within", names, chooseFloat(0.0F, 2.0F));
        }
        isHeads() ? document.endDrag() : document.abandonDrag();
    }

    void editKeys()
    {
        switch (choose(4)) {
        case 0: keys.remove({}, chooseTimes()); break;
        case 1:
            keys.copy({}, chooseTimes());
            if (keys.canPaste()) {
                keys.paste();
            }
            break;
        case 2:
            keys.beginDrag({}, chooseTimes(), isHeads() ? Keys::Drag::Move : Keys::Drag::Copy);
            keys.drag(1.0);
            keys.drag(static_cast<double>(choose(4)));
            isHeads() ? document.endDrag() : document.abandonDrag();
            break;
        default: keys.toggle("some", chooseNames());
        }
    }

    void load()
    {
        std::string const& text = texts[choose(texts.size())];
        switch (choose(4)) {
        case 0: document.beginProject(); break;
        case 1: document.recoverProject(text, file("left.json"), "as known"); break;
        default: saveBytes(file("other.json"), text); document.openProject(file("other.json"));
        }
    }

    /// These leave no step.
    void save() { document.saveProject(file(isHeads() ? "one.json" : "two.json")); }
    void showOtherwise()
    {
        CurveDisplay display = readCurveDisplay(document.getLink());
        display.channel = static_cast<int>(choose(4));
        display.hasBoth = isHeads();
        display.histogram = static_cast<CurveDisplay::Histogram>(choose(4));
        display.histogramZoom = 1.0 + static_cast<double>(choose(3));
        writeCurveDisplay(document, display);
        document.getLink().setViewPan({chooseFloat(0.0F, 1.0F), 0.5F});
        document.getLink().setPlotColor({chooseFloat(0.0F, 1.0F), 0.5F, 0.25F});
    }
    void goToFrame() { timeline.goTo(static_cast<double>(1 + choose(5))); }
    void play()
    {
        player.play(isHeads() ? 1 : -1);
        for (int frame = 0; frame < 3; ++frame) {
            now += std::exchange(asked, std::chrono::milliseconds(0));
            player.wake();
            waitUntil([this] { return !plate.isReading(); });
            player.takeShown(timeline.getTime());
        }
        player.stop();
    }

    struct Action {
        char const* name;
        void (ManyEditsTest::*act)();
        unsigned weight;
    };
    static constexpr Action actions[] = {
        {"numbers", &ManyEditsTest::setNumbers, 20},
        {"many at once", &ManyEditsTest::setMany, 3},
        {"curves", &ManyEditsTest::editCurves, 30},
        {"drag in the curves", &ManyEditsTest::dragCurves, 10},
        {"drag of numbers", &ManyEditsTest::dragNumbers, 10},
        {"keys", &ManyEditsTest::editKeys, 15},
        {"load", &ManyEditsTest::load, 2},
        {"save", &ManyEditsTest::save, 2},
        {"display", &ManyEditsTest::showOtherwise, 4},
        {"frame", &ManyEditsTest::goToFrame, 4},
        {"play", &ManyEditsTest::play, 1},
    };
    Action const& chooseAction()
    {
        unsigned sum = 0;
        for (Action const& action : actions) {
            sum += action.weight;
        }
        auto left = static_cast<unsigned>(choose(sum));
        Action const* action = actions;
        while (left >= action->weight) {
            left -= (action++)->weight;
        }
        return *action;
    }

    // ---- What has to come of it ----

    Look look() const
    {
        Look now{writeProject(document.getNode(), editedNames), {}};
        for (std::string const& name : shownNames) {
            now.shown.emplace(name, writeProject(document.getNode(), {name}));
        }
        return now;
    }

    void act(Action const& action)
    {
        select(); // stored with what is shown
        Look const before = look();
        std::uint64_t const lastStep = history().getHistoryState().lastStep;
        try {
            (this->*action.act)();
        } catch (std::exception const&) { // refused
            if (document.isDragging()) {
                document.abandonDrag();
            }
        }
        Look const after = look();
        if (history().getHistoryState().lastStep != lastStep) {
            steps.resize(nbDone);
            steps.push_back({before, after});
            ++nbDone;
        } else {
            ASSERT_EQ(before.edited, after.edited) << "changed without a step";
        }
        ASSERT_EQ(history().getNbCommands(), steps.size());
    }

    /// Back or on by a step: values are as they were there. What is shown is as it is now, unless
    /// the step has changed it; where one is and looks stays.
    void go(bool isBack)
    {
        auto const& [from, to] = steps[isBack ? nbDone - 1 : nbDone];
        Look expected = look();
        expected.edited = (isBack ? from : to).edited;
        for (std::string const& name : shownNames) {
            if (from.shown.at(name) != to.shown.at(name)) {
                expected.shown[name] = (isBack ? from : to).shown.at(name);
            }
        }
        double const time = document.getTime();
        auto const pan = document.getLink().getViewPan();
        isBack ? history().undo() : history().redo();
        isBack ? --nbDone : ++nbDone;
        Look const got = look();
        ASSERT_EQ(got.edited, expected.edited);
        ASSERT_EQ(got.shown, expected.shown);
        ASSERT_EQ(document.getTime(), time);
        ASSERT_EQ(document.getLink().getViewPan(), pan);
    }

    HostCommandStack& history() { return document.getHistory(); }

    struct Step {
        Look before;
        Look after;
    };
    static constexpr int nbActions = 1000;
    std::mt19937 random{GetParam()};
    Document document;
    Plate plate{1};
    Timeline timeline{document, plate};
    CurveEditor curves{document};
    Keys keys{document};
    Player::Clock::time_point now{};
    std::chrono::milliseconds asked{0};
    Player player{
        timeline, document, plate, {[this] { return now; }, [this](auto time) { asked = time; }}};
    std::vector<std::string> shownNames;
    std::vector<std::string> editedNames;
    std::vector<std::string> texts{writeProject(document.getNode())}; ///< of earlier moments
    std::vector<Step> steps;
    std::size_t nbDone = 0;
};

} // namespace

TEST_P(ManyEditsTest, AThousandAreUndoneOneByOneAndRedone)
{
    Look const begin = look();
    std::set<std::string> stepsOf;
    for (int number = 0; number < nbActions; ++number) {
        Action const& action = chooseAction();
        SCOPED_TRACE("seed " + std::to_string(GetParam()) + ", action " + std::to_string(number) +
                     ": " + action.name);
        std::size_t const before = nbDone;
        act(action);
        if (nbDone != before) {
            stepsOf.insert(action.name);
        }
        for (std::size_t back = number % 25 == 0 ? choose(6) : 0; back > 0 && nbDone > 0; --back) {
            go(true);
        }
        for (std::size_t on = choose(4); on > 0 && nbDone < steps.size(); --on) {
            go(false);
        }
        if (HasFatalFailure()) {
            return;
        }
        if (number % 100 == 50) {
            texts.push_back(writeProject(document.getNode()));
        }
    }
    EXPECT_EQ(stepsOf.size(), 7U) << "of all kinds that leave some";
    EXPECT_GT(nbDone, 400U);
    while (nbDone < steps.size()) {
        ASSERT_NO_FATAL_FAILURE(go(false));
    }
    Look const end = look();
    for (bool const isBack : {true, false}) {
        while (isBack ? nbDone > 0 : nbDone < steps.size()) {
            SCOPED_TRACE("seed " + std::to_string(GetParam()) + (isBack ? ", back" : ", on") +
                         " at step " + std::to_string(nbDone));
            ASSERT_NO_FATAL_FAILURE(go(isBack));
        }
        EXPECT_EQ(history().canUndo(), !isBack);
        EXPECT_EQ(history().canRedo(), isBack);
        EXPECT_EQ(look().edited, isBack ? begin.edited : end.edited);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ManyEditsTest, testing::Values(1U, 2U, 3U, 4U));
