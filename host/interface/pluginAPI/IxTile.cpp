// Tiles and the pool that keeps their buffers warm: the first touch of a fresh page costs several
// times the arithmetic that a pixel goes through, so buffers are used again.

#include "pluginAPI/IxTile.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

namespace {

constexpr std::size_t rowAlignment = 64;
constexpr std::size_t mostFreeBuffers = 32;

struct AlignedDelete {
    void operator()(std::byte* memory) const
    {
        ::operator delete (memory, std::align_val_t{rowAlignment});
    }
};

struct PooledBuffer {
    std::unique_ptr<std::byte, AlignedDelete> memory;
    std::size_t size = 0;
};

/// Buffers that nobody uses just now, the oldest first. The lock is held for the search only.
class BufferPool {
public:
    BufferPool() { freeBuffers.reserve(mostFreeBuffers); }

    PooledBuffer take(std::size_t size)
    {
        {
            std::lock_guard const lock(mutex);
            auto const fitting = std::find_if(freeBuffers.rbegin(), freeBuffers.rend(),
                                              [&](PooledBuffer const& free) {
                                                  return free.size >= size && free.size / 2 <= size;
                                              });
            if (fitting != freeBuffers.rend()) {
                PooledBuffer taken = std::move(*fitting);
                freeBuffers.erase(std::next(fitting).base());
                return taken;
            }
        }
        void* const memory = ::operator new (size, std::align_val_t{rowAlignment});
        return {std::unique_ptr<std::byte, AlignedDelete>(static_cast<std::byte*>(memory)), size};
    }

    void giveBack(PooledBuffer buffer) noexcept
    {
        PooledBuffer surplus;
        std::lock_guard const lock(mutex);
        if (freeBuffers.size() == mostFreeBuffers) {
            surplus = std::move(freeBuffers.front());
            freeBuffers.erase(freeBuffers.begin());
        }
        freeBuffers.push_back(std::move(buffer));
    }

private:
    std::mutex mutex;
    std::vector<PooledBuffer> freeBuffers;
};

/// Tiles may outlive the library's static data: every buffer keeps the pool alive.
std::shared_ptr<std::byte> takeBuffer(std::size_t size)
{
    static auto const pool = std::make_shared<BufferPool>();
    PooledBuffer buffer = pool->take(size);
    std::size_t const realSize = buffer.size;
    return {buffer.memory.release(), [keptPool = pool, realSize](std::byte* memory) {
                keptPool->giveBack({std::unique_ptr<std::byte, AlignedDelete>(memory), realSize});
            }};
}

} // namespace

IxTile::IxTile(IxPixelFormat const& pixelFormat, GeRectangle<int> const& tileBounds)
    : format(pixelFormat), bounds(tileBounds)
{
    auto const width = static_cast<std::size_t>(std::max(bounds.getWidth(), 0));
    auto const height = static_cast<std::size_t>(std::max(bounds.getHeight(), 0));
    std::size_t const rowSize =
        (width * format.getBytesPerPixel() + rowAlignment - 1) / rowAlignment * rowAlignment;
    rowBytes = static_cast<std::ptrdiff_t>(rowSize);
    buffer = takeBuffer(std::max(rowSize * height, rowAlignment));
}

IxTile::IxTile(IxPixelFormat const& pixelFormat, GeRectangle<int> const& tileBounds,
               std::byte* firstRow, std::ptrdiff_t rowStep)
    : format(pixelFormat), bounds(tileBounds), rowBytes(rowStep),
      buffer(std::shared_ptr<std::byte>(), firstRow)
{
}
