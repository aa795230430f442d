// Range, steps and play, by a clock of the test's own.

#include "editor/model/time/Player.h"

#include "apps/editor/ShotFixture.h"
#include "session/Failures.h"

#include <set>

namespace {

using Milliseconds = std::chrono::milliseconds;

class PlayerTest : public ShotFixture {
protected:
    void open(std::string const& name)
    {
        plate.open(file(name));
        waitUntil([this] { return !plate.isReading(); });
    }

    /// Plays on: wakes the player when it asks for that, shows what it wants to have shown after
    /// `renderTime`. Returns the frames that were shown.
    std::vector<Frame> run(std::size_t most, Milliseconds renderTime = Milliseconds(0))
    {
        std::vector<Frame> shown;
        while (player.isPlaying() && shown.size() < most) {
            Frame const before = timeline.getFrame();
            now += std::exchange(asked, Milliseconds(0));
            player.wake();
            went.insert(timeline.getFrame());
            waitUntil([this] { return !plate.isReading(); });
            if (player.isPlaying() && plate.getPicture() != nullptr &&
                timeline.getFrame() != before) {
                now += renderTime;
                player.takeShown(timeline.getTime());
                shown.push_back(timeline.getFrame());
            }
        }
        return shown;
    }

    Document document;
    Plate plate{2, 100 * frameBytes};
    Timeline timeline{document, plate};
    Player::Clock::time_point now{};
    Milliseconds asked{0};
    std::set<Frame> went; ///< whether there was something to show or not
    Player player{timeline,
                  document,
                  plate,
                  {[this] { return now; }, [this](Milliseconds time) { asked = time; }}};
};

} // namespace

TEST_F(PlayerTest, SequenceBringsItsRangeAndStepsStayWithinIt)
{
    writeShot({3, 4, 6});
    open(nameOf(4));
    EXPECT_EQ(timeline.getRange(), (FrameRange{3, 6}));
    EXPECT_EQ(timeline.getTime(), 4.0);
    struct Case {
        char const* name;
        std::function<void()> go;
        double time;
    };
    for (auto const& [name, go, time] :
         {Case{"step", [&] { timeline.step(1); }, 5}, Case{"two", [&] { timeline.step(2); }, 6},
          Case{"at the end", [&] { timeline.step(1); }, 6},
          Case{"start", [&] { timeline.goToStart(); }, 3},
          Case{"a fraction", [&] { timeline.goTo(4.6); }, 5},
          Case{"beyond", [&] { timeline.goTo(90); }, 90},
          Case{"back", [&] { timeline.step(1); }, 6},
          Case{"end", [&] { timeline.goToEnd(); }, 6}}) {
        go();
        EXPECT_EQ(timeline.getTime(), time) << name;
    }
    waitUntil([this] { return !plate.isReading(); });
    EXPECT_EQ(plate.getShownFrame(), 6);

    timeline.setRange({4, 5});
    EXPECT_THROW(timeline.setRange({5, 4}), UsageError);
    EXPECT_THROW(timeline.setRange({0, 2'000'000}), UsageError);
    EXPECT_THROW(timeline.setRate(0.0), UsageError);
    EXPECT_EQ(timeline.getRange(), (FrameRange{4, 5}));
    write("still.exr", 1);
    open("still.exr");
    EXPECT_EQ(timeline.getRange(), FrameRange());
    timeline.goTo(2.5);
    EXPECT_EQ(timeline.getTime(), 2.5) << "a still has moments between frames";
}

TEST_F(PlayerTest, PlaysAtItsRateOverMissingAndUnreadableFrames)
{
    writeShot({1, 2, 3, 5, 6});
    tear(3);
    open("shot.####.exr");
    timeline.setRate(10);
    player.play(1);
    Player::Clock::time_point const begun = now;
    EXPECT_EQ(run(6), (std::vector<Frame>{2, 5, 6, 1, 2, 5}));
    EXPECT_EQ(now - begun, Milliseconds(500)) << "the sixth begins after five";
    EXPECT_NEAR(player.getMeasuredRate(), 10.0, 0.01);
    EXPECT_FALSE(player.isSlow());
    EXPECT_FALSE(went.contains(4)) << "what is known to be missing is not tried";

    player.stop();
    player.play(-1);
    EXPECT_EQ(run(4), (std::vector<Frame>{2, 1, 6, 5}));
    EXPECT_EQ(run(5, Milliseconds(250)).size(), 5U);
    EXPECT_TRUE(player.isSlow()) << player.getMeasuredRate();
    EXPECT_NEAR(player.getMeasuredRate(), 4.0, 0.5);

    std::filesystem::remove(file(nameOf(6)));
    plate.reload();
    waitUntil([this] { return !plate.isReading(); });
    timeline.setLooping(false);
    timeline.goToStart();
    player.play(1);
    EXPECT_EQ(run(9), (std::vector<Frame>{2, 5})) << "once";
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(player.getReason(), "");
}

TEST_F(PlayerTest, FramesThatVanishInPlayArePassedOverUntilNoneIsLeft)
{
    writeShot({1, 2, 3, 4, 5, 6});
    plate.setBound(1); // none is kept
    open("shot.####.exr");
    player.play(1);
    EXPECT_EQ(run(2), (std::vector<Frame>{2, 3}));
    for (int const frame : {1, 2, 4, 5}) {
        std::filesystem::remove(file(nameOf(frame)));
    }
    EXPECT_EQ(run(3), (std::vector<Frame>{6, 3, 6}));
    for (int const frame : {3, 6}) {
        std::filesystem::remove(file(nameOf(frame)));
    }
    EXPECT_EQ(run(5), std::vector<Frame>());
    EXPECT_FALSE(player.isPlaying());
    EXPECT_NE(player.getReason(), "");
}

TEST_F(PlayerTest, HandsOnTheMomentStopIt)
{
    write("still.exr", 1);
    open("still.exr"); // the look has its moments
    player.play(1);
    EXPECT_EQ(run(3), (std::vector<Frame>{1, 2, 3}));
    timeline.goTo(7);
    EXPECT_FALSE(player.isPlaying());
    timeline.setLooping(false);
    timeline.goToEnd();
    player.play(1);
    EXPECT_EQ(timeline.getTime(), 0.0) << "from the beginning again";
    player.stop();
    EXPECT_EQ(run(1), std::vector<Frame>());
}
