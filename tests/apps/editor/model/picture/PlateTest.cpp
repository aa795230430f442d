// Plates of real files, read aside; what is told comes by events.

#include "editor/model/picture/Plate.h"

#include "apps/editor/ShotFixture.h"
#include "callbacks/CbFunction.h"
#include "shots/ShotError.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class PlateTest : public ShotFixture {
protected:
    PlateTest()
    {
        plate.addHandler(&told);
        plate.addFramesHandler(&framesTold);
    }

    void open(fs::path const& name)
    {
        failure.clear();
        plate.open(name);
        waitUntil([&] { return !plate.isReading(); });
    }
    void show(Frame frame)
    {
        plate.showFrame(frame);
        waitUntil([&] { return !plate.isReading(); });
    }
    /// The number of the frame by its pixels; -1 for no picture.
    int shownNumber() const
    {
        auto const& picture = plate.getPicture();
        return picture == nullptr ? -1 : static_cast<int>(picture->getPixel(1, 1).red * 64.0F);
    }

    Plate plate{2, 5 * frameBytes};
    std::string failure;
    std::size_t mostBytes = 0;
    CbFunction<PlateNotice const> told{[this](PlateNotice const& notice) {
        if (notice.failure) {
            failure = describeFailure(notice.failure).text;
        }
    }};
    CbFunction<Plate const> framesTold{
        [this](Plate const& told) { mostBytes = std::max(mostBytes, told.getHeldBytes()); }};
};

} // namespace

TEST_F(PlateTest, SequenceOpensByPatternOrByOneOfItsFramesAndAStillStaysAStill)
{
    writeShot({1, 2, 4});
    write("still.exr", 32);
    struct Case {
        std::string opened;
        std::string name; ///< "" for a still
        Frame frame;
    };
    for (auto const& [opened, name, frame] :
         {Case{"shot.####.exr", "shot.####.exr", 1}, Case{"shot.%04d.exr", "shot.%04d.exr", 1},
          Case{"shot.@@@@.exr", "shot.@@@@.exr", 1}, Case{"shot.0002.exr", "shot.####.exr", 2},
          Case{"still.exr", "", 0}}) {
        open(file(opened));
        EXPECT_EQ(failure, "");
        ASSERT_EQ(plate.isSequence(), !name.empty()) << opened;
        if (plate.isSequence()) {
            EXPECT_EQ(plate.getName(), file(name));
            EXPECT_EQ(plate.getFrames(), (std::vector<Frame>{1, 2, 4}));
            EXPECT_EQ(plate.getShownFrame(), frame);
            EXPECT_EQ(shownNumber(), frame);
        }
    }
    EXPECT_EQ(plate.getName(), file("still.exr"));
    plate.openStill(file(nameOf(2)));
    waitUntil([&] { return !plate.isReading(); });
    EXPECT_FALSE(plate.isSequence());
    EXPECT_EQ(shownNumber(), 2);
}

TEST_F(PlateTest, WhatCannotBeOpenedLeavesWhatIsThere)
{
    writeShot({1, 2});
    saveBytes(file("shot.0003.exr"), "no picture");
    open(file(nameOf(2)));
    std::uint64_t const opening = plate.getOpening();
    for (char const* const name : {"none.exr", "none.####.exr", "no folder/shot.####.exr",
                                   "shot.0003.exr", "shot.%5d.exr"}) {
        open(file(name));
        EXPECT_NE(failure, "") << name;
        EXPECT_EQ(failure.find('\n'), std::string::npos);
        EXPECT_EQ(shownNumber(), 2) << name;
    }
    EXPECT_EQ(plate.getOpening(), opening);
    EXPECT_EQ(plate.getFile(), file(nameOf(2)));
}

TEST_F(PlateTest, MissingAndUnreadableFramesAreGapsThatSayWhy)
{
    writeShot({1, 2, 3, 6});
    tear(3);
    write(nameOf(5), 5, 50); // another size
    open(file("shot.####.exr"));
    struct Case {
        Frame frame;
        int number;
        std::string gap;
        FrameState state;
    };
    for (Case const& row :
         {Case{4, -1, "frame 4 is missing", FrameState::Missing}, Case{5, 5, "", FrameState::Held},
          Case{3, -1, "shot.0003.exr", FrameState::Unreadable},
          Case{99, -1, "frame 99 is missing", FrameState::Missing},
          Case{2, 2, "", FrameState::Held}}) {
        show(row.frame);
        EXPECT_EQ(shownNumber(), row.number);
        EXPECT_NE(plate.getGap().find(row.gap), std::string::npos) << plate.getGap();
        EXPECT_EQ(plate.getGap().empty(), row.gap.empty());
        EXPECT_EQ(plate.getState(row.frame), row.state) << row.frame;
        EXPECT_EQ(plate.getShownFrame(), row.frame);
    }
    EXPECT_EQ(failure, "");

    // One comes, one that is not held goes.
    writeShot({4});
    show(4);
    EXPECT_EQ(shownNumber(), 4);
    EXPECT_EQ(plate.getFrames(), (std::vector<Frame>{1, 2, 3, 4, 5, 6}));
    plate.setBound(frameBytes);
    waitUntil([&] { return plate.getHeldBytes() <= frameBytes; });
    fs::remove(file(nameOf(6)));
    show(6);
    EXPECT_EQ(shownNumber(), -1);
    EXPECT_EQ(plate.getFrames(), (std::vector<Frame>{1, 2, 3, 4, 5}));
}

TEST_F(PlateTest, FramesAreReadAheadWithinTheBound)
{
    writeShot({1, 2, 3, 4, 5, 6, 7, 8, 9});
    write(nameOf(6), 6, 72);
    open(file("shot.####.exr"));
    for (Frame const frame : {1, 2, 4, 5, 6, 9, 8}) {
        show(frame);
        EXPECT_EQ(shownNumber(), frame);
        EXPECT_LE(plate.getHeldBytes(), plate.getBound());
    }
    waitUntil([&] { // backwards by now
        return plate.getState(7) == FrameState::Held && plate.getState(5) == FrameState::Held;
    });
    EXPECT_LE(mostBytes, plate.getBound());
    EXPECT_GT(mostBytes, 3 * frameBytes);
}

TEST_F(PlateTest, NewestWishIsShownInTheEnd)
{
    writeShot({1, 2, 3, 4, 5, 6, 7, 8, 9});
    plate.open(file(nameOf(1)));
    write("still.exr", 33);
    plate.open(file("still.exr"));
    plate.open(file(nameOf(2)));
    waitUntil([&] { return !plate.isReading(); });
    EXPECT_EQ(shownNumber(), 2);
    for (Frame const frame : {9, 3, 7, 4, 8, 5}) {
        plate.showFrame(frame);
        EvEventManager::getInstance().processEvents();
    }
    waitUntil([&] { return !plate.isReading(); });
    EXPECT_EQ(shownNumber(), 5);
    EXPECT_EQ(plate.getShownFrame(), 5);

    write(nameOf(5), 50);
    std::uint64_t const opening = plate.getOpening();
    plate.reload();
    waitUntil([&] { return !plate.isReading(); });
    EXPECT_EQ(shownNumber(), 50);
    EXPECT_EQ(plate.getOpening(), opening);
    plate.showFrame(6); // and goes while that is read
}
