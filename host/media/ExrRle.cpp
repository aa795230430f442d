#include "media/ExrRle.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t longestRun = 128;
constexpr std::size_t shortestRun = 3;
constexpr std::size_t mostLiterals = 127;

std::uint64_t loadEight(std::byte const* bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// The first byte of `word` in memory that is 0; 8 for none.
std::size_t findZero(std::uint64_t word)
{
    static_assert(std::endian::native == std::endian::little);
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t highs = 0x8080808080808080;
    // A carry may mark bytes above the first one, none below it.
    return static_cast<std::size_t>(std::countr_zero((word - ones) & ~word & highs)) / 8;
}

/// How many bytes from `place` on are alike.
std::size_t countAlike(std::span<std::byte const> bytes, std::size_t place)
{
    std::size_t const most = std::min(bytes.size() - place, longestRun);
    std::byte const* const first = &bytes[place];
    std::size_t alike = 1;
    while (alike < most && first[alike] == *first) {
        ++alike;
    }
    return alike;
}

/// The place from `from` on where three bytes alike begin, or `end`.
std::size_t findRun(std::span<std::byte const> bytes, std::size_t from, std::size_t end)
{
    constexpr std::size_t step = sizeof(std::uint64_t);
    for (; from < end && from + step + 2 <= bytes.size(); from += step) {
        std::byte const* const at = &bytes[from];
        std::uint64_t const now = loadEight(at);
        std::size_t const found = findZero((now ^ loadEight(at + 1)) | (now ^ loadEight(at + 2)));
        if (found < step) {
            return std::min(from + found, end);
        }
    }
    for (; from < end; ++from) {
        if (from + 2 < bytes.size() && bytes[from] == bytes[from + 1] &&
            bytes[from] == bytes[from + 2]) {
            break;
        }
    }
    return std::min(from, end);
}

} // namespace

std::size_t packRuns(std::span<std::byte const> bytes, std::span<std::byte> packed)
{
    std::size_t used = 0;
    for (std::size_t place = 0; place < bytes.size();) {
        std::size_t count = countAlike(bytes, place);
        if (count >= shortestRun) {
            if (packed.size() - used < 2) {
                return 0;
            }
            packed[used++] = static_cast<std::byte>(count - 1);
            packed[used++] = bytes[place];
        } else {
            std::size_t const end = std::min(place + mostLiterals, bytes.size());
            count = findRun(bytes, place + count, end) - place;
            if (packed.size() - used < count + 1) {
                return 0;
            }
            packed[used++] = static_cast<std::byte>(-static_cast<int>(count));
            std::memcpy(&packed[used], &bytes[place], count);
            used += count;
        }
        place += count;
    }
    return used;
}

bool unpackRuns(std::span<std::byte const> packed, std::span<std::byte> bytes)
{
    std::size_t filled = 0;
    for (std::size_t place = 0; place < packed.size();) {
        auto const mark = static_cast<signed char>(packed[place++]);
        std::size_t const count = static_cast<std::size_t>(mark < 0 ? -mark : mark + 1);
        std::size_t const taken = mark < 0 ? count : 1;
        if (count > bytes.size() - filled || taken > packed.size() - place) {
            return false;
        }
        if (mark < 0) {
            std::memcpy(&bytes[filled], &packed[place], count);
        } else {
            std::memset(&bytes[filled], std::to_integer<int>(packed[place]), count);
        }
        filled += count;
        place += taken;
    }
    return filled == bytes.size();
}
