// The row kernels, compiled once for each instruction set (INSTRUCTION_SET is its name).
//
// All is arithmetic on vectors of floats, each step rounded as the scalar step would be; nothing
// depends on the neighbouring lanes. Functions of the standard library are kept out: their copies
// for this instruction set might be taken for everybody's.

#include "remapColorRowKernels.h"
#include "remapColorVectors.h"

namespace RemapColorRowKernels::INSTRUCTION_SET {

namespace {

/// The numbers of the three channels, each in all lanes of its vector.
template <typename OfChannel>
REMAPCOLOR_INLINE Values lanesFrom(OfChannel const& number)
{
    return {{broadcast(number(0)), broadcast(number(1)), broadcast(number(2))}};
}

REMAPCOLOR_INLINE Values lanesOf(float const (&numbers)[nbChannels])
{
    return lanesFrom([&](int channel) { return numbers[channel]; });
}

struct LaneLists {
    float values[nbColourVectors][lanes];
    float inputs[nbColourVectors][lanes];
    std::int32_t mask[nbColourVectors][lanes];
};

template <typename Exact>
[[gnu::noinline, gnu::cold]] void recompute(LaneLists& lists, Exact exact)
{
    for (int channel = 0; channel < nbChannels; ++channel) {
        for (int lane = 0; lane < lanes; ++lane) {
            if (lists.mask[channel][lane] != 0) {
                lists.values[channel][lane] = exact(lists.inputs[channel][lane], channel);
            }
        }
    }
}

/// Recomputes lanes one by one: `exact(value, channel)` of `inputs` for the lanes of the mask, out
/// of the way of all other values.
template <typename Exact>
REMAPCOLOR_INLINE Values replaceLanes(Values const& values, Masks const& mask, Values const& inputs,
                                      Exact const& exact)
{
    LaneLists lists;
    for (int vector = 0; vector < nbColourVectors; ++vector) {
        store(values.vectors[vector], lists.values[vector]);
        store(inputs.vectors[vector], lists.inputs[vector]);
        std::memcpy(lists.mask[vector], &mask.vectors[vector], sizeof(lists.mask[vector]));
    }
    recompute(lists, exact);
    return {{load(lists.values[0]), load(lists.values[1]), load(lists.values[2])}};
}

/// Does not follow the gamma, on purpose: only a gamma of 2.2 brings the knee's end near 1.
constexpr float displayScale = 84.66F;
constexpr float displayMaximum = 255.0F;

// ---- Logarithm and power ----

constexpr std::uint32_t signBit = 0x80000000U;

/// A number as the sum of an exact product and a small rest.
struct SplitNumber {
    Values product;
    Values rest;
};

struct MultiplierLanes {
    template <typename OfChannel>
    explicit MultiplierLanes(OfChannel const& multiplier)
        : head(lanesFrom([&](int channel) { return multiplier(channel).head; })),
          tail(lanesFrom([&](int channel) { return multiplier(channel).tail; })),
          timesLog2E(lanesFrom([&](int channel) { return multiplier(channel).timesLog2E; }))
    {
    }

    Values head;
    Values tail;
    Values timesLog2E;
};

/// x = 2^k m, with m near the centre c of a table's entry.
struct SplitFloat {
    Masks k;           ///< whole numbers
    Bits exponentBits; ///< k as in a float's bits
    Masks entry;       ///< in its last four bits
    Values fromCentre; ///< m - c
};

/// Of normal, positive, finite x; k of any other is far from 0.
REMAPCOLOR_INLINE SplitFloat split(Values const& x)
{
    using RemapColorPower::firstLogCentre;
    using RemapColorPower::logIntervalBits;
    constexpr std::uint32_t halfInterval = 1U << (logIntervalBits - 1);
    constexpr std::uint32_t exponentMask = 0xff800000U;
    constexpr std::uint32_t centreMask = ~((1U << logIntervalBits) - 1);

    Bits const bits = bitsOf(x);
    Bits const rounded = bits + halfInterval;
    Bits const fromFirst = rounded - firstLogCentre;
    Bits const exponentBits = fromFirst & exponentMask;
    Values const m = valuesOf(bits - exponentBits);
    Values const c = valuesOf((rounded - exponentBits) & centreMask);
    return {asInts(fromFirst) >> 23, exponentBits, asInts(fromFirst >> logIntervalBits), m - c};
}

/// log2(x) = head + (r + small) log2(e), the head of 16 bits.
struct LogParts {
    Values head;
    Values r;
    Values small;
};

/// For normal, positive, finite x:
///   head = k + logHead,  r = (m - c) / c,  small = logTail + ln(1 + r) - r,  |r| <= 1/32
/// Source of the method: P. T. P. Tang, "Table-Driven Implementation of the Logarithm Function in
/// IEEE Floating-Point Arithmetic" (1990).
REMAPCOLOR_INLINE LogParts logParts(SplitFloat const& x, EntryLanes const& entry)
{
    Values const r = x.fromCentre * entry.inverse;
    // ln(1 + r) - r, in an order that leaves little to wait for
    Values const r2 = r * r;
    Values const curved = r2 * ((r * 0.333333343F - 0.5F) + r2 * (r * 0.200120747F - 0.250140876F));
    return {toFloats(x.k) + entry.head, r, entry.tail + curved};
}

/// multiplier * log2(x); the product of the two heads is exact.
REMAPCOLOR_INLINE SplitNumber scaledLog2(Values const& x, MultiplierLanes const& multiplier)
{
    SplitFloat const parts = split(x);
    LogParts const log = logParts(parts, logEntries(parts.entry));
    return {log.head * multiplier.head,
            log.head * multiplier.tail + (log.r + log.small) * multiplier.timesLog2E};
}

/// 2^y for y in [-126, 126], to a little more than half a unit in the last place. With y = n / 16 +
/// f: 2^(n / 16) from a table, times 2^f.
REMAPCOLOR_INLINE Values exp2(SplitNumber const& y)
{
    constexpr float rounder = 786432.0F; // 1.5 * 2^19: its last bit is worth 1/16
    constexpr int expBits = 4;
    Values const shifted = (y.product + y.rest) + rounder;
    Values const f = (y.product - (shifted - rounder)) + y.rest;
    Masks const n = asInts(bitsOf(shifted));
    PairLanes const entry = expEntries(n);
    // (2^f - 1) / f
    Values const slope =
        (f * 0.240226507F + 0.693147182F) + f * f * (f * 0.00961827952F + 0.0555054098F);
    Values const scaled = entry.head + (entry.tail + entry.head * f * slope);
    Bits const exponentBits = bitsOfInts((n >> expBits) << 23);
    return valuesOf(bitsOf(scaled) + exponentBits);
}

/// Powers of any numbers, on the way by the logarithm. Apart, for the values that the tables of a
/// prepared power do not reach.
class LogPowers {
public:
    explicit LogPowers(RemapColorPower::PreparedPower const* powers)
        : exponents(powers), multiplier([&](int channel) { return powers[channel].logMultiplier; }),
          limit(lanesFrom([&](int channel) {
              constexpr float none = 0.0F;
              return powers[channel].suitsLog ? largestLogarithm : none;
          }))
    {
    }

    /// x^exponent for x >= 0; lanes that are zero, denormal, infinite, NaN or negative, or whose
    /// power is far from 1, take the way of a single value.
    [[gnu::noinline]] Values power(Values const& x) const
    {
        Masks isOrdinary;
        Values const result = ordinaryPower(x, isOrdinary);
        return replaceLanes(result, ~isOrdinary, x, [powers = exponents](float value, int channel) {
            return RemapColorPower::power(value, powers[channel].exponent);
        });
    }

    /// 0 - power(0 - x) below 0.
    [[gnu::noinline]] Values signedPower(Values const& x) const
    {
        Masks isOrdinary;
        Values const magnitude = ordinaryPower(valuesOf(bitsOf(x) & ~signBit), isOrdinary);
        Values const result = valuesOf(bitsOf(magnitude) | (bitsOf(x) & signBit));
        return replaceLanes(result, ~isOrdinary, x, [powers = exponents](float value, int channel) {
            return RemapColorPower::signedPower(value, powers[channel].exponent);
        });
    }

private:
    [[gnu::always_inline]] Values ordinaryPower(Values const& x, Masks& isOrdinary) const
    {
        constexpr std::uint32_t smallestNormal = 0x00800000U;
        constexpr std::uint32_t nbNormals = 0x7f000000U;
        SplitNumber const y = scaledLog2(x, multiplier);
        Values const sum = y.product + y.rest;
        isOrdinary =
            (bitsOf(x) - smallestNormal < nbNormals) & (sum < limit) & (sum > 0.0F - limit);
        return exp2(y);
    }

    static constexpr float largestLogarithm = 126.0F;

    RemapColorPower::PreparedPower const* exponents;
    MultiplierLanes multiplier;
    Values limit;
};

/// Powers with the exponents of the three channels.
class PowerLanes {
public:
    explicit PowerLanes(RemapColorPower::PreparedPower const (&powers)[nbChannels])
        : exponents(powers), ofZero(lanesFrom([&](int channel) { return powers[channel].ofZero; })),
          hasTables(bitsOf(lanesFrom([&](int channel) {
              constexpr std::uint32_t allBits = 0xffffffffU;
              return __builtin_bit_cast(float, powers[channel].hasTables ? allBits : 0U);
          })))
    {
        for (int term = 0; term < nbCoefficients; ++term) {
            coefficients[term] =
                lanesFrom([&](int channel) { return powers[channel].coefficients[term]; });
        }
    }

    /// x^exponent for x >= 0.
    [[gnu::always_inline]] Values power(Values const& x) const
    {
        Masks isReached;
        Values const result = tablePower(x, isReached);
        if (any(~isReached)) [[unlikely]] {
            Values const others = LogPowers(exponents).power(x);
            return choose(isReached, result, others);
        }
        return result;
    }

    /// 0 - power(0 - x) below 0.
    [[gnu::always_inline]] Values signedPower(Values const& x) const
    {
        Masks isReached;
        Values const magnitude = tablePower(valuesOf(bitsOf(x) & ~signBit), isReached);
        // A power that the tables give is not 0, so its sign is all that 0 - power changes; -0 is
        // left to those that know odd exponents.
        isReached = isReached & ~(bitsOf(x) == signBit);
        Values const result = valuesOf(bitsOf(magnitude) | (bitsOf(x) & signBit));
        if (any(~isReached)) [[unlikely]] {
            Values const others = LogPowers(exponents).signedPower(x);
            return choose(isReached, result, others);
        }
        return result;
    }

private:
    /// Zeros, and numbers within the tables' reach.
    [[gnu::always_inline]] Values tablePower(Values const& x, Masks& isReached) const
    {
        using RemapColorPower::PreparedPower;
        SplitFloat const parts = split(x);
        Masks const isZero = bitsOf(x) == 0U;
        constexpr std::uint32_t nbPowers = PreparedPower::nbTablePowers;
        Masks const isWithin = bitsOfInts(parts.k - PreparedPower::smallestTablePower) < nbPowers;
        isReached = (isWithin & asInts(hasTables)) | isZero;

        PairLanes const whole = selectWhole(exponents, parts.k);        // 2^(k e)
        EntryLanes const centre = selectCentre(exponents, parts.entry); // c^e
        // (1 + r)^e - 1, in an order that leaves little to wait for
        Values const r = parts.fromCentre * centre.inverse;
        Values const r2 = r * r;
        Values const grown =
            r * ((coefficients[0] + r * coefficients[1]) +
                 r2 * ((coefficients[2] + r * coefficients[3]) + r2 * coefficients[4]));
        Values const head = whole.head * centre.head;
        Values const tail = whole.head * centre.tail + whole.tail * (centre.head + centre.tail);
        Values const result = head + (tail + (head + tail) * grown);
        return choose(isZero, ofZero, result);
    }

    static constexpr int nbCoefficients = RemapColorPower::PreparedPower::nbCoefficients;

    RemapColorPower::PreparedPower const* exponents;
    Values ofZero;
    Bits hasTables;
    Values coefficients[nbCoefficients];
};

// ---- Transfers ----

/// value -> (value * scale + offset)^invGamma
template <bool appliesPower>
class LevelsTransfer {
public:
    explicit LevelsTransfer(Levels const& levels)
        : scale(lanesOf(levels.scale)), offset(lanesOf(levels.offset)), invGamma(levels.invGamma)
    {
    }

    [[gnu::always_inline]] Values operator()(Values const& value) const
    {
        Values const line = value * scale + offset;
        if constexpr (appliesPower) {
            return invGamma.signedPower(line);
        }
        return line;
    }

private:
    Values scale;
    Values offset;
    PowerLanes invGamma;
};

/// value -> knee(max(value - defog, 0) * exposureFactor)^invGamma * displayScale / displayMaximum
class DisplayTransfer {
public:
    explicit DisplayTransfer(Display const& display)
        : kneeFactors(display.kneeFactor), defog(lanesOf(display.defog)),
          exposureFactor(lanesOf(display.exposureFactor)), kneeLow(lanesOf(display.kneeLow)),
          kneeFactor(lanesOf(display.kneeFactor)), invGamma(display.invGamma)
    {
        for (int vector = 0; vector < nbColourVectors; ++vector) {
            wideFactor[vector] = toDoubles(kneeFactor.vectors[vector]);
            reciprocal[vector] = {1.0 / wideFactor[vector].low, 1.0 / wideFactor[vector].high};
        }
    }

    [[gnu::always_inline]] Values operator()(Values const& value) const
    {
        Values const difference = value - defog;
        Values const defogged = choose(difference > 0.0F, difference, 0.0F); // a NaN becomes 0
        Values exposed = defogged * exposureFactor;
        Masks const isCompressed = exposed > kneeLow;
        if (any(isCompressed)) {
            Values const over = choose(isCompressed, exposed - kneeLow, 0.0F);
            exposed = choose(isCompressed, kneeLow + knee(over), exposed);
        }
        return invGamma.power(exposed) * displayScale / displayMaximum;
    }

private:
    /// log(over * factor + 1) / factor in double; only the logarithm's table and polynomial work on
    /// floats, on the upper half of their argument.
    [[gnu::always_inline]] Values knee(Values const& over) const
    {
        constexpr float largest = 0x1p120F;
        Values upper;
        DoublePair rest[nbColourVectors];
#pragma GCC unroll 3
        for (int vector = 0; vector < nbColourVectors; ++vector) {
            DoublePair const wide = toDoubles(over.vectors[vector]);
            DoublePair const& factor = wideFactor[vector];
            DoublePair const u = {wide.low * factor.low + 1.0, wide.high * factor.high + 1.0};
            upper.vectors[vector] = toFloats(u);
            DoublePair const widened = toDoubles(upper.vectors[vector]);
            rest[vector] = {u.low - widened.low, u.high - widened.high};
        }
        SplitFloat const parts = split(upper);
        EntryLanes const entry = logEntries(parts.entry);
        LogParts const log = logParts(parts, entry);
        // The rest adds rest / upper to the logarithm: 1 / upper = 2^-k / (c (1 + r)).
        constexpr std::uint32_t one = 0x3f800000U;
        Values const share = valuesOf(one - parts.exponentBits) * entry.inverse * (1.0F - log.r);
        Values const compressed = forVectors([&](int vector) __attribute__((always_inline)) {
            using RemapColorPower::ln2;
            DoublePair const head = toDoubles(log.head.vectors[vector]);
            DoublePair const r = toDoubles(log.r.vectors[vector]);
            DoublePair const small = toDoubles(log.small.vectors[vector]);
            DoublePair const ofRest = toDoubles(share.vectors[vector]);
            return toFloats(DoublePair{
                (head.low * ln2 + (r.low + (small.low + rest[vector].low * ofRest.low))) *
                    reciprocal[vector].low,
                (head.high * ln2 + (r.high + (small.high + rest[vector].high * ofRest.high))) *
                    reciprocal[vector].high});
        });
        Masks const isOrdinary =
            (upper >= 1.0F) & (upper < largest) & (kneeFactor > 0x1p-60F) & (kneeFactor < 0x1p60F);
        if (any(~isOrdinary)) [[unlikely]] {
            return replaceLanes(
                compressed, ~isOrdinary, over, [factors = kneeFactors](float value, int channel) {
                    return RemapColorPower::knee(static_cast<double>(value), factors[channel]);
                });
        }
        return compressed;
    }

    float const* kneeFactors;
    Values defog;
    Values exposureFactor;
    Values kneeLow;
    Values kneeFactor;
    PowerLanes invGamma;
    DoublePair wideFactor[nbColourVectors];
    DoublePair reciprocal[nbColourVectors];
};

// ---- Adjusted curves ----

struct NoCurves {
    explicit NoCurves(CurveTable const*) {}
    [[gnu::always_inline]] Values operator()(Values const& value) const { return value; }
};

/// Maps values as ScanlineLut does.
class Curves {
public:
    explicit Curves(CurveTable const* curveTables)
        : tables(curveTables), scale(lanesOfTables([](auto const& table) { return table.scale; })),
          offset(lanesOfTables([](auto const& table) { return table.offset; })),
          lastPosition(lanesOfTables([](auto const& table) { return table.lastPosition; }))
    {
    }

    [[gnu::always_inline]] Values operator()(Values const& value) const
    {
        Values const position = scale * value + offset;
        Masks const isBelow = 0.0F > position;
        Masks const isAbove = position > lastPosition;
        Values const notBelow = choose(position > 0.0F, position, 0.0F); // a NaN reads entry 0
        Values const valid = choose(isAbove, 0.0F, notBelow);

        Masks const entry = toInts(valid);
        Values const share = valid - toFloats(entry);
        Values first;
        Values second;
#pragma GCC unroll 3
        for (int vector = 0; vector < nbColourVectors; ++vector) {
            Neighbours const read =
                loadNeighbours(entry.vectors[vector], [&](int, std::size_t index) {
                    return tables[vector].entries + index;
                });
            first.vectors[vector] = read.first;
            second.vectors[vector] = read.second;
        }
        Values const inside = (1.0F - share) * first + share * second;

        if (any(isBelow | isAbove)) {
            return extrapolate(value, inside, isBelow, isAbove);
        }
        return inside;
    }

private:
    template <typename Number>
    Values lanesOfTables(Number const& number) const
    {
        return lanesFrom([&](int channel) { return number(tables[channel]); });
    }

    /// Below: keyY - (keyX - value) * slope. Above: keyY + (value - keyX) * slope. The difference
    /// in float, the rest in double.
    [[gnu::always_inline]] Values extrapolate(Values const& value, Values const& inside,
                                              Masks const& isBelow, Masks const& isAbove) const
    {
        auto const onItsSide = [&](auto const& ofLine) {
            return choose(isBelow,
                          lanesOfTables([&](auto const& table) { return ofLine(table.below); }),
                          lanesOfTables([&](auto const& table) { return ofLine(table.above); }));
        };
        Values const keyX = onItsSide([](EndLine const& line) { return line.keyX; });
        Values const keyY = onItsSide([](EndLine const& line) { return line.keyY; });
        Values const slope = onItsSide([](EndLine const& line) { return line.slope; });
        Values const difference = choose(isBelow, keyX, value) - choose(isBelow, value, keyX);
        // y - d * slope is y + d * -slope, to the sign of a zero.
        Values const signedSlope = choose(isBelow, negated(slope), slope);

        Values const outside = forVectors([&](int vector) {
            DoublePair const d = toDoubles(difference.vectors[vector]);
            DoublePair const s = toDoubles(signedSlope.vectors[vector]);
            DoublePair const y = toDoubles(keyY.vectors[vector]);
            return toFloats(DoublePair{y.low + d.low * s.low, y.high + d.high * s.high});
        });
        return choose(isBelow | isAbove, outside, inside);
    }

    CurveTable const* tables;
    Values scale;
    Values offset;
    Values lastPosition;
};

// ---- Clamp ----

struct NoClamp {
    explicit NoClamp(Levels const*) {}
    [[gnu::always_inline]] Values operator()(Values const& value) const { return value; }
};

/// The order of the comparisons lets a NaN through and gives `high` for reversed bounds.
class Clamp {
public:
    explicit Clamp(Levels const* levels)
        : low(lanesFrom([&](int channel) { return levels->clampRange[channel].low; })),
          high(lanesFrom([&](int channel) { return levels->clampRange[channel].high; }))
    {
    }

    [[gnu::always_inline]] Values operator()(Values const& value) const
    {
        Values const notBelow = choose(low > value, low, value);
        return choose(high < notBelow, high, notBelow);
    }

private:
    Values low;
    Values high;
};

// ---- Rows ----

static_assert(sizeof(Pixel) == 4 * sizeof(float));

REMAPCOLOR_INLINE PixelBlock loadBlock(Pixel const* pixels)
{
    auto const* const values = reinterpret_cast<float const*>(pixels);
    return {
        {load(values), load(values + lanes), load(values + 2 * lanes), load(values + 3 * lanes)}};
}

REMAPCOLOR_INLINE void storeBlock(PixelBlock const& block, Pixel* pixels)
{
    auto* const values = reinterpret_cast<float*>(pixels);
#pragma GCC unroll 4
    for (int vector = 0; vector < 4; ++vector) {
        store(block.vectors[vector], values + vector * lanes);
    }
}

REMAPCOLOR_INLINE void streamBlock(PixelBlock const& block, Pixel* pixels)
{
    auto* const values = reinterpret_cast<float*>(pixels);
#pragma GCC unroll 4
    for (int vector = 0; vector < 4; ++vector) {
        stream(block.vectors[vector], values + vector * lanes);
    }
}

/// Sends a row through transfer, curves and clamp, block by block.
template <typename Transfer, typename Adjust, typename Limit>
[[gnu::always_inline]] inline void processRow(Transfer const& transfer, Adjust const& adjust,
                                              Limit const& limit, Pixel const* source,
                                              RowTarget destination, std::size_t nbPixels)
{
    auto const processBlock = [&](PixelBlock const& in) __attribute__((always_inline))
    {
        Values const transferred = transfer(takeColour(in));
        Values const adjusted = adjust(transferred);
        return withAlphaOf(in, limit(adjusted));
    };

    bool const isStreamed =
        destination.isStreamed && reinterpret_cast<std::uintptr_t>(destination.pixels) % 64 == 0;
    std::size_t pixel = 0;
    for (; pixel + lanes <= nbPixels; pixel += lanes) {
        PixelBlock const out = processBlock(loadBlock(source + pixel));
        if (isStreamed) {
            streamBlock(out, destination.pixels + pixel);
        } else {
            storeBlock(out, destination.pixels + pixel);
        }
    }
    if (pixel < nbPixels) {
        std::size_t const restBytes = (nbPixels - pixel) * sizeof(Pixel);
        Pixel block[lanes] = {};
        std::memcpy(static_cast<void*>(block), source + pixel, restBytes);
        storeBlock(processBlock(loadBlock(block)), block);
        std::memcpy(static_cast<void*>(destination.pixels + pixel), block, restBytes);
    }
    if (isStreamed) {
        finishStreaming();
    }
}

template <bool appliesPower, typename Limit>
void processLevels(Levels const& levels, CurveTable const* curves, Pixel const* source,
                   RowTarget destination, std::size_t nbPixels)
{
    LevelsTransfer<appliesPower> const transfer(levels);
    Limit const limit(&levels);
    if (curves != nullptr) {
        processRow(transfer, Curves(curves), limit, source, destination, nbPixels);
    } else {
        processRow(transfer, NoCurves(curves), limit, source, destination, nbPixels);
    }
}

void processDisplay(Display const& display, CurveTable const* curves, Pixel const* source,
                    RowTarget destination, std::size_t nbPixels)
{
    DisplayTransfer const transfer(display);
    NoClamp const limit(nullptr);
    if (curves != nullptr) {
        processRow(transfer, Curves(curves), limit, source, destination, nbPixels);
    } else {
        processRow(transfer, NoCurves(curves), limit, source, destination, nbPixels);
    }
}

void processCurves(CurveTable const* curves, Pixel* row, std::size_t nbPixels)
{
    auto const keep = [](Values const& value) __attribute__((always_inline))
    {
        return value;
    };
    processRow(keep, Curves(curves), NoClamp(nullptr), row, {row, false}, nbPixels);
}

} // namespace

extern KernelSet const kernels;
KernelSet const kernels = {&processLevels<false, NoClamp>,
                           &processLevels<true, NoClamp>,
                           &processLevels<false, Clamp>,
                           &processLevels<true, Clamp>,
                           &processDisplay,
                           &processCurves};

} // namespace RemapColorRowKernels::INSTRUCTION_SET
