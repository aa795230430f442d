// Several pictures at a time: who waits for whom, memory, and one picture's failure.

#include "runtime/engine/RenderPool.h"

#include "support/Failures.h"
#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <stdexcept>

namespace {

using namespace memoryHost;

constexpr int rowWidth = 1 << 18; // one row is one strip
constexpr int nbRows = 6;
constexpr std::chrono::milliseconds tick{20};
constexpr std::chrono::seconds patience{30};

/// One picture of one byte a pixel that is only handed through.
struct Passage {
    explicit Passage(int mark, int rows = nbRows)
        : picture(makeFormat(IxPixelFormat::ALPHA, IxPixelFormat::UINT8), {0, 0, rowWidth, rows})
    {
        std::fill(picture.bytes.begin(), picture.bytes.end(), static_cast<std::byte>(mark));
        source = MemorySource(picture);
    }
    RenderJob getJob() { return {*node, *node, source, sink, nullptr, 0.0}; }
    bool isComplete() const { return sink.isFinished && sink.picture.bytes == picture.bytes; }

    Picture picture;
    MemorySource source{picture};
    MemorySink sink{picture.format, picture.window};
    PxStrongHndl<SourceImageNode> node = makeNode<SourceImageNode>(source.getInfo());
};

/// Until all have ended; the tickets of those that failed.
std::set<RenderPool::Ticket> finish(RenderPool& pool, std::size_t pictures)
{
    std::set<RenderPool::Ticket> failed;
    auto const start = std::chrono::steady_clock::now();
    while (pictures > 0 && std::chrono::steady_clock::now() - start < patience) {
        if (auto const ended = pool.waitForEnd(tick)) {
            --pictures;
            if (ended->failure) {
                failed.insert(ended->ticket);
            }
        }
    }
    EXPECT_EQ(pictures, 0U);
    return failed;
}

TEST(RenderPoolTest, PicturesOfAllSizesGoThroughWhateverTheWorkersAndTheMemory)
{
    for (int const threads : {1, 2, 5}) {
        // One byte is less than any strip: they go one by one.
        for (std::size_t const memory : {std::size_t{1}, std::size_t{3} * rowWidth * 2 * 2,
                                         std::numeric_limits<std::size_t>::max()}) {
            std::list<Passage> passages;
            RenderPool pool({.threads = threads, .memory = memory});
            std::atomic<int> onTheWay = 0;
            std::atomic<int> most = 0;
            for (int index = 0; index < 7; ++index) {
                Passage& passage = passages.emplace_back(index + 1, index);
                passage.source.onRead = [&] { most = std::max(most.load(), ++onTheWay); };
                passage.sink.onWrite = [&] { --onTheWay; };
                pool.add(passage.getJob());
            }
            EXPECT_EQ(finish(pool, 7), std::set<RenderPool::Ticket>());
            for (Passage const& passage : passages) {
                EXPECT_TRUE(passage.isComplete());
            }
            EXPECT_LE(most, memory == 1 ? 1 : std::min(threads, memory < 1U << 30 ? 3 : 5));
        }
    }
}

TEST(RenderPoolTest, TheNextPictureIsReadWhileTheLastIsWritten)
{
    Passage first(1);
    Passage second(2);
    std::atomic<bool> isSecondAdded = false;
    std::atomic<bool> isSecondRead = false;
    auto const waitFor = [](std::atomic<bool> const& happens) {
        auto const start = std::chrono::steady_clock::now();
        while (!happens && std::chrono::steady_clock::now() - start < patience) {
            std::this_thread::yield();
        }
    };
    // Else both workers may have a strip of the first before there is a second.
    first.source.onRead = [&] { waitFor(isSecondAdded); };
    first.sink.onWrite = [&] { waitFor(isSecondRead); };
    second.source.onRead = [&] { isSecondRead = true; };
    RenderPool pool({.threads = 2});
    pool.add(first.getJob());
    pool.add(second.getJob());
    isSecondAdded = true;
    EXPECT_TRUE(finish(pool, 2).empty());
    EXPECT_TRUE(isSecondRead);
    EXPECT_TRUE(first.isComplete() && second.isComplete());
}

TEST(RenderPoolTest, APicturesFailureIsItsOwn)
{
    for (int const threads : {1, 3}) {
        std::list<Passage> passages;
        RenderPool pool({.threads = threads});
        for (int index = 0; index < 5; ++index) {
            Passage& passage = passages.emplace_back(index + 1);
            if (index % 2 == 1) {
                auto const fail = [] { throw std::runtime_error("this one fails"); };
                (index == 1 ? passage.source.onRead : passage.sink.onWrite) = fail;
            }
            pool.add(passage.getJob());
        }
        EXPECT_EQ(finish(pool, 5), (std::set<RenderPool::Ticket>{1, 3}));
        int index = 0;
        for (Passage const& passage : passages) {
            EXPECT_EQ(passage.isComplete(), index++ % 2 == 0);
        }
    }
}

TEST(RenderPoolTest, CancellingEndsEveryPicture)
{
    std::atomic<bool> isCancelled = false;
    std::list<Passage> passages;
    RenderPool pool({.threads = 2, .cancelled = &isCancelled});
    for (int index = 0; index < 4; ++index) {
        Passage& passage = passages.emplace_back(index + 1);
        passage.sink.onWrite = [&] { isCancelled = true; };
        pool.add(passage.getJob());
    }
    EXPECT_EQ(finish(pool, 4).size(), 4U);
    for (Passage const& passage : passages) {
        EXPECT_FALSE(passage.sink.isFinished);
    }
}

} // namespace
