// The engine: order, threads, memory in flight, cancellation and failures.

#include "runtime/engine/RenderEngine.h"

#include "pluginAPI/PxRequestMgr.h"
#include "support/Failures.h"
#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <thread>

namespace {

using namespace memoryHost;

constexpr int stripWidth = 1 << 18; // one row is one strip
constexpr int nbStrips = 40;

/// Hands the source's tiles on. `onCompute` is called on workers.
struct PassNode : PxImageNode {
    PassNode(Init const& init, PxNodePtr<PxImageProtocol const> const& imageSource)
        : PxNode(init), PxImageNode(init, imageSource), source(imageSource)
    {
    }
    PxImageResult computeImage(PxImageContext const& context) const override
    {
        onCompute();
        EXPECT_TRUE(PxRequestMgr::getInstance().isWorkerThreadCurrent());
        return source->computeImage(context);
    }
    std::function<void()> onCompute = [] {};
    PxNodePtr<PxImageProtocol const> source;
};

/// A one-byte picture of many strips, its way and its end.
struct RenderEngineTest : ::testing::Test {
    RenderEngineTest()
    {
        for (int row = 0; row < nbStrips; ++row) {
            std::fill_n(picture.getRow(row - 7), stripWidth, static_cast<std::byte>(row + 1));
        }
        source = MemorySource(picture);
    }
    ~RenderEngineTest() noexcept override = default; // a handle's release does not throw here
    void render() { renderImage(*chain, *sourceNode, source, sink, options); }

    Picture picture{makeFormat(IxPixelFormat::ALPHA, IxPixelFormat::UINT8),
                    {5, -7, 5 + stripWidth, nbStrips - 7}};
    MemorySource source{picture};
    MemorySink sink{picture.format, picture.window};
    PxStrongHndl<SourceImageNode> sourceNode = makeNode<SourceImageNode>(source.getInfo());
    PxStrongHndl<PassNode> chain =
        makeNode<PassNode>(PxNodePtr<PxImageProtocol const>(sourceNode.get()));
    RenderOptions options;
};

TEST_F(RenderEngineTest, StripsAreWrittenInTheSourcesOrder)
{
    for (bool const isBottomToTop : {false, true}) {
        for (int const threads : {1, 2, 5}) {
            options.threads = threads;
            source.isBottomToTop = isBottomToTop;
            sink = MemorySink(picture.format, picture.window);
            render();
            std::vector<int> rows(nbStrips);
            std::iota(rows.begin(), rows.end(), -7);
            if (isBottomToTop) {
                std::reverse(rows.begin(), rows.end());
            }
            EXPECT_EQ(sink.firstRows, rows);
            EXPECT_TRUE(sink.picture.bytes == picture.bytes);
            EXPECT_TRUE(sink.isFinished);
        }
    }
}

TEST_F(RenderEngineTest, NoMoreStripsThanWorkersAreOnTheWay)
{
    for (int const threads : {1, 3}) {
        options.threads = threads;
        std::atomic<int> onTheWay = 0;
        std::atomic<int> most = 0;
        source.onRead = [&] {
            int const now = ++onTheWay;
            most = std::max(most.load(), now);
        };
        sink.onWrite = [&] {
            // Slow writing lets the others run ahead as far as they may.
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            --onTheWay;
        };
        render();
        EXPECT_LE(most, threads);
        EXPECT_EQ(onTheWay, 0);
    }
}

TEST_F(RenderEngineTest, ProgressRisesToOneOnTheCaller)
{
    options.threads = 2;
    sink.onWrite = [] { std::this_thread::sleep_for(std::chrono::milliseconds(3)); };
    std::vector<double> shares;
    options.progress = [&, caller = std::this_thread::get_id()](double share) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        shares.push_back(share);
    };
    render();
    ASSERT_FALSE(shares.empty());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_EQ(shares.back(), 1.0);
}

TEST_F(RenderEngineTest, CancelledRenderStopsAndDoesNotFinish)
{
    std::atomic<bool> isCancelled = false;
    int nbWritten = 0;
    sink.onWrite = [&] { isCancelled = ++nbWritten == 3; };
    options.cancelled = &isCancelled;
    options.threads = 2;
    EXPECT_THROW(render(), RenderCancelled);
    EXPECT_FALSE(sink.isFinished);
    EXPECT_EQ(nbWritten, 3);
}

TEST_F(RenderEngineTest, FailuresReachTheCallerAndTheChainStaysUsable)
{
    for (int const threads : {1, 3}) {
        for (int place = 0; place < 3; ++place) {
            options.threads = threads;
            std::atomic<int> nbCalls = 0;
            std::atomic<int> nbComputed = 0;
            chain->onCompute = [&] { ++nbComputed; };
            auto const fail = [&] {
                if (++nbCalls == 4) {
                    while (place == 1 && threads > 1 && nbComputed < 5) {
                        std::this_thread::yield(); // until another waits for its turn
                    }
                    throw std::runtime_error("the fourth fails");
                }
            };
            (place == 0 ? source.onRead : place == 1 ? sink.onWrite : chain->onCompute) = fail;
            sink.isFinished = false;
            EXPECT_EQ(messageOf<std::runtime_error>([&] { render(); }), "the fourth fails");
            EXPECT_FALSE(sink.isFinished);
            EXPECT_TRUE(place != 1 || nbCalls == 4); // nothing is written after what failed
            source.onRead = sink.onWrite = chain->onCompute = [] {};
        }
    }
    // Nothing of the failed renders is left in the way of the next.
    std::fill(picture.bytes.begin(), picture.bytes.end(), std::byte{99});
    source = MemorySource(picture);
    render();
    EXPECT_TRUE(sink.picture.bytes == picture.bytes);
    EXPECT_TRUE(sink.isFinished);
}

TEST_F(RenderEngineTest, PictureWithoutRowsIsFinished)
{
    source = MemorySource(Picture(picture.format, {0, 0, 10, 0}));
    render();
    EXPECT_TRUE(sink.isFinished);
    EXPECT_TRUE(sink.firstRows.empty());
}

TEST(ChooseStripRowsTest, GivesWholeBlocksOfManyPixels)
{
    struct Case {
        int width, rowsPerBlock, rows;
    };
    auto const format = makeFormat(IxPixelFormat::ALPHA, IxPixelFormat::UINT8);
    for (auto const& [width, rowsPerBlock, rows] :
         {Case{1024, 1, 64}, Case{1000, 16, 80}, Case{1 << 20, 1, 1}, Case{1 << 20, 32, 32},
          Case{1 << 15, 1, 2}, Case{1024, 0, 64}, Case{1, 1, 1 << 16}}) {
        EXPECT_EQ(chooseStripRows(MemorySource(Picture(format, {0, 0, width, 1}), rowsPerBlock)),
                  rows);
    }
}

} // namespace
