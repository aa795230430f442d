#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

/// Bytes that grow at the end without being cleared, in memory that is used again. Not copied.
class ByteStore {
public:
    std::size_t size() const { return used; }
    std::span<std::byte> bytes() { return {memory.get(), used}; }
    std::span<std::byte const> bytes() const { return {memory.get(), used}; }
    void clear() { used = 0; }

    /// `more` bytes at the end, whatever is in them; the last ones may be given back by `shrink`.
    /// Spans of before are no longer valid. Throws std::bad_alloc.
    std::span<std::byte> grow(std::size_t more)
    {
        if (more > room - used) {
            std::size_t const wanted = std::max(used + more, room + room / 2);
            auto larger = std::make_unique_for_overwrite<std::byte[]>(wanted);
            std::copy_n(memory.get(), used, larger.get());
            memory = std::move(larger);
            room = wanted;
        }
        used += more;
        return bytes().last(more);
    }
    void shrink(std::size_t less) { used -= less; }

    /// As many bytes, whatever is in them.
    std::span<std::byte> resize(std::size_t wanted)
    {
        clear();
        return grow(wanted);
    }

private:
    std::unique_ptr<std::byte[]> memory;
    std::size_t used = 0;
    std::size_t room = 0;
};

/// Where one block of pixels lies as a file holds it.
struct PackedBlock {
    std::uint64_t number = 0; ///< in the file's way of counting
    std::size_t begin = 0;
    std::size_t size = 0;
};

/// The blocks of a strip, in memory with what else the file's kind keeps beside them.
struct PackedBlocks {
    std::vector<PackedBlock> list;
    ByteStore memory;

    std::span<std::byte const> bytesOf(PackedBlock const& block) const
    {
        return memory.bytes().subspan(block.begin, block.size);
    }
    void clear()
    {
        list.clear();
        memory.clear();
    }
};
