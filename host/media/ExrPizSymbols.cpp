// Counts what Huffman codes stand for without unpacking them: short codes in a row are counted
// together.

#include "media/ExrPizSymbols.h"

#include "media/ExrStreams.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr std::size_t headBytes = 20; // first and last symbol, bytes of the table, bits, nothing
constexpr std::uint32_t mostSymbols = (1U << 16) + 1; // samples, and a run of the one before
constexpr unsigned longestCode = 58; // bits; a block is too small for the samples that it takes
constexpr unsigned runBits = 8;      // of a run's length, after its code
constexpr unsigned peekedBits = 57;
constexpr unsigned windowBits = 12; // of codes that are counted together

/// Bits, the highest of a byte first; zeros beyond the end.
class BitReader {
public:
    BitReader(std::span<std::byte const> wantedBytes, std::uint64_t bits)
        : bytes(wantedBytes), end(bits)
    {
    }

    std::uint64_t left() const { return end - place; }

    /// The next `peekedBits` or more, in the highest ones.
    std::uint64_t peek() const
    {
        std::size_t const first = place / 8;
        std::array<std::byte, sizeof(std::uint64_t)> window{};
        if (bytes.size() - first >= window.size()) {
            std::memcpy(window.data(), &bytes[first], window.size());
        } else {
            std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(first), bytes.end(),
                      window.begin());
        }
        return __builtin_bswap64(readNumber<std::uint64_t>(window.data())) << (place % 8);
    }

    /// False where there are fewer left.
    bool skip(unsigned bits)
    {
        bool const isThere = bits <= left();
        place += isThere ? bits : 0;
        return isThere;
    }

private:
    std::span<std::byte const> bytes;
    std::uint64_t place = 0;
    std::uint64_t end;
};

/// Codes as the lengths of all symbols give them: longer ones are smaller numbers, those of one
/// length follow each other.
class CodeBook {
public:
    struct Found {
        unsigned bits = 0; ///< 0: no code begins so
        bool isRun = false;
    };

    /// `runLength`: of the last symbol's code, which is a run's.
    CodeBook(std::array<std::uint64_t, longestCode + 1> const& wantedCounts, unsigned runLength)
        : counts(wantedCounts), runCode(runLength)
    {
        std::uint64_t code = 0;
        for (unsigned length = longestCode; length > 0; --length) {
            firsts[length] = code;
            code = (code + counts[length]) >> 1U;
            shortest = counts[length] != 0 ? length : shortest;
        }
        for (std::uint32_t start = 0; start < windows.size(); ++start) {
            windows[start] = countWindow(start);
        }
    }

    /// The code that the highest of `bits` begin with.
    Found find(std::uint64_t bits) const
    {
        for (unsigned length = shortest; length <= longestCode; ++length) {
            std::uint64_t const code = bits >> (64 - length);
            if (counts[length] != 0 && code >= firsts[length]) {
                std::uint64_t const index = code - firsts[length];
                bool const isCode = index < counts[length];
                return {isCode ? length : 0, length == runCode && index == counts[length] - 1};
            }
        }
        return {};
    }

    struct Window {
        std::uint8_t bits = 0;
        std::uint8_t symbols = 0;
    };
    /// The whole codes, no runs, that the highest of `bits` begin with.
    Window const& findSeveral(std::uint64_t bits) const
    {
        return windows[bits >> (64 - windowBits)];
    }

private:
    Window countWindow(std::uint32_t start) const
    {
        Window window;
        std::uint64_t bits = std::uint64_t{start} << (64 - windowBits);
        for (Found found = find(bits);
             found.bits != 0 && !found.isRun && window.bits + found.bits <= windowBits;
             found = find(bits)) {
            window.bits = static_cast<std::uint8_t>(window.bits + found.bits);
            ++window.symbols;
            bits <<= found.bits;
        }
        return window;
    }

    std::array<std::uint64_t, longestCode + 1> counts;
    std::array<std::uint64_t, longestCode + 1> firsts{};
    std::array<Window, 1U << windowBits> windows;
    unsigned runCode;
    unsigned shortest = longestCode;
};

/// The table of lengths, 6 bits each; the greatest values are runs of symbols without a code.
std::optional<CodeBook> readCodeBook(BitReader& table, std::uint32_t first, std::uint32_t last)
{
    constexpr unsigned lengthBits = 6;
    constexpr unsigned shortRun = 59; // 2 symbols
    constexpr unsigned longRun = 63;  // 6 symbols, and as many as the next 8 bits say
    std::array<std::uint64_t, longestCode + 1> counts{};
    unsigned length = 0;
    for (std::uint32_t symbol = first; symbol <= last;) {
        length = static_cast<unsigned>(table.peek() >> (64 - lengthBits));
        std::uint32_t symbols = length < shortRun ? 1 : length - shortRun + 2;
        if (length == longRun) {
            symbols += static_cast<std::uint32_t>(table.peek() << lengthBits >> (64 - runBits));
        }
        if (!table.skip(lengthBits + (length == longRun ? runBits : 0))) {
            return std::nullopt;
        }
        symbol += symbols;
        length = length < shortRun ? length : 0;
        counts[length] += symbols;
    }
    counts[0] = 0;
    return CodeBook(counts, length);
}

std::optional<std::uint64_t> count(CodeBook const& book, BitReader bits)
{
    std::uint64_t symbols = 0;
    while (bits.left() != 0) {
        std::uint64_t const next = bits.peek();
        unsigned used = 0;
        std::uint64_t several = 0;
        CodeBook::Window window = book.findSeveral(next);
        while (window.bits != 0 && used + windowBits <= peekedBits) {
            used += window.bits;
            several += window.symbols;
            window = book.findSeveral(next << used);
        }
        if (used != 0 && bits.skip(used)) {
            symbols += several;
            continue;
        }
        CodeBook::Found const found = book.find(next);
        if (found.bits == 0 || !bits.skip(found.bits)) {
            return std::nullopt;
        }
        symbols += found.isRun ? bits.peek() >> (64 - runBits) : 1;
        if (found.isRun && !bits.skip(runBits)) {
            return std::nullopt;
        }
    }
    return symbols;
}

} // namespace

std::optional<std::uint64_t> countPizSymbols(std::span<std::byte const> codes)
{
    if (codes.size() < headBytes) {
        return std::nullopt;
    }
    auto const first = readNumber<std::uint32_t>(codes.data());
    auto const last = readNumber<std::uint32_t>(&codes[4]);
    auto const bits = readNumber<std::uint32_t>(&codes[12]);
    std::span<std::byte const> const rest = codes.subspan(headBytes);
    if (first >= mostSymbols || last >= mostSymbols) {
        return std::nullopt;
    }
    BitReader table(rest, rest.size() * 8);
    std::optional<CodeBook> const book = readCodeBook(table, first, last);
    std::size_t const start = rest.size() - table.left() / 8;
    if (!book.has_value() || bits > (rest.size() - start) * 8) {
        return std::nullopt;
    }
    return count(*book, BitReader(rest.subspan(start), bits));
}
