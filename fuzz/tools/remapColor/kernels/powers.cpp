// Checks the row kernels' powers against the platform's powf, and the display transfer's knees
// against its log, for every instruction set of this processor:
//   powers [MILLIONS_OF_PAIRS [EXPONENT...]]
//
// Random pairs of a value and an exponent, as many of a value and a knee's factor; then, for each
// exponent, all 2^31 magnitudes, infinity and NaNs included, each with one sign. A line says how
// far the kernels are from the platform at most, in steps from float to float (two NaNs count as
// the same, two zeros of unlike sign do not), for which pair, and how many results are not the same
// float. Exit status 1 if one is further away than one step. Some ten
// minutes with what is checked by default.

#include "remapColorRowKernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <vector>

namespace {

using namespace RemapColorRowKernels;

constexpr std::size_t pixelsOfARow = 1024;
constexpr std::int64_t mostOfAPower = 1;
constexpr std::int64_t mostOfAKnee = 1;

std::vector<InInstructionSet> findSets()
{
    std::vector<InInstructionSet> sets;
    std::copy_if(inAllInstructionSets.begin(), inAllInstructionSets.end(), std::back_inserter(sets),
                 &isInstructionSetAvailable);
    return sets;
}

std::vector<InInstructionSet> const availableSets = findSets();

float mirroredPower(float value, float exponent)
{
    return 0.0F > value ? 0.0F - ::powf(0.0F - value, exponent) : ::powf(value, exponent);
}

/// Floats in a row: neighbours differ by 1, -0 comes right before 0.
std::int64_t placeOf(float value)
{
    auto const bits = std::bit_cast<std::int32_t>(value);
    return bits >= 0 ? bits : -1 - static_cast<std::int64_t>(bits & 0x7fffffff);
}

std::int64_t distance(float a, float b)
{
    return std::isnan(a) && std::isnan(b) ? 0 : std::llabs(placeOf(a) - placeOf(b));
}

/// What one instruction set has done so far.
struct Tally {
    void add(float value, float parameter, std::int64_t steps)
    {
        ++nbValues;
        nbOthers += steps != 0 ? 1 : 0;
        if (steps > largest) {
            largest = steps;
            worstValue = value;
            worstParameter = parameter;
        }
    }

    void print(char const* what, char const* set) const
    {
        std::printf("%-12s %-9s %11llu values  %lld ULP at most (%a, %a)  %.4f %% differ\n", what,
                    set, nbValues, static_cast<long long>(largest), static_cast<double>(worstValue),
                    static_cast<double>(worstParameter),
                    100.0 * static_cast<double>(nbOthers) / static_cast<double>(nbValues));
        std::fflush(stdout);
    }

    unsigned long long nbValues = 0;
    unsigned long long nbOthers = 0;
    std::int64_t largest = 0;
    float worstValue = 0.0F;
    float worstParameter = 0.0F;
};

/// One for each set. True if every result is at most so many steps away.
bool printAll(std::vector<Tally> const& tallies, char const* what, std::int64_t most)
{
    bool isGood = true;
    for (std::size_t set = 0; set < tallies.size(); ++set) {
        tallies[set].print(what,
                           inInstructionSetNames.at(static_cast<std::size_t>(availableSets[set])));
        isGood = isGood && tallies[set].largest <= most;
    }
    return isGood;
}

/// Sends values through the power kernel of every set.
class Check {
public:
    Check() : tallies(availableSets.size()), expected(values.size())
    {
        for (int channel = 0; channel < nbChannels; ++channel) {
            levels.scale[channel] = 1.0F;
            levels.offset[channel] = -0.0F; // x - 0 is x, -0 included
        }
    }

    void setExponent(int channel, float exponent)
    {
        levels.invGamma[channel] = RemapColorPower::PreparedPower(exponent);
        levels.invGamma[channel].makeTables();
    }

    /// As many as a row's colours, red, green, blue, red and so on.
    std::vector<float>& getValues() { return values; }

    void run()
    {
        std::vector<Pixel> source(pixelsOfARow);
        for (std::size_t pixel = 0; pixel < pixelsOfARow; ++pixel) {
            float const* const colour = &values[pixel * nbChannels];
            source[pixel] = {colour[0], colour[1], colour[2], 1.0F};
        }
        for (std::size_t value = 0; value < values.size(); ++value) {
            expected[value] = mirroredPower(values[value], exponentOf(value));
        }
        std::vector<Pixel> results(pixelsOfARow);
        for (std::size_t set = 0; set < tallies.size(); ++set) {
            kernelsOf(availableSets[set])
                .linePower(levels, nullptr, source.data(), {results.data()}, pixelsOfARow);
            for (std::size_t value = 0; value < values.size(); ++value) {
                Pixel const& result = results[value / nbChannels];
                float const colour[] = {result.red, result.green, result.blue};
                tallies[set].add(values[value], exponentOf(value),
                                 distance(colour[value % nbChannels], expected[value]));
            }
        }
    }

    bool print(char const* what) const { return printAll(tallies, what, mostOfAPower); }

private:
    float exponentOf(std::size_t value) const
    {
        return levels.invGamma[value % nbChannels].exponent;
    }

    Levels levels{};
    std::vector<Tally> tallies;
    std::vector<float> values = std::vector<float>(pixelsOfARow * nbChannels);
    std::vector<float> expected;
};

bool checkAllValues(float exponent)
{
    constexpr std::uint64_t nbMagnitudes = std::uint64_t{1} << 31;
    Check check;
    for (int channel = 0; channel < nbChannels; ++channel) {
        check.setExponent(channel, exponent);
    }
    std::uint64_t next = 0;
    while (next < nbMagnitudes) {
        for (float& value : check.getValues()) {
            // The last row begins again at 0.
            auto const magnitude = static_cast<std::uint32_t>(next++ % nbMagnitudes);
            auto const sign = static_cast<std::uint32_t>(std::popcount(magnitude)) << 31;
            value = std::bit_cast<float>(magnitude | sign);
        }
        check.run();
    }
    char name[32];
    std::snprintf(name, sizeof(name), "%.8g", static_cast<double>(exponent));
    return check.print(name);
}

/// What the display transfer makes of a knee's result.
float scaleForDisplay(float value)
{
    return value * 84.66F / 255.0F;
}

/// How many steps from `knee` the float lies that was scaled to `result`: the scale may widen a
/// step.
std::int64_t kneeDistance(float result, float knee)
{
    constexpr int furthest = 100;
    float below = knee;
    float above = knee;
    for (int steps = 0; steps < furthest; ++steps) {
        if (result == scaleForDisplay(below) || result == scaleForDisplay(above)) {
            return steps;
        }
        below = std::nextafter(below, 0.0F);
        above = std::nextafter(above, HUGE_VALF);
    }
    return furthest;
}

/// The knee of the display transfer alone: no defog, no exposure, an exponent of 1 that takes the
/// exact way.
bool checkKnees(double millions)
{
    std::mt19937_64 random(5);
    std::vector<Tally> tallies(availableSets.size());
    std::vector<Pixel> row(pixelsOfARow);
    std::vector<Pixel> results(pixelsOfARow);
    auto const nbRows = static_cast<std::uint64_t>(millions * 1e6 / pixelsOfARow + 1);
    for (std::uint64_t round = 0; round < nbRows; ++round) {
        std::uniform_real_distribution<float> stops(-32, 4);
        float const factor = std::exp2(stops(random));
        Display display{};
        for (int channel = 0; channel < nbChannels; ++channel) {
            display.exposureFactor[channel] = 1.0F;
            display.kneeFactor[channel] = factor;
            display.invGamma[channel] = RemapColorPower::PreparedPower(1.0F);
            display.invGamma[channel].suitsLog = false;
        }
        for (Pixel& pixel : row) {
            std::uniform_real_distribution<float> light(-20, 40);
            pixel = {std::exp2(light(random)), 0.0F, 0.0F, 1.0F};
        }
        for (std::size_t set = 0; set < tallies.size(); ++set) {
            kernelsOf(availableSets[set])
                .display(display, nullptr, row.data(), {results.data()}, pixelsOfARow);
            for (std::size_t pixel = 0; pixel < pixelsOfARow; ++pixel) {
                auto const f = static_cast<double>(factor);
                double const knee = ::log(static_cast<double>(row[pixel].red) * f + 1.0) / f;
                tallies[set].add(row[pixel].red, factor,
                                 kneeDistance(results[pixel].red, static_cast<float>(knee)));
            }
        }
    }
    return printAll(tallies, "knees", mostOfAKnee);
}

bool checkRandomPairs(double millions)
{
    std::mt19937_64 random(4);
    auto const between = [&](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    auto const anyFloat = [&] {
        return std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    };
    auto const drawExponent = [&] {
        float const any = anyFloat();
        switch (random() % 4) {
        case 0: return std::fabs(any) < 8.6e37F ? any : 2.0F; // the largest that a gamma gives
        case 1: return 1.0F / between(0.2F, 5);
        default: return between(-8, 8);
        }
    };
    Check check;
    auto const nbRows = static_cast<std::uint64_t>(
        millions * 1e6 / static_cast<double>(check.getValues().size()) + 1);
    for (std::uint64_t row = 0; row < nbRows; ++row) {
        for (int channel = 0; channel < nbChannels; ++channel) {
            check.setExponent(channel, drawExponent());
        }
        bool const isPicture = row % 2 == 0;
        for (float& value : check.getValues()) {
            value = isPicture ? between(-0.5F, 4) : anyFloat();
        }
        check.run();
    }
    return check.print("random pairs");
}

} // namespace

int main(int nbArguments, char** arguments)
{
    double const millions = nbArguments > 1 ? std::atof(arguments[1]) : 500.0;
    std::vector<float> exponents{1 / 2.2F, 2.0F, 0.5F, 7.5F, -1.0F, 1 / 1.8F};
    if (nbArguments > 2) {
        exponents.clear();
        for (int argument = 2; argument < nbArguments; ++argument) {
            exponents.push_back(std::strtof(arguments[argument], nullptr));
        }
    }
    bool isGood = true;
    if (millions > 0.0) {
        isGood = checkRandomPairs(millions);
        isGood = checkKnees(millions) && isGood;
    }
    for (float const exponent : exponents) {
        isGood = checkAllValues(exponent) && isGood;
    }
    return isGood ? 0 : 1;
}
