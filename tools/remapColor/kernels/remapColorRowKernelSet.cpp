// The row kernels, compiled once for each instruction set (INSTRUCTION_SET is its name): the steps
// of remapColorSteps.h, each class named by those that it takes.
//
// A row is worked on in runs of pixels. Each step of the arithmetic is a loop over a channel's
// vectors: loops are short, so that the processor has many vectors at work at once, and a step's
// numbers stay in registers. Where a table is read, the places are found for all channels first:
// then no step waits for the one before. Each step is rounded as the scalar step would be; nothing
// depends on the neighbouring lanes. Functions of the standard library are kept out: their copies
// for this instruction set might be taken for everybody's.

#include "remapColorRowKernels.h"
#include "remapColorVectorPower.h"

namespace RemapColorRowKernels::INSTRUCTION_SET {

namespace {

using RemapColorSteps::displayMaximum;
using RemapColorSteps::displayScale;

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

/// alongLevels
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

// `begin` is what a transfer does to a vector as it is taken from the row, `finish` the rest for a
// run. The result is in the colour that is returned: the first, which may be changed, or the other.

/// alongLevels, then signedPower
template <bool appliesPower>
class LevelsTransfer {
public:
    explicit LevelsTransfer(Levels const& levels)
        : lines{Line(levels, OfChannel{0}), Line(levels, OfChannel{1}), Line(levels, OfChannel{2})},
          invGamma(levels.invGamma)
    {
    }

    [[gnu::always_inline]] Floats begin(int channel, Floats value) const
    {
        return lines[channel](value);
    }

    [[gnu::always_inline]] Colour& finish(Colour& begun, Colour& raised) const
    {
        if constexpr (appliesPower) {
            invGamma(
                begun, raised, [](Floats power) __attribute__((always_inline)) { return power; });
            return raised;
        }
        return begun;
    }

private:
    Line lines[nbChannels];
    Powers<Signed> invGamma;
};

/// compress
class Knee {
public:
    Knee(Display const& display, int channel)
        : kneeLow(display.kneeLow[channel]), kneeFactor(display.kneeFactor[channel]),
          wideFactor(static_cast<double>(kneeFactor)), reciprocal(1.0 / wideFactor)
    {
    }

    [[gnu::always_inline]] bool compresses(Values const& exposed) const
    {
        Ints isCompressed{};
        forVectors([&](int at) __attribute__((always_inline)) {
            isCompressed |= load(exposed.numbers + at) > kneeLow;
        });
        return any(isCompressed);
    }

    /// u = 2^k m, with m in [1, 2)
    struct SplitArguments {
        Plane<double> k;
        Plane<double> m;
        Plane<std::uint64_t> place; ///< of the centre next to m, bytes in the table
    };

    [[gnu::always_inline]] void findArguments(Values const& exposed,
                                              SplitArguments& arguments) const
    {
        forVectors([&](int at) __attribute__((always_inline)) {
            DoublePair const over = toDoubles(load(exposed.numbers + at) - kneeLow);
            split(over.low * wideFactor + 1.0, arguments, at);
            split(over.high * wideFactor + 1.0, arguments, at + doubleLanes);
        });
    }

    [[gnu::always_inline]] void compress(Values& exposed, SplitArguments const& arguments) const
    {
        if (!(kneeFactor > smallestFactor && kneeFactor < largestFactor)) [[unlikely]] {
            compressSingly(exposed);
            return;
        }
        forVectors([&](int at) __attribute__((always_inline)) {
            Floats const value = load(exposed.numbers + at);
            Floats const over = value - kneeLow;
            Floats const knee =
                toFloats({scaledLog(arguments, at), scaledLog(arguments, at + doubleLanes)});
            Floats const compressed = kneeLow + (over < infinity ? knee : over);
            store(value > kneeLow ? compressed : value, exposed.numbers + at);
        });
    }

private:
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

    [[gnu::noinline, gnu::cold]] void compressSingly(Values& exposed) const
    {
        for (int pixel = 0; pixel < runPixels; ++pixel) {
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

    float kneeLow;
    float kneeFactor;
    double wideFactor;
    double reciprocal;
};

/// expose, compress, power, display
class DisplayTransfer {
public:
    explicit DisplayTransfer(Display const& of)
        : display(of), knees{Knee(of, 0), Knee(of, 1), Knee(of, 2)}, invGamma(of.invGamma)
    {
    }

    [[gnu::always_inline]] Floats begin(int channel, Floats value) const
    {
        Floats const difference = value - display.defog[channel];
        Floats const defogged = larger(difference, Floats{}); // a NaN becomes 0
        return defogged * display.exposureFactor[channel];
    }

    [[gnu::always_inline]] Colour& finish(Colour& exposed, Colour& raised) const
    {
        compress(exposed);
        invGamma(
            exposed, raised, [](Floats power) __attribute__((always_inline)) {
                return power * displayScale / displayMaximum;
            });
        return raised;
    }

private:
    [[gnu::always_inline]] void compress(Colour& exposed) const
    {
        Knee::SplitArguments arguments[nbChannels];
        bool areCompressed[nbChannels];
        forChannels([&](int channel) __attribute__((always_inline)) {
            areCompressed[channel] = knees[channel].compresses(exposed[channel]);
            if (areCompressed[channel]) {
                knees[channel].findArguments(exposed[channel], arguments[channel]);
            }
        });
        forChannels([&](int channel) __attribute__((always_inline)) {
            if (areCompressed[channel]) {
                knees[channel].compress(exposed[channel], arguments[channel]);
            }
        });
    }

    Display const& display;
    Knee knees[nbChannels];
    Powers<Unsigned> invGamma;
};

// ---- Adjusted curves ----

struct NoCurves {
    [[gnu::always_inline]] Colour& operator()(Colour& values, Colour&) const { return values; }
};

/// adjust
class Curve {
public:
    explicit Curve(CurveTable const& curveTable) : table(curveTable) {}

    /// The entries before the values, and how far the values are on the way to the next ones.
    /// Whether all are inside the table.
    [[gnu::always_inline]] bool findEntries(Values const& values, Plane<std::int32_t>& entries,
                                            Values& shares) const
    {
        Floats const lastPosition = broadcast(table.lastPosition);
        Words isOutside{};
        forVectors([&](int at) __attribute__((always_inline)) {
            Floats const position = positionOf(load(values.numbers + at));
            Floats const notBelow = larger(position, Floats{}); // a NaN reads entry 0
            Floats const valid = smaller(notBelow, lastPosition);
            Ints const entry = toInts(valid);
            store(entry, entries.numbers + at);
            store(valid - toFloats(entry), shares.numbers + at);
            isOutside |= bitsOf(valid) ^ bitsOf(position);
        });
        return !any(isOutside != 0U);
    }

    [[gnu::always_inline]] void interpolate(Plane<std::int32_t> const& entries,
                                            Values const& shares, Values& adjusted) const
    {
        forVectors([&](int at) __attribute__((always_inline)) {
            Neighbours const read = loadNeighbours(table.entries, entries.numbers + at);
            Floats const share = load(shares.numbers + at);
            store((1.0F - share) * read.first + share * read.second, adjusted.numbers + at);
        });
    }

    /// The lines below and above the table.
    [[gnu::noinline]] void extrapolate(Values const& values, Values& adjusted) const
    {
        forVectors([&](int at) __attribute__((always_inline)) {
            Floats const value = load(values.numbers + at);
            Floats const position = positionOf(value);
            Ints const isBelow = 0.0F > position;
            if (any(isBelow)) {
                auto const [d, slope, keyY] = along(table.below, table.below.keyX - value);
                Floats const below = toFloats({keyY - d.low * slope, keyY - d.high * slope});
                store(isBelow ? below : load(adjusted.numbers + at), adjusted.numbers + at);
            }
            Ints const isAbove = position > table.lastPosition;
            if (any(isAbove)) {
                auto const [d, slope, keyY] = along(table.above, value - table.above.keyX);
                Floats const above = toFloats({keyY + d.low * slope, keyY + d.high * slope});
                store(isAbove ? above : load(adjusted.numbers + at), adjusted.numbers + at);
            }
        });
    }

private:
    /// What the double arithmetic along a line is made of.
    struct Along {
        DoublePair difference;
        double slope;
        double keyY;
    };

    [[gnu::always_inline]] static Along along(EndLine const& line, Floats difference)
    {
        return {toDoubles(difference), static_cast<double>(line.slope),
                static_cast<double>(line.keyY)};
    }

    [[gnu::always_inline]] Floats positionOf(Floats value) const
    {
        return table.scale * value + table.offset;
    }

    CurveTable const& table;
};

class Curves {
public:
    explicit Curves(CurveTable const* tables)
        : channels{Curve(tables[0]), Curve(tables[1]), Curve(tables[2])}
    {
    }

    [[gnu::always_inline]] Colour& operator()(Colour& values, Colour& adjusted) const
    {
        Plane<std::int32_t> entries[nbChannels];
        Colour shares;
        bool areInside[nbChannels];
        forChannels([&](int channel) __attribute__((always_inline)) {
            areInside[channel] =
                channels[channel].findEntries(values[channel], entries[channel], shares[channel]);
        });
        forChannels([&](int channel) __attribute__((always_inline)) {
            channels[channel].interpolate(entries[channel], shares[channel], adjusted[channel]);
            if (!areInside[channel]) {
                channels[channel].extrapolate(values[channel], adjusted[channel]);
            }
        });
        return adjusted;
    }

private:
    Curve channels[nbChannels];
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

/// limit
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
        return smaller(high, larger(low, value));
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
REMAPCOLOR_INLINE void writeRun(RowTarget destination, Result const& result)
{
    if (destination.isStreamed) {
        forVectors([&](int at) __attribute__((always_inline)) {
            streamBlock(result(at), destination.pixels + at);
        });
    } else {
        forVectors([&](int at) __attribute__((always_inline)) {
            storeBlock(result(at), destination.pixels + at);
        });
    }
}

/// Sends a row through `processRun(source, destination)`, run by run; the last one may end in
/// pixels that are not the row's.
template <typename ProcessRun>
REMAPCOLOR_INLINE void forRuns(Pixel const* source, RowTarget destination, std::size_t nbPixels,
                               ProcessRun const& processRun)
{
    constexpr std::uintptr_t streamAlignment = 64;
    bool const isStreamed =
        destination.isStreamed &&
        reinterpret_cast<std::uintptr_t>(destination.pixels) % streamAlignment == 0;
    std::size_t const nbWhole = nbPixels - nbPixels % runPixels;
    for (std::size_t pixel = 0; pixel < nbWhole; pixel += runPixels) {
        processRun(source + pixel, RowTarget{destination.pixels + pixel, isStreamed});
    }
    if (nbWhole < nbPixels) {
        std::size_t const restBytes = (nbPixels - nbWhole) * sizeof(Pixel);
        Pixel run[runPixels] = {};
        std::memcpy(static_cast<void*>(run), source + nbWhole, restBytes);
        processRun(run, RowTarget{run, false});
        std::memcpy(static_cast<void*>(destination.pixels + nbWhole), run, restBytes);
    }
    if (isStreamed) {
        finishStreaming();
    }
}

/// What a row goes through.
template <typename Transfer, typename Adjust, typename Limit>
struct Steps {
    Transfer transfer;
    Adjust adjust;
    Limit limits[nbChannels];
};

template <typename RowSteps>
[[gnu::noinline]] void processRun(RowSteps const& steps, Pixel const* source, RowTarget destination)
{
    Colour begun;
    forVectors([&](int at) __attribute__((always_inline)) {
        prefetchBlock(source + at, 2);
        Colours const taken = takeColour(loadBlock(source + at));
#pragma GCC unroll 3
        for (int channel = 0; channel < nbChannels; ++channel) {
            store(steps.transfer.begin(channel, taken.vectors[channel]),
                  begun[channel].numbers + at);
        }
    });
    Colour finished;
    Colour& transferred = steps.transfer.finish(begun, finished);
    Colour mapped;
    Colour const& adjusted = steps.adjust(transferred, mapped);
    writeRun(
        destination, [&](int at) __attribute__((always_inline)) {
            return withAlphaOf(loadBlock(source + at),
                               Colours{{steps.limits[0](load(adjusted[0].numbers + at)),
                                        steps.limits[1](load(adjusted[1].numbers + at)),
                                        steps.limits[2](load(adjusted[2].numbers + at))}});
        });
}

template <typename RowSteps>
void processRow(RowSteps const& steps, Pixel const* source, RowTarget destination,
                std::size_t nbPixels)
{
    forRuns(source, destination, nbPixels,
            [&](Pixel const* from, RowTarget to) { processRun(steps, from, to); });
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
    forRuns(source, destination, nbPixels, [&](Pixel const* from, RowTarget to) {
        writeRun(
            to, [&](int at) __attribute__((always_inline)) {
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
    auto const process = [&]<typename Adjust>(Adjust const& adjust) {
        processRow(Steps<Transfer, Adjust, Limit>{Transfer(levels),
                                                  adjust,
                                                  {Limit(levels, OfChannel{0}),
                                                   Limit(levels, OfChannel{1}),
                                                   Limit(levels, OfChannel{2})}},
                   source, destination, nbPixels);
    };
    if (curves != nullptr) {
        process(Curves(curves));
    } else if constexpr (appliesPower) {
        process(NoCurves());
    } else {
        processLine<Limit>(levels, source, destination, nbPixels);
    }
}

void processDisplay(Display const& display, CurveTable const* curves, Pixel const* source,
                    RowTarget destination, std::size_t nbPixels)
{
    if (curves != nullptr) {
        processRow(
            Steps<DisplayTransfer, Curves, NoClamp>{DisplayTransfer(display), Curves(curves), {}},
            source, destination, nbPixels);
    } else {
        processRow(
            Steps<DisplayTransfer, NoCurves, NoClamp>{DisplayTransfer(display), NoCurves(), {}},
            source, destination, nbPixels);
    }
}

} // namespace

extern KernelSet const kernels;
KernelSet const kernels = {&processLevels<false, NoClamp>, &processLevels<true, NoClamp>,
                           &processLevels<false, Clamp>, &processLevels<true, Clamp>,
                           &processDisplay};

} // namespace RemapColorRowKernels::INSTRUCTION_SET
