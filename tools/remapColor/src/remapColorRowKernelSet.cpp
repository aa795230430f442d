// The row kernels, compiled once for each instruction set (INSTRUCTION_SET is its name).
//
// A row is worked on in runs of pixels, a channel at a time. Each step of the arithmetic is a loop
// over the run's vectors: loops are short, so that the processor has many vectors at work at once,
// and a step's numbers stay in registers. Each step is rounded as the scalar step would be; nothing
// depends on the neighbouring lanes. Functions of the standard library are kept out: their copies
// for this instruction set might be taken for everybody's.

#include "remapColorRowKernels.h"
#include "remapColorVectorPower.h"

namespace RemapColorRowKernels::INSTRUCTION_SET {

namespace {

/// Does not follow the gamma, on purpose: only a gamma of 2.2 brings the knee's end near 1.
constexpr float displayScale = 84.66F;
constexpr float displayMaximum = 255.0F;

// ---- Transfers ----

/// Numbers of one channel, in all lanes.
struct OfChannel {
    template <typename Number>
    Floats operator()(Number const& number) const
    {
        return broadcast(number(channel));
    }
    int channel;
};

/// Numbers of all channels, in the order of a pixel.
struct InTurns {
    template <typename Number>
    Floats operator()(Number const& number) const
    {
        Floats numbers{};
        for (int lane = 0; lane < lanes; ++lane) {
            constexpr int components = 4;
            int const component = lane % components;
            numbers[lane] = component < nbChannels ? number(component) : 0.0F;
        }
        return numbers;
    }
};

/// value -> value * scale + offset
class Line {
public:
    template <typename Numbers>
    Line(Levels const& levels, Numbers const& numbers)
        : scale(numbers([&](int channel) { return levels.scale[channel]; })),
          offset(numbers([&](int channel) { return levels.offset[channel]; }))
    {
    }

    [[gnu::always_inline]] Floats operator()(Floats value) const { return value * scale + offset; }

private:
    Floats scale;
    Floats offset;
};

struct NoTransfer {
    [[gnu::always_inline]] void operator()(Values const& values, Values& result, int) const
    {
        result = values;
    }
};

/// value -> (value * scale + offset)^invGamma
template <bool appliesPower>
class LevelsTransfer {
public:
    LevelsTransfer(Levels const& levels, int channel)
        : line(levels, OfChannel{channel}), invGamma(levels.invGamma[channel])
    {
    }

    [[gnu::always_inline]] void operator()(Values const& values, Values& result,
                                           int nbVectors) const
    {
        Values onLine;
        Values& target = appliesPower ? onLine : result;
        forVectors(
            nbVectors, [&](int at) __attribute__((always_inline)) {
                store(line(load(values.numbers + at)), target.numbers + at);
            });
        if constexpr (appliesPower) {
            invGamma(
                onLine, result, nbVectors,
                [](Floats power) __attribute__((always_inline)) { return power; });
        }
    }

private:
    Line line;
    Power<Signed> invGamma;
};

/// value -> knee(max(value - defog, 0) * exposureFactor)^invGamma * displayScale / displayMaximum
class DisplayTransfer {
public:
    DisplayTransfer(Display const& display, int channel)
        : defog(display.defog[channel]), exposureFactor(display.exposureFactor[channel]),
          kneeLow(display.kneeLow[channel]), kneeFactor(display.kneeFactor[channel]),
          wideFactor(static_cast<double>(kneeFactor)), reciprocal(1.0 / wideFactor),
          invGamma(display.invGamma[channel])
    {
    }

    [[gnu::always_inline]] void operator()(Values const& values, Values& result,
                                           int nbVectors) const
    {
        Values exposed;
        Ints isCompressed{};
        forVectors(
            nbVectors, [&](int at) __attribute__((always_inline)) {
                Floats const difference = load(values.numbers + at) - defog;
                Floats const defogged = difference > 0.0F ? difference : 0.0F; // a NaN becomes 0
                Floats const value = defogged * exposureFactor;
                store(value, exposed.numbers + at);
                isCompressed |= value > kneeLow;
            });
        if (any(isCompressed)) {
            compress(exposed, nbVectors);
        }
        invGamma(
            exposed, result, nbVectors, [](Floats power) __attribute__((always_inline)) {
                return power * displayScale / displayMaximum;
            });
    }

private:
    /// value -> kneeLow + log((value - kneeLow) * kneeFactor + 1) / kneeFactor above kneeLow, in
    /// double
    [[gnu::always_inline]] void compress(Values& exposed, int nbVectors) const
    {
        if (!(kneeFactor > smallestFactor && kneeFactor < largestFactor)) [[unlikely]] {
            compressSingly(exposed, nbVectors);
            return;
        }
        SplitArguments arguments;
        forVectors(
            nbVectors, [&](int at) __attribute__((always_inline)) {
                DoublePair const over = toDoubles(load(exposed.numbers + at) - kneeLow);
                split(over.low * wideFactor + 1.0, arguments, at);
                split(over.high * wideFactor + 1.0, arguments, at + doubleLanes);
            });
        forVectors(
            nbVectors, [&](int at) __attribute__((always_inline)) {
                Floats const value = load(exposed.numbers + at);
                Floats const over = value - kneeLow;
                Floats const knee =
                    toFloats({scaledLog(arguments, at), scaledLog(arguments, at + doubleLanes)});
                Floats const compressed = kneeLow + (over < infinity ? knee : over);
                store(value > kneeLow ? compressed : value, exposed.numbers + at);
            });
    }

    /// u = 2^k m, with m in [1, 2)
    struct SplitArguments {
        Plane<double> k;
        Plane<double> m;
        Plane<std::uint64_t> place; ///< of the centre next to m, bytes in the table
    };

    /// Of u >= 1; others have places within the table too.
    [[gnu::always_inline]] static void split(Doubles u, SplitArguments& arguments, int at)
    {
        using RemapColorPower::kneeIndexBits;
        constexpr int mantissaBits = 52;
        constexpr std::uint64_t mantissaMask = (std::uint64_t{1} << mantissaBits) - 1;
        constexpr std::uint64_t one = 0x3ff0000000000000;
        constexpr std::uint64_t halfInterval = std::uint64_t{1}
                                               << (mantissaBits - kneeIndexBits - 1);
        constexpr int entryBits = 4;
        static_assert(sizeof(RemapColorPower::KneeEntry) == 1 << entryBits);
        constexpr std::uint64_t placeMask = ~((std::uint64_t{1} << entryBits) - 1);
        // A double of this exponent holds a whole number in its last bits.
        constexpr std::uint64_t wholeExponent = 0x4330000000000000;
        constexpr double exponentOfOne = 0x1p52 + 1023.0;

        auto const bits = reinterpret_cast<LongWords>(u);
        LongWords const mantissa = bits & mantissaMask;
        LongWords const k = (bits >> mantissaBits) | wholeExponent;
        store(reinterpret_cast<Doubles>(k) - exponentOfOne, arguments.k.numbers + at);
        store(reinterpret_cast<Doubles>(mantissa | one), arguments.m.numbers + at);
        store((mantissa + halfInterval) >> (mantissaBits - kneeIndexBits - entryBits) & placeMask,
              arguments.place.numbers + at);
    }

    /// ln(2^k m) / kneeFactor, nearly always rounded as the exact one
    [[gnu::always_inline]] Doubles scaledLog(SplitArguments const& arguments, int at) const
    {
        auto const [inverse, log] = kneeEntries(arguments.place.numbers + at);
        Doubles const r = load(arguments.m.numbers + at) * inverse - 1.0;
        // ln(1 + r), |r| <= 1/256
        Doubles const r2 = r * r;
        Doubles const small = r + r2 * ((r * (1.0 / 3.0) - 0.5) - r2 * 0.25);
        return (load(arguments.k.numbers + at) * RemapColorPower::ln2 + log + small) * reciprocal;
    }

    [[gnu::noinline, gnu::cold]] void compressSingly(Values& exposed, int nbVectors) const
    {
        for (int pixel = 0; pixel < nbVectors * lanes; ++pixel) {
            float& value = exposed.numbers[pixel];
            if (value > kneeLow) {
                auto const over = static_cast<double>(value - kneeLow);
                value = kneeLow + RemapColorPower::knee(over, kneeFactor);
            }
        }
    }

    static constexpr float smallestFactor = 0x1p-60F;
    static constexpr float largestFactor = 0x1p60F;
    static constexpr float infinity = __builtin_inff();

    float defog;
    float exposureFactor;
    float kneeLow;
    float kneeFactor;
    double wideFactor;
    double reciprocal;
    Power<Unsigned> invGamma;
};

// ---- Adjusted curves ----

struct NoCurve {
    [[gnu::always_inline]] void operator()(Values const& values, Values& adjusted, int) const
    {
        adjusted = values;
    }
};

/// Maps values as ScanlineLut does.
class Curve {
public:
    explicit Curve(CurveTable const& curveTable) : table(curveTable) {}

    [[gnu::always_inline]] void operator()(Values const& values, Values& adjusted,
                                           int nbVectors) const
    {
        Plane<std::int32_t> entries;
        Values shares;
        bool const areInside = findEntries(values, entries, shares, nbVectors);
        interpolate(entries, shares, adjusted, nbVectors);
        if (!areInside) {
            extrapolate(values, adjusted, nbVectors);
        }
    }

private:
    [[gnu::always_inline]] Floats positionOf(Floats value) const
    {
        return table.scale * value + table.offset;
    }

    /// The entries before the values, and how far the values are on the way to the next ones.
    /// Whether all are inside the table.
    [[gnu::always_inline]] bool findEntries(Values const& values, Plane<std::int32_t>& entries,
                                            Values& shares, int nbVectors) const
    {
        Ints isOutside{};
        forVectors(
            nbVectors, [&](int at) __attribute__((always_inline)) {
                Floats const position = positionOf(load(values.numbers + at));
                Ints const isAbove = position > table.lastPosition;
                Floats const notBelow = position > 0.0F ? position : 0.0F; // a NaN reads entry 0
                Floats const valid = isAbove ? Floats{} : notBelow;
                Ints const entry = toInts(valid);
                store(entry, entries.numbers + at);
                store(valid - toFloats(entry), shares.numbers + at);
                isOutside |= isAbove | (0.0F > position);
            });
        return !any(isOutside);
    }

    [[gnu::always_inline]] void interpolate(Plane<std::int32_t> const& entries,
                                            Values const& shares, Values& adjusted,
                                            int nbVectors) const
    {
        forVectors(
            nbVectors, [&](int at) __attribute__((always_inline)) {
                Neighbours const read = loadNeighbours(table.entries, entries.numbers + at);
                Floats const share = load(shares.numbers + at);
                store((1.0F - share) * read.first + share * read.second, adjusted.numbers + at);
            });
    }

    /// Below: keyY - (keyX - value) * slope. Above: keyY + (value - keyX) * slope. The difference
    /// in float, the rest in double.
    [[gnu::noinline]] void extrapolate(Values const& values, Values& adjusted, int nbVectors) const
    {
        auto const along =
            [](EndLine const& line, Floats difference, float slope) __attribute__((always_inline))
        {
            // y - d * slope is y + d * -slope, to the sign of a zero.
            DoublePair const d = toDoubles(difference);
            auto const s = static_cast<double>(slope);
            auto const y = static_cast<double>(line.keyY);
            return toFloats(DoublePair{y + d.low * s, y + d.high * s});
        };
        forVectors(nbVectors, [&](int at) {
            Floats const value = load(values.numbers + at);
            Floats const position = positionOf(value);
            Ints const isBelow = 0.0F > position;
            Ints const isAbove = position > table.lastPosition;
            if (any(isBelow | isAbove)) {
                Floats const below =
                    along(table.below, table.below.keyX - value, -table.below.slope);
                Floats const above =
                    along(table.above, value - table.above.keyX, table.above.slope);
                Floats const inside = load(adjusted.numbers + at);
                store(isBelow ? below : isAbove ? above : inside, adjusted.numbers + at);
            }
        });
    }

    CurveTable const& table;
};

// ---- Clamp ----

struct NoClamp {
    NoClamp() = default;

    template <typename Numbers>
    NoClamp(Levels const&, Numbers const&)
    {
    }

    [[gnu::always_inline]] Floats operator()(Floats value) const { return value; }
};

/// The order of the comparisons lets a NaN through and gives `high` for reversed bounds.
class Clamp {
public:
    template <typename Numbers>
    Clamp(Levels const& levels, Numbers const& numbers)
        : low(numbers([&](int channel) { return levels.clampRange[channel].low; })),
          high(numbers([&](int channel) { return levels.clampRange[channel].high; }))
    {
    }

    [[gnu::always_inline]] Floats operator()(Floats value) const
    {
        Floats const notBelow = low > value ? low : value;
        return high < notBelow ? high : notBelow;
    }

private:
    Floats low;
    Floats high;
};

// ---- Rows ----

static_assert(sizeof(Pixel) == 4 * sizeof(float));

REMAPCOLOR_INLINE PixelBlock loadBlock(Pixel const* pixels)
{
    auto const* const values = reinterpret_cast<float const*>(pixels);
    return {
        {load(values), load(values + lanes), load(values + 2 * lanes), load(values + 3 * lanes)}};
}

/// Asks for the source of the block that is so many runs ahead; the processor by itself does not
/// look beyond a page. A whole number, because the row may end before.
REMAPCOLOR_INLINE void prefetchBlock(Pixel const* pixels, int runsAhead)
{
    constexpr int lineBytes = 64;
    std::uintptr_t const block = reinterpret_cast<std::uintptr_t>(pixels) +
                                 static_cast<std::uintptr_t>(runsAhead) * runPixels * sizeof(Pixel);
#pragma GCC unroll 4
    for (int byte = 0; byte < lanes * static_cast<int>(sizeof(Pixel)); byte += lineBytes) {
        __builtin_prefetch(reinterpret_cast<void const*>(block + static_cast<unsigned>(byte)));
    }
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

/// Writes `result(at)`, the block of each of a run's vectors.
template <typename Result>
REMAPCOLOR_INLINE void writeRun(RowTarget destination, int nbVectors, Result const& result)
{
    if (destination.isStreamed) {
        forVectors(
            nbVectors, [&](int at) __attribute__((always_inline)) {
                streamBlock(result(at), destination.pixels + at);
            });
    } else {
        forVectors(
            nbVectors, [&](int at) __attribute__((always_inline)) {
                storeBlock(result(at), destination.pixels + at);
            });
    }
}

/// Sends a row through `processRun(source, destination, nbVectors)`, run by run.
template <typename ProcessRun>
REMAPCOLOR_INLINE void forRuns(Pixel const* source, RowTarget destination, std::size_t nbPixels,
                               ProcessRun const& processRun)
{
    constexpr std::uintptr_t streamAlignment = 64;
    bool const isStreamed =
        destination.isStreamed &&
        reinterpret_cast<std::uintptr_t>(destination.pixels) % streamAlignment == 0;
    std::size_t const nbWhole = nbPixels - nbPixels % lanes;
    for (std::size_t pixel = 0; pixel < nbWhole; pixel += runPixels) {
        std::size_t const rest = nbWhole - pixel;
        int const nbVectors = static_cast<int>(rest < runPixels ? rest : runPixels) / lanes;
        processRun(source + pixel, RowTarget{destination.pixels + pixel, isStreamed}, nbVectors);
    }
    if (nbWhole < nbPixels) {
        std::size_t const restBytes = (nbPixels - nbWhole) * sizeof(Pixel);
        Pixel block[lanes] = {};
        std::memcpy(static_cast<void*>(block), source + nbWhole, restBytes);
        processRun(block, RowTarget{block, false}, 1);
        std::memcpy(static_cast<void*>(destination.pixels + nbWhole), block, restBytes);
    }
    if (isStreamed) {
        finishStreaming();
    }
}

/// What one channel's values go through.
template <typename Transfer, typename Adjust, typename Limit>
struct Steps {
    Transfer transfer;
    Adjust adjust;
    Limit limit;
};

template <typename ChannelSteps>
[[gnu::noinline]] void processRun(ChannelSteps const* steps, Pixel const* source,
                                  RowTarget destination, int nbVectors)
{
    Values colour[nbChannels];
    forVectors(
        nbVectors, [&](int at) __attribute__((always_inline)) {
            prefetchBlock(source + at, 2);
            Colours const taken = takeColour(loadBlock(source + at));
            store(taken.vectors[0], colour[0].numbers + at);
            store(taken.vectors[1], colour[1].numbers + at);
            store(taken.vectors[2], colour[2].numbers + at);
        });
    for (int channel = 0; channel < nbChannels; ++channel) {
        Values transferred;
        steps[channel].transfer(colour[channel], transferred, nbVectors);
        steps[channel].adjust(transferred, colour[channel], nbVectors);
    }
    writeRun(
        destination, nbVectors, [&](int at) __attribute__((always_inline)) {
            return withAlphaOf(loadBlock(source + at),
                               Colours{{steps[0].limit(load(colour[0].numbers + at)),
                                        steps[1].limit(load(colour[1].numbers + at)),
                                        steps[2].limit(load(colour[2].numbers + at))}});
        });
}

/// Sends a row through the steps that `stepsOf(channel)` gives.
template <typename StepsOf>
void processRow(StepsOf const& stepsOf, Pixel const* source, RowTarget destination,
                std::size_t nbPixels)
{
    decltype(stepsOf(0)) const steps[nbChannels] = {stepsOf(0), stepsOf(1), stepsOf(2)};
    forRuns(source, destination, nbPixels, [&](Pixel const* from, RowTarget to, int nbVectors) {
        processRun(steps, from, to, nbVectors);
    });
}

/// Without powers and curves: all channels at once, as they stand in the row.
template <typename Limit>
void processLine(Levels const& levels, Pixel const* source, RowTarget destination,
                 std::size_t nbPixels)
{
    Line const line(levels, InTurns());
    Limit const limit(levels, InTurns());
    auto const process = [&](Floats value) __attribute__((always_inline))
    {
        return limit(line(value));
    };
    forRuns(source, destination, nbPixels, [&](Pixel const* from, RowTarget to, int nbVectors) {
        writeRun(
            to, nbVectors, [&](int at) __attribute__((always_inline)) {
                prefetchBlock(from + at, 1);
                PixelBlock const in = loadBlock(from + at);
                return withAlphaOf(in,
                                   PixelBlock{{process(in.vectors[0]), process(in.vectors[1]),
                                               process(in.vectors[2]), process(in.vectors[3])}});
            });
    });
}

template <bool appliesPower, typename Limit>
void processLevels(Levels const& levels, CurveTable const* curves, Pixel const* source,
                   RowTarget destination, std::size_t nbPixels)
{
    using Transfer = LevelsTransfer<appliesPower>;
    auto const limitOf = [&](int channel) { return Limit(levels, OfChannel{channel}); };
    if (curves != nullptr) {
        auto const stepsOf = [&](int channel) -> Steps<Transfer, Curve, Limit> {
            return {Transfer(levels, channel), Curve(curves[channel]), limitOf(channel)};
        };
        processRow(stepsOf, source, destination, nbPixels);
    } else if constexpr (appliesPower) {
        auto const stepsOf = [&](int channel) -> Steps<Transfer, NoCurve, Limit> {
            return {Transfer(levels, channel), NoCurve(), limitOf(channel)};
        };
        processRow(stepsOf, source, destination, nbPixels);
    } else {
        processLine<Limit>(levels, source, destination, nbPixels);
    }
}

void processDisplay(Display const& display, CurveTable const* curves, Pixel const* source,
                    RowTarget destination, std::size_t nbPixels)
{
    if (curves != nullptr) {
        auto const stepsOf = [&](int channel) -> Steps<DisplayTransfer, Curve, NoClamp> {
            return {DisplayTransfer(display, channel), Curve(curves[channel]), NoClamp()};
        };
        processRow(stepsOf, source, destination, nbPixels);
    } else {
        auto const stepsOf = [&](int channel) -> Steps<DisplayTransfer, NoCurve, NoClamp> {
            return {DisplayTransfer(display, channel), NoCurve(), NoClamp()};
        };
        processRow(stepsOf, source, destination, nbPixels);
    }
}

void processCurves(CurveTable const* curves, Pixel* row, std::size_t nbPixels)
{
    auto const stepsOf = [&](int channel) -> Steps<NoTransfer, Curve, NoClamp> {
        return {NoTransfer(), Curve(curves[channel]), NoClamp()};
    };
    processRow(stepsOf, row, {row, false}, nbPixels);
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
