// Pictures of a disk that takes as long as it likes.

#include "apps/editor/GatedReading.h"
#include "apps/editor/ShotFixture.h"
#include "editor/model/time/Timeline.h"
#include "runtime/engine/RenderPool.h"

namespace {

class GivenUpReadingTest : public ShotFixture {
protected:
    GivenUpReadingTest()
    {
        plate.addHandler(&told);
        plate.addProgressHandler(&progressed);
        writeShot({1, 2, 3});
        write("still.exr", 32);
        write("slow.exr", 40, wide);
        for (int const frame : {1, 2}) {
            write("slow." + std::to_string(frame) + ".exr", 40 + frame, wide);
        }
    }
    ~GivenUpReadingTest() noexcept override { disk.allowAll(); }

    void open(std::string const& name)
    {
        plate.open(file(name));
        waitUntil([&] { return !plate.isReading(); });
    }
    void waitForDisk()
    {
        waitUntil([&] { return disk.isAwaited(); });
    }
    int shownNumber() const
    {
        auto const& picture = plate.getPicture();
        return picture == nullptr ? -1 : static_cast<int>(picture->getPixel(1, 1).red * 64.0F);
    }

    static constexpr int wide = 8000; ///< four strips
    SlowDisk disk;
    Document document;
    Plate plate{1, std::size_t(1) << 30, disk.makeOpener()};
    Timeline timeline{document, plate};
    int nbCancelled = 0;
    int nbFailed = 0;
    std::vector<double> shares;
    CbFunction<PlateNotice const> told{[this](PlateNotice const& notice) {
        try {
            if (notice.failure) {
                std::rethrow_exception(notice.failure);
            }
        } catch (RenderCancelled const&) {
            ++nbCancelled;
        } catch (...) {
            ++nbFailed;
        }
    }};
    CbFunction<Plate const> progressed{
        [this](Plate const& reading) { shares.push_back(reading.getShare().value_or(-1.0)); }};
};

} // namespace

TEST_F(GivenUpReadingTest, ShareOfWhatIsAwaitedRisesToAllOfIt)
{
    plate.open(file("slow.exr"));
    EXPECT_EQ(shares, std::vector<double>{-1.0}) << "told at once";
    EXPECT_EQ(plate.getAwaited(), file("slow.exr"));
    disk.allowAll();
    waitUntil([&] { return !plate.isReading(); });
    EXPECT_EQ(shownNumber(), 40);
    ASSERT_EQ(shares.size(), 5U);
    EXPECT_EQ(shares[1], 16.0 / 52.0);
    EXPECT_EQ(shares[4], 1.0);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_FALSE(plate.getShare().has_value());
}

TEST_F(GivenUpReadingTest, WhatWasShownStaysAndOthersOpenWhileTheDiskStillTakesItsTime)
{
    struct Case {
        std::string opened;
        std::string awaited;
        int steps; ///< that the disk makes before
    };
    for (std::string const before : {"still.exr", "shot.0002.exr"}) {
        open(before);
        for (Case const& row :
             {Case{"slow.exr", "slow.exr", 0}, Case{"slow.exr", "slow.exr", 2},
              Case{"slow.#.exr", "slow.1.exr", 0}, Case{"slow.2.exr", "slow.2.exr", 3}}) {
            open(before);
            nbCancelled = nbFailed = 0;
            int const number = shownNumber();
            Plate::Path const name = plate.getName();
            disk.allow(row.steps);
            plate.open(file(row.opened));
            waitUntil([&] { // found out what it is
                return disk.isAwaited() && (plate.getShare().has_value() || row.steps < 2);
            });
            EXPECT_EQ(plate.getAwaited(), file(row.awaited));
            plate.giveUp();
            EXPECT_FALSE(plate.isReading());
            EXPECT_EQ(shownNumber(), number);
            EXPECT_EQ(plate.getName(), name);
            EXPECT_EQ(nbCancelled, 1);
            plate.giveUp();
            EXPECT_EQ(nbCancelled, 1) << "nothing was on its way";
            open("shot.0003.exr");
            EXPECT_EQ(shownNumber(), 3);
            EXPECT_EQ(nbFailed, 0);
            disk.allow(1); // at last
            waitUntil([&] { return !disk.isAwaited(); });
        }
    }
}

TEST_F(GivenUpReadingTest, MomentGoesBackToTheFrameThatIsShown)
{
    disk.allow(5);
    open("slow.1.exr"); // then its successor is read ahead
    waitForDisk();
    timeline.goTo(2);
    EXPECT_TRUE(plate.isReading());
    EXPECT_EQ(plate.getAwaited(), file("slow.2.exr"));
    plate.giveUp();
    EXPECT_FALSE(plate.isReading());
    EXPECT_EQ(timeline.getTime(), 1.0);
    EXPECT_EQ(shownNumber(), 41);
    timeline.goTo(2); // another wish
    disk.allowAll();
    waitUntil([&] { return !plate.isReading(); });
    EXPECT_EQ(shownNumber(), 42);
}
