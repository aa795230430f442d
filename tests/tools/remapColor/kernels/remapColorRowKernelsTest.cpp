// The row kernels of every instruction set against each other and against the plain steps, and
// their powers against the platform's.

#include "remapColorRowKernels.h"
#include "remapColorAdjustedCurves.h"

#include "support/StandardPixels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace RemapColorRowKernels;
using Pixels = std::vector<Pixel>;
using Stage = RemapColorController::AdjustedCurveScanline;

/// Three keys from 0 to about 1; the last may lie at -0.
template <typename Between>
RCShdPtr<BzFunctionCurve> makeCurve(Between const& between, bool endsAtZero)
{
    auto curve = makeShared<BzFunctionCurve>(BzFunctionCurve::Tangent, 0);
    float const end = between(0.5F, 1);
    for (float const x : {0.0F, end / 2, end}) {
        float const y = x == end && endsAtZero ? -0.0F : between(-1, 2);
        for (float const side : {-0.1F, 0.0F, 0.1F}) {
            curve->getCtrlPoints().push_back({x + side, side == 0 ? y : y + between(-0.3F, 0.3F)});
        }
    }
    return curve;
}

/// Looks with all the kernels' branches: exponents for the fast and for the slow way, lines beyond
/// both ends of the curves, reversed and plain clamp ranges.
struct Look {
    explicit Look(std::uint32_t seed)
    {
        std::mt19937 random(seed);
        auto const between = [&](float low, float high) {
            return std::uniform_real_distribution<float>(low, high)(random);
        };
        constexpr float exponents[] = {1 / 2.2F, 3.0F, -1.0F, 7.9F, 40.0F, 1e-39F, 0.0F, 8.5e37F};
        for (int channel = 0; channel < nbChannels; ++channel) {
            levels.scale[channel] = between(0.2F, 3);
            levels.offset[channel] = seed % 4 == 1 ? 0.0F : between(-0.5F, 0.5F);
            levels.clampRange[channel] = {between(0, 0.6F), between(0.4F, 1)};
            display.defog[channel] = between(0, 0.01F);
            display.exposureFactor[channel] = between(0.5F, 20);
            display.kneeLow[channel] = between(0.2F, 2);
            // Beyond 2^-60 the vectors' logarithm is not used.
            display.kneeFactor[channel] = std::exp2(seed % 8 == 0 ? -70.0F : between(-31, 3));
            RemapColorPower::PreparedPower power(exponents[random() % std::size(exponents)]);
            power.makeTables();
            levels.invGamma[channel] = display.invGamma[channel] = power;
        }
        RCShdPtr<BzFunctionCurve> red = makeCurve(between, seed % 2 == 0);
        RCShdPtr<BzFunctionCurve> green = makeCurve(between, seed % 2 == 1);
        RCShdPtr<BzFunctionCurve> blue = makeCurve(between, seed % 3 == 0);
        stage = makeShared<Stage>(true, red, green, blue);
        curves = stage->getTables();
    }

    using Kernel = void (*)(KernelSet const&, Look const&, Pixel const*, RowTarget, std::size_t);

    Levels levels;
    Display display;
    RCShdPtr<Stage> stage;
    CurveTable const* curves;
};

template <auto member, bool hasCurves>
void runLevels(KernelSet const& set, Look const& look, Pixel const* source, RowTarget target,
               std::size_t nbPixels)
{
    (set.*member)(look.levels, hasCurves ? look.curves : nullptr, source, target, nbPixels);
}

template <bool hasCurves>
void runDisplay(KernelSet const& set, Look const& look, Pixel const* source, RowTarget target,
                std::size_t nbPixels)
{
    set.display(look.display, hasCurves ? look.curves : nullptr, source, target, nbPixels);
}

/// A kernel, and how to do without it: the transfer alone, then step by step.
struct Path {
    Look::Kernel kernel;
    Look::Kernel transfer;
    bool adjusts;
    bool clamps;
};

template <auto member, auto transfer, bool hasCurves>
constexpr Path levelsPath{&runLevels<member, hasCurves>, &runLevels<transfer, false>, hasCurves,
                          member != transfer};

template <bool hasCurves>
constexpr Path displayPath{&runDisplay<hasCurves>, &runDisplay<false>, hasCurves, false};

constexpr Path allPaths[] = {levelsPath<&KernelSet::line, &KernelSet::line, true>,
                             levelsPath<&KernelSet::line, &KernelSet::line, false>,
                             levelsPath<&KernelSet::linePower, &KernelSet::linePower, true>,
                             levelsPath<&KernelSet::linePower, &KernelSet::linePower, false>,
                             levelsPath<&KernelSet::lineClamp, &KernelSet::line, true>,
                             levelsPath<&KernelSet::lineClamp, &KernelSet::line, false>,
                             levelsPath<&KernelSet::linePowerClamp, &KernelSet::linePower, true>,
                             levelsPath<&KernelSet::linePowerClamp, &KernelSet::linePower, false>,
                             displayPath<true>,
                             displayPath<false>};

std::vector<InInstructionSet> availableSets()
{
    std::vector<InInstructionSet> sets;
    std::copy_if(inAllInstructionSets.begin(), inAllInstructionSets.end(), std::back_inserter(sets),
                 &isInstructionSetAvailable);
    return sets;
}

Pixels const& oddPixels()
{
    static Pixels const pixels = [] {
        Pixels odd;
        for (reference::Pixel const& pixel : reference::standardPixels()) {
            odd.push_back({pixel.r, pixel.g, pixel.b, pixel.a});
        }
        for (reference::Pixel const& pixel : reference::randomPixels(500, 1)) {
            odd.push_back({pixel.r, pixel.g, pixel.b, pixel.a});
        }
        for (int pixel = 0; pixel < 300; ++pixel) { // long enough for rows without odd values
            float const share = static_cast<float>(pixel) / 300;
            odd.push_back({0.1F + 0.2F * share, 0.3F - 0.2F * share, 0.2F, share});
        }
        return odd;
    }();
    return pixels;
}

bool isSame(Pixels const& a, Pixels const& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Pixel)) == 0;
}

/// One pixel at a time: the transfer with the baseline's kernel, the curves and the clamp without.
Pixels runSingly(Path const& path, Look const& look)
{
    Pixels results(oddPixels().size());
    for (std::size_t pixel = 0; pixel < results.size(); ++pixel) {
        path.transfer(kernelsOf(InInstructionSet::Baseline), look, &oddPixels()[pixel],
                      {&results[pixel]}, 1);
    }
    if (path.adjusts) {
        look.stage->processRow(results);
    }
    auto const& ranges = look.levels.clampRange;
    for (auto& [red, green, blue, alpha] : results) {
        if (path.clamps) {
            red = RemapColorSteps::limit(red, ranges[0].low, ranges[0].high);
            green = RemapColorSteps::limit(green, ranges[1].low, ranges[1].high);
            blue = RemapColorSteps::limit(blue, ranges[2].low, ranges[2].high);
        }
    }
    return results;
}

constexpr std::uint32_t nbLooks = 40;

/// The kernels' ways that a value goes.
enum Way {
    Tables,
    Logarithm,
    Exact,
    Zero,
    Negative,
    Below,
    Above,
    Inside,
    Knee,
    ExactKnee,
    nbWays
};

void addWays(std::set<Way>& ways, Look const& look, int channel, float value)
{
    float const line = value * look.levels.scale[channel] + look.levels.offset[channel];
    RemapColorPower::PreparedPower const& power = look.levels.invGamma[channel];
    bool const isInTables = std::fabs(line) > 0x1p-16F && std::fabs(line) < 0x1p15F;
    ways.insert(power.tables && isInTables              ? Tables
                : power.suitsLog && std::isnormal(line) ? Logarithm
                                                        : Exact);
    CurveTable const& curve = look.curves[channel];
    float const position = line * curve.scale + curve.offset;
    ways.insert(position < 0 ? Below : position > curve.lastPosition ? Above : Inside);
    if (line == 0 || line < 0) {
        ways.insert(line < 0 ? Negative : Zero);
    }
    if (value * look.display.exposureFactor[channel] > look.display.kneeLow[channel] + 1) {
        ways.insert(look.display.kneeFactor[channel] < 0x1p-60F ? ExactKnee : Knee);
    }
}

TEST(RowKernelsTest, LooksAndPixelsTakeEveryWay)
{
    std::set<Way> ways;
    for (std::uint32_t seed = 0; seed < nbLooks; ++seed) {
        Look const look(seed);
        for (Pixel const& pixel : oddPixels()) {
            addWays(ways, look, 0, pixel.red);
            addWays(ways, look, 1, pixel.green);
            addWays(ways, look, 2, pixel.blue);
        }
    }
    EXPECT_EQ(ways.size(), nbWays);
}

TEST(RowKernelsTest, EverySetGivesTheBitsOfSinglePixelsStepByStep)
{
    for (std::uint32_t seed = 0; seed < nbLooks; ++seed) {
        Look const look(seed);
        for (Path const& path : allPaths) {
            Pixels const expected = runSingly(path, look);
            for (InInstructionSet const set : availableSets()) {
                for (bool const isStreamed : {false, true}) {
                    Pixels results(expected.size());
                    path.kernel(kernelsOf(set), look, oddPixels().data(),
                                {results.data(), isStreamed}, results.size());
                    ASSERT_TRUE(isSame(expected, results)) << static_cast<int>(set) << " " << seed;
                }
            }
        }
    }
}

float moved(float value, int steps)
{
    return steps == 0 || value == 0 || !std::isfinite(value)
               ? value
               : std::nextafter(value, steps > 0 ? INFINITY : -INFINITY);
}

/// Whether logarithm and power are their steps' or a float next to them.
bool isDisplayed(float result, Look const& look, int channel, float value)
{
    namespace Steps = RemapColorSteps;
    Display const& display = look.display;
    float const exposed =
        Steps::expose(value, display.defog[channel], display.exposureFactor[channel]);
    float const compressed =
        Steps::compress(exposed, display.kneeLow[channel], display.kneeFactor[channel]);
    for (int const kneeStep : {0, 1, -1}) {
        float const raised =
            Steps::power(compressed == exposed ? exposed : moved(compressed, kneeStep),
                         display.invGamma[channel].exponent);
        for (int const powerStep : {0, 1, -1}) {
            float const expected = Steps::display(moved(raised, powerStep));
            if (result == expected || (std::isnan(result) && std::isnan(expected))) {
                return true;
            }
        }
    }
    return false;
}

TEST(RowKernelsTest, TransfersAreTheirSteps)
{
    for (std::uint32_t seed = 0; seed < nbLooks; ++seed) {
        Look const look(seed);
        Pixels const lines = runSingly(levelsPath<&KernelSet::line, &KernelSet::line, false>, look);
        Pixels const displayed = runSingly(displayPath<false>, look);
        for (std::size_t pixel = 0; pixel < lines.size(); ++pixel) {
            auto const& [red, green, blue, alpha] = oddPixels()[pixel];
            auto const along = [&](int channel, float value) {
                return RemapColorSteps::alongLevels(value, look.levels.scale[channel],
                                                    look.levels.offset[channel]);
            };
            Pixels const expected{{along(0, red), along(1, green), along(2, blue), alpha}};
            ASSERT_TRUE(isSame(expected, {lines[pixel]})) << seed << " " << pixel;
            ASSERT_TRUE(isDisplayed(displayed[pixel].red, look, 0, red) &&
                        isDisplayed(displayed[pixel].green, look, 1, green) &&
                        isDisplayed(displayed[pixel].blue, look, 2, blue))
                << seed << " " << pixel;
        }
    }
}

TEST(RowKernelsTest, LengthAndPlaceInMemoryDoNotMatter)
{
    constexpr Pixel guard{7, 7, 7, 7};
    Look const look(3);
    for (Path const& path : allPaths) {
        Pixels const expected = runSingly(path, look);
        for (InInstructionSet const set : availableSets()) {
            for (std::size_t length = 0; length <= 130; ++length) {
                std::size_t const offset = length % 5; // pixels are 16 bytes, vectors up to 64
                alignas(64) Pixel memory[144];
                std::fill(std::begin(memory), std::end(memory), guard);
                path.kernel(kernelsOf(set), look, oddPixels().data(),
                            {memory + offset, length % 2 == 0}, length);
                ASSERT_EQ(std::memcmp(memory + offset, expected.data(), length * sizeof(Pixel)), 0)
                    << static_cast<int>(set) << " " << length;
                ASSERT_EQ(std::memcmp(memory + offset + length, &guard, sizeof(guard)), 0);
            }
        }
    }
}

TEST(RowKernelsTest, TheFastestSetIsChosenUnlessAnotherIsNamed)
{
    char const* const named = std::getenv("REMAPCOLOR_INSTRUCTIONS");
    std::string const former = named == nullptr ? "" : named;
    InInstructionSet const fastest = availableSets().back();
    for (InInstructionSet const set : inAllInstructionSets) {
        ::setenv("REMAPCOLOR_INSTRUCTIONS", inInstructionSetNames.at(static_cast<int>(set)), 1);
        EXPECT_EQ(chooseInstructionSet(), isInstructionSetAvailable(set) ? set : fastest);
    }
    ::setenv("REMAPCOLOR_INSTRUCTIONS", "abacus", 1);
    EXPECT_EQ(chooseInstructionSet(), fastest);
    ::setenv("REMAPCOLOR_INSTRUCTIONS", former.c_str(), 1);
    for (InInstructionSet const set : availableSets()) {
        // Compiled apart, not one under three names.
        EXPECT_EQ(&kernelsOf(set) == &kernelsOf(fastest), set == fastest);
        EXPECT_EQ(kernelsOf(set).display == kernelsOf(fastest).display, set == fastest);
    }
}

TEST(RowKernelsTest, PowersAreThePlatformsOrAFloatNextToThem)
{
    Levels levels{};
    std::mt19937 random(9);
    for (int round = 0; round < 3000; ++round) {
        // Any exponent that a gamma can give, most of them near those of display gammas.
        float const drawn = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        float const wild = std::fabs(drawn) < 8.6e37F ? drawn : 2.0F;
        float const exponent =
            round % 4 == 0 ? wild : std::uniform_real_distribution<float>(-8, 8)(random);
        for (int channel = 0; channel < nbChannels; ++channel) {
            levels.scale[channel] = 1.0F;
            levels.invGamma[channel] = RemapColorPower::PreparedPower(exponent);
            levels.invGamma[channel].makeTables();
        }
        float values[3 * 64];
        for (float& value : values) {
            bool const isAny = random() % 2 == 0;
            value = isAny ? std::bit_cast<float>(static_cast<std::uint32_t>(random()) >> 1)
                          : std::uniform_real_distribution<float>(0, 4)(random);
        }
        Pixel row[64];
        for (int pixel = 0; pixel < 64; ++pixel) {
            row[pixel] = {values[3 * pixel], values[3 * pixel + 1], values[3 * pixel + 2], 1};
        }
        chosenKernels().linePower(levels, nullptr, row, {row}, std::size(row));
        for (int value = 0; value < 3 * 64; ++value) {
            Pixel const& pixel = row[value / 3];
            float const power = value % 3 == 0   ? pixel.red
                                : value % 3 == 1 ? pixel.green
                                                 : pixel.blue;
            float const expected = std::pow(values[value], exponent);
            bool const isNext = power == expected || power == std::nextafter(expected, 0.0F) ||
                                power == std::nextafter(expected, INFINITY) ||
                                (std::isnan(power) && std::isnan(expected));
            ASSERT_TRUE(isNext) << std::hexfloat << values[value] << " ^ " << exponent << " = "
                                << power << ", not " << expected;
        }
    }
}

} // namespace
