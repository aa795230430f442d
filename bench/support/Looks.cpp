#include "support/Looks.h"

#include <cmath>

namespace bench {

namespace {

/// f with log(x f + 1) / f = y for x > y: what the knee's bisection finds.
double findKneeFactor(double x, double y)
{
    double low = 1e-6;
    double high = 1e3;
    for (int step = 0; step < 60; ++step) {
        double const middle = std::sqrt(low * high);
        (std::log(x * middle + 1.0) / middle > y ? low : high) = middle;
    }
    return low;
}

} // namespace

Look::Look()
{
    for (int channel = 0; channel < RemapColorRowKernels::nbChannels; ++channel) {
        auto const shift = 0.01F * static_cast<float>(channel);
        // A value in twenty leaves the curves' range.
        levels.scale[channel] = 1.03F + shift;
        levels.offset[channel] = -0.01F - shift;
        levels.invGamma[channel] = RemapColorPower::PreparedPower(1.0F / (2.2F + shift));
        levels.invGamma[channel].makeTables();
        levels.clampRange[channel] = {0.0F, 1.0F};

        display.defog[channel] = 0.001F;
        display.exposureFactor[channel] = std::exp2(2.47393F + shift);
        display.kneeLow[channel] = 1.0F;
        display.kneeFactor[channel] =
            static_cast<float>(findKneeFactor(std::exp2(5.0) - 1.0, std::exp2(3.5) - 1.0));
        display.invGamma[channel] = RemapColorPower::PreparedPower(1.0F / 2.2F);
        display.invGamma[channel].makeTables();

        // A gentle S; its ends go on in a straight line.
        float const strength = 0.2F + shift;
        for (int entry = 0; entry <= nbEntries; ++entry) {
            float const x = static_cast<float>(std::min(entry, nbEntries - 1)) / (nbEntries - 1);
            entries[channel][entry] = x + strength * (x * x * (3.0F - 2.0F * x) - x);
        }
        float const slope = 1.0F - strength;
        curves[channel] = {entries[channel], nbEntries - 1,       0.0F,
                           nbEntries - 1,    {slope, 0.0F, 0.0F}, {slope, 1.0F, 1.0F}};
    }
}

} // namespace bench
