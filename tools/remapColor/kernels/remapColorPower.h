#pragma once

// Powers and logarithms of the transfers: what is prepared once for a channel and a render, and the
// plain double arithmetic behind it. Basic IEEE operations only, so that every machine gives the
// same bits; the math library's own functions may differ between processors.

#include "base/RCBase.h"
#include "base/RCShdPtr.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace RemapColorPower {

constexpr double ln2 = 0.69314718055994530942;

/// A number as the unrounded sum of two.
struct DoublePair {
    double head;
    double tail;
};

/// a * b. Source of the method: T. J. Dekker, "A Floating-Point Technique for Extending the
/// Available Precision" (1971).
constexpr DoublePair multiplyExactly(double a, double b)
{
    constexpr double splitter = 134217729.0; // 2^27 + 1
    double const aScaled = splitter * a;
    double const bScaled = splitter * b;
    double const aHead = aScaled - (aScaled - a);
    double const bHead = bScaled - (bScaled - b);
    double const aTail = a - aHead;
    double const bTail = b - bHead;
    double const product = a * b;
    return {product, ((aHead * bHead - product) + aHead * bTail + aTail * bHead) + aTail * bTail};
}

/// ln(x) of a normal, positive, finite x, nearly always the double next to it: what is decided by
/// the rounding of a logarithm is decided as with any good one.
/// With x = 2^k m, m in [sqrt(1/2), sqrt(2)) and s = (m - 1) / (m + 1): k ln 2 + 2 atanh(s), s and
/// ln 2 in two parts.
/// Source of the reduction: J.-M. Muller, "Elementary Functions".
constexpr double naturalLog(double x)
{
    constexpr std::uint64_t rootOfHalf = 0x3fe6a09e667f3bcd;
    constexpr std::uint64_t exponentMask = 0xfff0000000000000;
    constexpr double ln2Head = 0x1.62e42fefa38p-1; // with any k exact
    constexpr double ln2Tail = 0x1.ef35793c7673p-45;
    std::uint64_t const bits = std::bit_cast<std::uint64_t>(x);
    std::uint64_t const exponentBits = (bits - rootOfHalf) & exponentMask;
    auto const k = static_cast<double>(static_cast<std::int64_t>(exponentBits) >> 52);
    double const m = std::bit_cast<double>(bits - exponentBits);

    double const numerator = m - 1.0;
    double const denominator = m + 1.0;
    double const denominatorTail = m - (denominator - 1.0);
    double const s = numerator / denominator;
    DoublePair const product = multiplyExactly(s, denominator);
    double const sTail =
        (((numerator - product.head) - product.tail) - s * denominatorTail) / denominator;

    double const s2 = s * s;
    constexpr int lastTerm = 25;
    double series = 1.0 / lastTerm;
    for (int term = lastTerm - 2; term >= 3; term -= 2) {
        series = series * s2 + 1.0 / term;
    }
    // 2 atanh(s) = 2 s + 2 s^3 series
    double const small = 2.0 * (sTail + s * s2 * series) + k * ln2Tail;
    double const large = k * ln2Head;
    double const sum = large + 2.0 * s;
    // |2 s| is the smaller of the two unless k is 0.
    return sum + (((large - sum) + 2.0 * s) + small);
}

/// 1 / n! for n from 0.
constexpr std::array<double, 15> inverseFactorials = [] {
    std::array<double, 15> inverses{1.0};
    for (std::size_t n = 1; n < inverses.size(); ++n) {
        inverses[n] = inverses[n - 1] / static_cast<double>(n);
    }
    return inverses;
}();

/// 2^y for y in [-1000, 1000]; error below 2^-50 of the result.
constexpr double exp2(double y)
{
    constexpr double rounder = 6755399441055744.0; // 1.5 * 2^52: its last bit is worth 1
    double const shifted = y + rounder;
    double const n = shifted - rounder;
    double const z = (y - n) * ln2;
    double series = inverseFactorials.back();
    for (std::size_t term = inverseFactorials.size() - 1; term-- > 0;) {
        series = series * z + inverseFactorials[term];
    }
    std::uint64_t const scale = (std::bit_cast<std::uint64_t>(shifted) + 1023) << 52;
    return series * std::bit_cast<double>(scale);
}

/// 2^y, for any y.
double powerOfTwo(double y);

/// x^exponent for x >= 0, -0 or NaN, as C's `powf` defines it, special values included, rounded
/// once from double; `exponent` is a number.
float power(float x, float exponent);

/// 0 - power(0 - x) below 0: a power that maps negative values point-symmetrically.
float signedPower(float x, float exponent);

/// log(over * factor + 1) / factor in double, rounded to float.
float knee(double over, float factor);

/// A multiplier m of log2(x), split so that its head times the head of a logarithm is exact:
/// m = head + tail, the head of 8 bits.
struct LogMultiplier {
    explicit LogMultiplier(double multiplier = 0.0);

    float head;
    float tail;
    float timesLog2E; ///< m log2(e), for the part of the logarithm that is to the base e
};

// The tables of the kernels' logarithm and exponential. For a mantissa m near the centre c:
//   log2(m) = logHead + (logTail + ln(1 + r)) log2(e),  r = (m - c) / c

constexpr int logIndexBits = 4;
constexpr int logEntries = 1 << logIndexBits;
constexpr std::uint32_t logIntervalBits = 19;         ///< a centre's distance in a float's bits
constexpr std::uint32_t firstLogCentre = 0x3f380000U; ///< 23/32; the others follow up to 22/16

/// The centre of that number.
constexpr float centreOf(int entry)
{
    return std::bit_cast<float>(firstLogCentre +
                                (static_cast<std::uint32_t>(entry) << logIntervalBits));
}

struct LogEntry {
    float inverse; ///< 1 / c
    float logHead; ///< a multiple of 1/256: with a whole exponent added it has 16 bits
    float logTail; ///< to the base e
    float unused;  ///< fills up a vector
};

/// The same numbers by rows, for loading an entry at once, and by columns, for selecting lanes.
struct LogTable {
    alignas(64) LogEntry rows[logEntries];
    alignas(64) float columns[3][logEntries];
};

constexpr double roundToMultiple(double value, double steps)
{
    constexpr double rounder = 6755399441055744.0;
    return (value * steps + rounder - rounder) / steps;
}

constexpr LogTable makeLogTable()
{
    LogTable table{};
    for (int entry = 0; entry < logEntries; ++entry) {
        auto const centre = static_cast<double>(centreOf(entry));
        double const log = naturalLog(centre) / ln2;
        double const logHead = roundToMultiple(log, 256.0);
        LogEntry const row{static_cast<float>(1.0 / centre), static_cast<float>(logHead),
                           static_cast<float>((log - logHead) * ln2), 0.0F};
        table.rows[entry] = row;
        table.columns[0][entry] = row.inverse;
        table.columns[1][entry] = row.logHead;
        table.columns[2][entry] = row.logTail;
    }
    return table;
}

// The table of the knee's logarithm. For m next to c = 1 + entry / 128:
//   ln(m) = log + ln(m * inverse)

constexpr int kneeIndexBits = 7;
constexpr int kneeEntries = (1 << kneeIndexBits) + 1;

struct KneeEntry {
    double inverse; ///< 1 / c
    double log;     ///< -ln(inverse)
};

struct KneeTable {
    alignas(64) KneeEntry rows[kneeEntries];
};

constexpr KneeTable makeKneeTable()
{
    KneeTable table{};
    for (int entry = 0; entry < kneeEntries; ++entry) {
        constexpr double steps = 1 << kneeIndexBits;
        double const inverse = steps / (steps + entry);
        table.rows[entry] = {inverse, 0.0 - naturalLog(inverse)};
    }
    return table;
}

/// 2^(entry / 16) as a pair of floats.
constexpr int expEntries = 16;

struct ExpEntry {
    float head;
    float tail;
};

struct ExpTable {
    alignas(64) ExpEntry rows[expEntries];
    alignas(64) float columns[2][expEntries];
};

constexpr ExpTable makeExpTable()
{
    ExpTable table{};
    for (int entry = 0; entry < expEntries; ++entry) {
        double const value = exp2(static_cast<double>(entry) / expEntries);
        auto const head = static_cast<float>(value);
        ExpEntry const row{head, static_cast<float>(value - static_cast<double>(head))};
        table.rows[entry] = row;
        table.columns[0][entry] = row.head;
        table.columns[1][entry] = row.tail;
    }
    return table;
}

/// (2^k c)^e as a pair of floats, for what is next to 2^k c.
template <typename Number>
struct PowerEntry {
    Number inverse; ///< 1 / (2^k c)
    Number head;
    Number tail;
    Number sum; ///< head + tail, rounded
};

/// Of 2^k and of c: their inverses, and their powers' heads and tails.
template <typename Number>
[[gnu::always_inline]] constexpr PowerEntry<Number>
makePowerEntry(Number wholeInverse, Number wholeHead, Number wholeTail, Number inverse, Number head,
               Number tail)
{
    Number const productHead = wholeHead * head;
    Number const productTail = wholeHead * tail + wholeTail * (head + tail);
    return {wholeInverse * inverse, productHead, productTail, productHead + productTail};
}

constexpr int smallestTablePower = -16; ///< of 2
constexpr int nbTablePowers = 32;
constexpr int nbPowerEntries = nbTablePowers * logEntries;

/// The powers of an exponent e at every 2^k c, k from `smallestTablePower` on. Immutable.
struct PowerTables : RCBase<LkCounter<int>> {
    explicit PowerTables(float exponent);

    /// 2^-k, 2^(k e) by head and tail, at the last five bits of k. Heads have 12 bits, so that a
    /// product of two is exact.
    alignas(64) float wholeColumns[3][nbTablePowers];
    /// 1 / c, c^e by head and tail.
    alignas(64) float centreColumns[3][logEntries];
    /// What the columns make of every k and c, for loading an entry at once.
    alignas(64) PowerEntry<float> entries[nbPowerEntries];
};

/// An exponent e, prepared for the row kernels, which have two ways.
///
/// By tables, for e in [-2, 5] and x = 2^k m with k in [-16, 15] and the centre c next to m:
///   x^e = (2^k c)^e (1 + r)^e,  r = (x - 2^k c) / (2^k c)
/// with the first factor from a table, the second by its binomial series.
/// By the logarithm otherwise; where that is not exact enough either, values go through `power`.
struct PreparedPower {
    PreparedPower() = default;
    explicit PreparedPower(float exponent);

    /// Makes the tables, if the exponent has them; without, its powers go the other way.
    void makeTables();

    static constexpr float smallestTableExponent = -2.0F;
    static constexpr float largestTableExponent = 5.0F;
    /// Beyond this the kernels' logarithm is not exact enough for the last bit of a power.
    static constexpr float largestLogExponent = 8.0F;
    static constexpr int nbCoefficients = 5;

    float exponent = 1.0F;
    float ofZero = 0.0F; ///< 0^exponent
    bool suitsLog = false;
    LogMultiplier logMultiplier;
    float coefficients[nbCoefficients] = {}; ///< of r, r^2, ... in (1 + r)^e
    RCShdPtr<PowerTables const> tables;      ///< empty before they are made; copies share them
};

extern LogTable const logTable;
extern ExpTable const expTable;
extern KneeTable const kneeTable;

} // namespace RemapColorPower
