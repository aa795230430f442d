// Logarithms and powers of runs of values, a channel at a time. As remapColorVectors.h, for sources
// that are compiled for an instruction set.

#include "remapColorVectors.h"

namespace RemapColorRowKernels::INSTRUCTION_SET {

namespace {

struct LaneLists {
    float values[lanes];
    float inputs[lanes];
    std::int32_t mask[lanes];
};

template <typename Exact>
[[gnu::noinline, gnu::cold]] void recompute(LaneLists& lists, Exact exact)
{
    for (int lane = 0; lane < lanes; ++lane) {
        if (lists.mask[lane] != 0) {
            lists.values[lane] = exact(lists.inputs[lane]);
        }
    }
}

/// Recomputes the lanes of the mask one by one: `exact(value)` of `inputs`.
template <typename Exact>
REMAPCOLOR_INLINE Floats replaceLanes(Floats values, Ints mask, Floats inputs, Exact const& exact)
{
    if (!any(mask)) {
        return values;
    }
    LaneLists lists;
    store(values, lists.values);
    store(inputs, lists.inputs);
    store(mask, lists.mask);
    recompute(lists, exact);
    return load(lists.values);
}

constexpr std::uint32_t signBit = 0x80000000U;

using RemapColorPower::firstLogCentre;
using RemapColorPower::logIntervalBits;
using RemapColorPower::PreparedPower;

constexpr std::uint32_t halfInterval = 1U << (logIntervalBits - 1);
constexpr std::uint32_t centreMask = ~((1U << logIntervalBits) - 1);

/// x = 2^k m, with m near the centre c of a table's entry.
struct SplitFloat {
    Ints k;
    Ints entry;        ///< in its last four bits
    Floats fromCentre; ///< m - c
};

/// Of normal, positive, finite x; k of any other is far from 0.
REMAPCOLOR_INLINE SplitFloat split(Floats x)
{
    constexpr std::uint32_t exponentMask = 0xff800000U;
    Words const bits = bitsOf(x);
    Words const rounded = bits + halfInterval;
    Words const fromFirst = rounded - firstLogCentre;
    Words const exponentBits = fromFirst & exponentMask;
    Floats const m = valuesOf(bits - exponentBits);
    Floats const c = valuesOf((rounded - exponentBits) & centreMask);
    return {asInts(fromFirst) >> 23, asInts(fromFirst >> logIntervalBits), m - c};
}

/// log2(x) = head + (r + small) log2(e), the head of 16 bits.
struct LogParts {
    Floats head;
    Floats r;
    Floats small;
};

/// For normal, positive, finite x:
///   head = k + logHead,  r = (m - c) / c,  small = logTail + ln(1 + r) - r,  |r| <= 1/32
/// Source of the method: P. T. P. Tang, "Table-Driven Implementation of the Logarithm Function in
/// IEEE Floating-Point Arithmetic" (1990).
REMAPCOLOR_INLINE LogParts logParts(SplitFloat const& x, EntryVectors const& entry)
{
    Floats const r = x.fromCentre * entry.inverse;
    // ln(1 + r) - r, in an order that leaves little to wait for
    Floats const r2 = r * r;
    Floats const curved = r2 * ((r * 0.333333343F - 0.5F) + r2 * (r * 0.200120747F - 0.250140876F));
    return {toFloats(x.k) + entry.head, r, entry.tail + curved};
}

/// A number as the sum of an exact product and a small rest.
struct SplitNumber {
    Floats product;
    Floats rest;
};

/// multiplier * log2(x); the product of the two heads is exact.
REMAPCOLOR_INLINE SplitNumber scaledLog2(Floats x, RemapColorPower::LogMultiplier const& multiplier)
{
    SplitFloat const parts = split(x);
    LogParts const log = logParts(parts, logEntries(parts.entry));
    return {log.head * multiplier.head,
            log.head * multiplier.tail + (log.r + log.small) * multiplier.timesLog2E};
}

/// 2^y for y in [-126, 126], to a little more than half a unit in the last place. With y = n / 16 +
/// f: 2^(n / 16) from a table, times 2^f.
REMAPCOLOR_INLINE Floats exp2(SplitNumber const& y)
{
    constexpr float rounder = 786432.0F; // 1.5 * 2^19: its last bit is worth 1/16
    constexpr int expBits = 4;
    Floats const shifted = (y.product + y.rest) + rounder;
    Floats const f = (y.product - (shifted - rounder)) + y.rest;
    Ints const n = asInts(bitsOf(shifted));
    Neighbours const entry = expEntries(n);
    // (2^f - 1) / f
    Floats const slope =
        (f * 0.240226507F + 0.693147182F) + f * f * (f * 0.00961827952F + 0.0555054098F);
    Floats const scaled = entry.first + (entry.second + entry.first * f * slope);
    auto const exponentBits = reinterpret_cast<Words>((n >> expBits) << 23);
    return valuesOf(bitsOf(scaled) + exponentBits);
}

/// A power of x >= 0.
struct Unsigned {
    static constexpr auto single = &RemapColorPower::power;

    REMAPCOLOR_INLINE Words magnitude(Floats x) { return bitsOf(x); }
    REMAPCOLOR_INLINE Floats withSign(Floats power, Floats) { return power; }
};

/// 0 - power(0 - x) below 0.
struct Signed {
    static constexpr auto single = &RemapColorPower::signedPower;

    REMAPCOLOR_INLINE Words magnitude(Floats x) { return bitsOf(x) & ~signBit; }

    /// The power is not 0, so its sign is all that 0 - power changes.
    REMAPCOLOR_INLINE Floats withSign(Floats power, Floats x)
    {
        return valuesOf(bitsOf(power) | (bitsOf(x) & signBit));
    }
};

/// x^exponent on the way by the logarithm. Lanes that are zero, denormal, infinite, NaN or
/// negative, or whose power is far from 1, take the way of a single value.
template <typename Sign>
[[gnu::noinline]] Floats logPower(Floats x, PreparedPower const& power)
{
    constexpr std::uint32_t smallestNormal = 0x00800000U;
    constexpr std::uint32_t nbNormals = 0x7f000000U;
    constexpr float largestLogarithm = 126.0F;
    Words const magnitude = Sign::magnitude(x);
    SplitNumber const y = scaledLog2(valuesOf(magnitude), power.logMultiplier);
    Floats const sum = y.product + y.rest;
    float const limit = power.suitsLog ? largestLogarithm : 0.0F;
    Ints const isOrdinary =
        (magnitude - smallestNormal < nbNormals) & (sum < limit) & (sum > 0.0F - limit);
    return replaceLanes(
        Sign::withSign(exp2(y), x), ~isOrdinary, x,
        [exponent = power.exponent](float value) { return Sign::single(value, exponent); });
}

/// x^exponent of a run, one channel's exponent.
template <typename Sign>
class Power {
public:
    explicit Power(PreparedPower const& power) : prepared(power) {}

    [[gnu::always_inline]] bool hasTables() const { return !prepared.tables.isNull(); }

    /// Where the centres next to a run's values are in the tables.
    struct Places {
        Plane<std::int32_t> bytes;
        Values fromCentre;
    };

    /// Whether the tables reach all values.
    [[gnu::always_inline]] static bool findPlaces(Values const& x, Places& places)
    {
        constexpr int entryBits = 4;
        constexpr std::uint32_t lastPlace = (RemapColorPower::nbPowerEntries - 1) << entryBits;
        static_assert(sizeof(RemapColorPower::PowerEntry<float>) == 1 << entryBits);
        Words beyond{};
        forVectors([&](int at) __attribute__((always_inline)) {
            Floats const value = load(x.numbers + at);
            Words const bits = Sign::magnitude(value);
            Words const rounded = bits + halfInterval;
            Words const place = (rounded - firstLogCentre) >> (logIntervalBits - entryBits);
            store(asInts(place & lastPlace), places.bytes.numbers + at);
            store(valuesOf(bits) - valuesOf(rounded & centreMask), places.fromCentre.numbers + at);
            beyond |= beyondTables(value, rounded);
        });
        return !any(beyond != 0U);
    }

    /// finish(x^exponent), of values that the tables reach.
    template <typename Finish>
    [[gnu::always_inline]] void raise(Values const& x, Places const& places, Values& result,
                                      Finish const& finish) const
    {
        RemapColorPower::PowerTables const& tables = *prepared.tables.get();
        Floats const ofZero = broadcast(prepared.ofZero);
        auto const coefficient = [this](int term) __attribute__((always_inline))
        {
            return broadcast(prepared.coefficients[term]);
        };
        Floats const a = coefficient(0);
        Floats const b = coefficient(1);
        Floats const c = coefficient(2);
        Floats const d = coefficient(3);
        Floats const e = coefficient(4);
        forVectors([&](int at) __attribute__((always_inline)) {
            Floats const value = load(x.numbers + at);
            auto const entry = powerEntries(tables, places.bytes.numbers + at);
            Floats const r = load(places.fromCentre.numbers + at) * entry.inverse;
            // ((1 + r)^exponent - 1) / r, in an order that leaves little to wait for
            Floats const r2 = r * r;
            Floats const slope = (a + r * b) + r2 * ((c + r * d) + r2 * e);
            Floats const power =
                Sign::withSign(entry.head + (entry.tail + (entry.sum * r) * slope), value);
            store(finish(bitsOf(value) == 0U ? ofZero : power), result.numbers + at);
        });
    }

    /// Replaces the results that the tables do not reach.
    template <typename Finish>
    [[gnu::noinline]] void raiseOthers(Values const& x, Values& result, Finish const& finish) const
    {
        forVectors([&](int at) {
            Floats const value = load(x.numbers + at);
            Ints const isBeyond = beyondTables(value, Sign::magnitude(value) + halfInterval) != 0U;
            if (any(isBeyond)) {
                Floats const power = finish(logPower<Sign>(value, prepared));
                store(isBeyond ? power : load(result.numbers + at), result.numbers + at);
            }
        });
    }

    /// finish(x^exponent), for exponents that have no tables.
    template <typename Finish>
    [[gnu::noinline]] void raiseByLogarithm(Values const& x, Values& result,
                                            Finish const& finish) const
    {
        forVectors([&](int at) {
            store(finish(logPower<Sign>(load(x.numbers + at), prepared)), result.numbers + at);
        });
    }

private:
    /// Not 0 where the tables do not reach; they reach 0, but not -0.
    REMAPCOLOR_INLINE Words beyondTables(Floats x, Words rounded)
    {
        constexpr int mantissaBits = 23;
        constexpr int reachedBits = mantissaBits + 5;
        static_assert(1 << (reachedBits - mantissaBits) == RemapColorPower::nbTablePowers);
        constexpr std::uint32_t smallest =
            firstLogCentre +
            (static_cast<std::uint32_t>(RemapColorPower::smallestTablePower) << mantissaBits);
        return bitsOf(x) == 0U ? Words{} : (rounded - smallest) >> reachedBits;
    }

    PreparedPower const& prepared;
};

/// finish(x^exponent) of a run, all channels.
template <typename Sign>
class Powers {
public:
    explicit Powers(PreparedPower const* powers)
        : channels{Power<Sign>(powers[0]), Power<Sign>(powers[1]), Power<Sign>(powers[2])}
    {
    }

    template <typename Finish>
    [[gnu::always_inline]] void operator()(Colour const& x, Colour& result,
                                           Finish const& finish) const
    {
        typename Power<Sign>::Places places[nbChannels];
        bool areReached[nbChannels];
        forChannels([&](int channel) __attribute__((always_inline)) {
            areReached[channel] = Power<Sign>::findPlaces(x[channel], places[channel]);
        });
        forChannels([&](int channel) __attribute__((always_inline)) {
            Power<Sign> const& power = channels[channel];
            if (!power.hasTables()) {
                power.raiseByLogarithm(x[channel], result[channel], finish);
                return;
            }
            power.raise(x[channel], places[channel], result[channel], finish);
            if (!areReached[channel]) [[unlikely]] {
                power.raiseOthers(x[channel], result[channel], finish);
            }
        });
    }

private:
    Power<Sign> channels[nbChannels];
};

} // namespace

} // namespace RemapColorRowKernels::INSTRUCTION_SET
