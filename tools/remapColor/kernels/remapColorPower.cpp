// Powers and logarithms in plain double arithmetic, and their preparation for the row kernels.

#include "remapColorPower.h"

#include <cmath>
#include <limits>

namespace RemapColorPower {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

bool isOddInteger(float value)
{
    constexpr float allIntegersEven = 16777216.0F; // 2^24
    return std::fabs(value) < allIntegersEven && std::trunc(value) == value &&
           (static_cast<std::int32_t>(value) & 1) != 0;
}

float powerOfZero(float zero, float exponent)
{
    if (exponent == 0.0F) {
        return 1.0F;
    }
    float const magnitude = exponent > 0.0F ? 0.0F : infinity;
    return isOddInteger(exponent) ? std::copysign(magnitude, zero) : magnitude;
}

/// A multiplier's leading 8 bits.
float headOf(float multiplier)
{
    constexpr std::uint32_t headMask = 0xffff0000U;
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(multiplier) & headMask);
}

struct SplitPower {
    float head; ///< 12 bits
    float tail;
};

SplitPower splitPower(double value)
{
    constexpr std::uint32_t headMask = 0xfffff000U;
    auto const whole = std::bit_cast<std::uint32_t>(static_cast<float>(value));
    auto const head = std::bit_cast<float>(whole & headMask);
    return {head, static_cast<float>(value - static_cast<double>(head))};
}

/// log2 of the centres.
constexpr auto centreLogs = [] {
    std::array<double, logEntries> logs{};
    for (int entry = 0; entry < logEntries; ++entry) {
        logs[static_cast<std::size_t>(entry)] =
            naturalLog(static_cast<double>(centreOf(entry))) / ln2;
    }
    return logs;
}();

} // namespace

constinit LogTable const logTable = makeLogTable();
constinit ExpTable const expTable = makeExpTable();
constinit KneeTable const kneeTable = makeKneeTable();

double powerOfTwo(double y)
{
    constexpr double beyondDouble = 1100.0;
    if (std::isnan(y)) {
        return y;
    }
    if (y > beyondDouble) {
        return std::numeric_limits<double>::infinity();
    }
    if (y < -beyondDouble) {
        return 0.0;
    }
    constexpr double oneStep = 1000.0;
    if (std::fabs(y) <= oneStep) {
        return exp2(y);
    }
    double const half = y * 0.5;
    return exp2(half) * exp2(y - half);
}

float power(float x, float exponent)
{
    if (exponent == 0.0F || x == 1.0F) {
        return 1.0F;
    }
    if (std::isnan(x)) {
        return x + x;
    }
    if (x == 0.0F) {
        return powerOfZero(x, exponent);
    }
    if (x == infinity) {
        return exponent > 0.0F ? infinity : 0.0F;
    }
    double const y = naturalLog(static_cast<double>(x)) / ln2 * static_cast<double>(exponent);
    // Beyond these even the rounding to a denormal or to infinity is sure.
    constexpr double overflow = 130.0;
    constexpr double underflow = -152.0;
    if (y > overflow) {
        return infinity;
    }
    return y < underflow ? 0.0F : static_cast<float>(exp2(y));
}

float signedPower(float x, float exponent)
{
    return 0.0F > x ? 0.0F - power(0.0F - x, exponent) : power(x, exponent);
}

float knee(double over, float factor)
{
    auto const f = static_cast<double>(factor);
    double const u = over * f + 1.0;
    bool const isNormal =
        u >= std::numeric_limits<double>::min() && u <= std::numeric_limits<double>::max();
    return static_cast<float>((isNormal ? naturalLog(u) : std::log(u)) / f);
}

LogMultiplier::LogMultiplier(double multiplier)
    : head(headOf(static_cast<float>(multiplier))),
      tail(static_cast<float>(multiplier - static_cast<double>(head))),
      timesLog2E(static_cast<float>(multiplier / ln2))
{
}

PreparedPower::PreparedPower(float preparedExponent)
    : exponent(preparedExponent), ofZero(powerOfZero(0.0F, preparedExponent)),
      suitsLog(std::fabs(preparedExponent) <= largestLogExponent && preparedExponent != 0.0F),
      logMultiplier(static_cast<double>(preparedExponent))
{
}

PowerTables::PowerTables(float exponent)
{
    auto const e = static_cast<double>(exponent);
    for (int power = smallestTablePower; power < smallestTablePower + nbTablePowers; ++power) {
        int const column = power & (nbTablePowers - 1);
        SplitPower const whole = splitPower(exp2(e * power));
        wholeColumns[0][column] = static_cast<float>(exp2(-power));
        wholeColumns[1][column] = whole.head;
        wholeColumns[2][column] = whole.tail;
    }
    for (int column = 0; column < logEntries; ++column) {
        SplitPower const centre =
            splitPower(exp2(e * centreLogs[static_cast<std::size_t>(column)]));
        centreColumns[0][column] = logTable.columns[0][column];
        centreColumns[1][column] = centre.head;
        centreColumns[2][column] = centre.tail;
    }
    for (int entry = 0; entry < nbPowerEntries; ++entry) {
        int const whole = entry >> logIndexBits;
        int const centre = entry & (logEntries - 1);
        entries[entry] = makePowerEntry(wholeColumns[0][whole], wholeColumns[1][whole],
                                        wholeColumns[2][whole], centreColumns[0][centre],
                                        centreColumns[1][centre], centreColumns[2][centre]);
    }
}

void PreparedPower::makeTables()
{
    if (!(exponent >= smallestTableExponent && exponent <= largestTableExponent)) {
        return;
    }
    double coefficient = 1.0;
    for (int term = 0; term < nbCoefficients; ++term) {
        coefficient = coefficient * (static_cast<double>(exponent) - term) / (term + 1);
        coefficients[term] = static_cast<float>(coefficient);
    }
    tables = makeShared<PowerTables const>(exponent);
}

} // namespace RemapColorPower
