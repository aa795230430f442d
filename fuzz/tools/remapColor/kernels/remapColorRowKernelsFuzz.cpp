// Working values, tables and pixels of any numbers: a row gives what its pixels give one by one, in
// every instruction set.

#include "remapColorRowKernels.h"

#include "support/Bytes.h"
#include "support/Expect.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace {

using namespace RemapColorRowKernels;
using Pixels = std::vector<Pixel>;

constexpr int longestRow = 64;

/// What a kernel works with.
struct Look {
    explicit Look(Bytes& bytes)
    {
        int const lastPosition = 1 + bytes.below(8);
        for (int channel = 0; channel < nbChannels; ++channel) {
            levels.scale[channel] = bytes.number();
            levels.offset[channel] = bytes.number();
            levels.clampRange[channel] = {bytes.number(), bytes.number()};
            display.defog[channel] = bytes.number();
            display.exposureFactor[channel] = bytes.number();
            display.kneeLow[channel] = bytes.number();
            display.kneeFactor[channel] = bytes.number();
            RemapColorPower::PreparedPower power(bytes.number());
            power.makeTables();
            levels.invGamma[channel] = display.invGamma[channel] = power;
            for (int entry = 0; entry < lastPosition + 2; ++entry) {
                entries[channel].push_back(bytes.number());
            }
            curves[channel] = {entries[channel].data(),
                               bytes.number(),
                               bytes.number(),
                               static_cast<float>(lastPosition),
                               {bytes.number(), bytes.number(), bytes.number()},
                               {bytes.number(), bytes.number(), bytes.number()}};
        }
    }

    void run(int kernel, KernelSet const& set, Pixel const* source, Pixel* target,
             std::size_t nbPixels) const
    {
        CurveTable const* const tables = kernel % 2 == 0 ? curves : nullptr;
        switch (kernel / 2) {
        case 0: set.line(levels, tables, source, {target}, nbPixels); break;
        case 1: set.linePower(levels, tables, source, {target}, nbPixels); break;
        case 2: set.lineClamp(levels, tables, source, {target}, nbPixels); break;
        case 3: set.linePowerClamp(levels, tables, source, {target}, nbPixels); break;
        default: set.display(display, tables, source, {target}, nbPixels);
        }
    }

    Levels levels;
    Display display;
    std::vector<float> entries[nbChannels];
    CurveTable curves[nbChannels];
};

constexpr int nbKernels = 10;

/// A NaN is one whatever its other bits.
bool isSame(float a, float b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

bool isSame(Pixel const& a, Pixel const& b)
{
    return isSame(a.red, b.red) && isSame(a.green, b.green) && isSame(a.blue, b.blue) &&
           std::memcmp(&a.alpha, &b.alpha, sizeof a.alpha) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Bytes bytes(data, size);
    Look const look(bytes);
    Pixels row;
    do {
        row.push_back({bytes.number(), bytes.number(), bytes.number(), bytes.number()});
    } while (!bytes.isEmpty() && row.size() < longestRow);

    Pixels singles(row.size());
    Pixels results(row.size());
    KernelSet const& baseline = kernelsOf(InInstructionSet::Baseline);
    for (int kernel = 0; kernel < nbKernels; ++kernel) {
        for (std::size_t pixel = 0; pixel < row.size(); ++pixel) {
            look.run(kernel, baseline, &row[pixel], &singles[pixel], 1);
        }
        for (InInstructionSet const set : inAllInstructionSets) {
            if (!isInstructionSetAvailable(set)) {
                continue;
            }
            look.run(kernel, kernelsOf(set), row.data(), results.data(), row.size());
            for (std::size_t pixel = 0; pixel < row.size(); ++pixel) {
                expect(isSame(results[pixel], singles[pixel]), "a row gives what its pixels give");
            }
        }
    }
    return 0;
}
