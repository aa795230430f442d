// Every value of a picture goes to the drawer of its bits.

#include "editor/model/curves/ValueCounts.h"

#include "pluginAPI/IxSampleConversion.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using Pixel = CoRgbaColorTyped<float>;
using Drawers = std::vector<std::uint32_t>;

constexpr std::size_t nbCountedChannels = 3;

/// Values of 8 or 16 bit have a drawer each.
template <typename Sample>
struct WholeSamples {
    static constexpr std::size_t nbDrawers = std::size_t{1} << (8 * sizeof(Sample));
    static constexpr IxPixelFormat::Depth depth =
        sizeof(Sample) == 1 ? IxPixelFormat::UINT8 : IxPixelFormat::FLOAT16;

    static std::size_t choose(Sample sample) { return sample; }

    /// From halfway to the value on either side: what was rounded to this one.
    CountedValues open(std::size_t drawer) const
    {
        float const value = values[drawer];
        if (value == 0.0F || !std::isfinite(value)) {
            return {value, value, 0.0};
        }
        float const before = values[drawer - 1]; // of the same sign, or 0
        bool const isLast = drawer + 1 == nbDrawers || !std::isfinite(values[drawer + 1]);
        float const after = isLast ? value : values[drawer + 1];
        return {0.5F * (before + value), 0.5F * (value + after), 0.0};
    }

    std::vector<float> values = read();

private:
    /// What a tile's samples of all bits stand for.
    static std::vector<float> read()
    {
        IxPixelFormat const format(IxPixelFormat::ALPHA, depth, Rational(1, 1), false);
        std::vector<Sample> samples(nbDrawers);
        for (std::size_t bits = 0; bits < nbDrawers; ++bits) {
            samples[bits] = static_cast<Sample>(bits);
        }
        std::vector<Pixel> pixels(nbDrawers);
        readPixelRow(format, reinterpret_cast<std::byte const*>(samples.data()), pixels);
        std::vector<float> read;
        for (Pixel const& pixel : pixels) {
            read.push_back(pixel.alpha);
        }
        return read;
    }
};

/// Floats with the same leading bits share one; as many digits are left as a half has.
struct LeadingBits {
    using Bits = std::uint32_t;
    static constexpr unsigned nbDropped = 13;
    static constexpr std::size_t nanDrawer = std::size_t{1} << (32 - nbDropped);
    static constexpr std::size_t nbDrawers = nanDrawer + 1;

    static std::size_t choose(Bits bits)
    {
        constexpr Bits infinity = 0x7F800000U;
        constexpr Bits sign = 0x80000000U;
        return (bits & ~sign) > infinity ? nanDrawer : bits >> nbDropped;
    }

    CountedValues open(std::size_t drawer) const
    {
        if (drawer == nanDrawer) {
            return {std::numeric_limits<float>::quiet_NaN(), 0.0F, 0.0};
        }
        auto const bits = static_cast<Bits>(drawer << nbDropped);
        auto const first = std::bit_cast<float>(bits);
        bool const isOne = first == 0.0F || !std::isfinite(first); // tiny ones count as 0
        return {first, isOne ? first : std::bit_cast<float>(bits | ((1U << nbDropped) - 1U)), 0.0};
    }
};

template <typename Sample, typename Kind>
std::shared_ptr<ValueCounts const> count(HeldPicture const& picture, Kind const& kind,
                                         std::atomic<bool> const& cancelled)
{
    std::array<Drawers, nbCountedChannels> drawers;
    drawers.fill(Drawers(Kind::nbDrawers));
    GeRectangle<int> const& window = picture.info.dataWindow;
    std::size_t const pixelBytes = picture.info.format.getBytesPerPixel();
    IxReadGuard const guard(picture.pixels);
    for (int y = window.y0; y < window.y1; ++y) {
        if (cancelled) {
            return nullptr;
        }
        std::byte const* pixel = guard.getRow(y);
        for (int x = window.x0; x < window.x1; ++x, pixel += pixelBytes) {
            std::array<Sample, nbCountedChannels> samples{};
            std::memcpy(samples.data(), pixel, sizeof samples);
            for (std::size_t channel = 0; channel < nbCountedChannels; ++channel) {
                ++drawers[channel][Kind::choose(samples[channel])];
            }
        }
    }
    auto const counts = std::make_shared<ValueCounts>();
    for (std::size_t channel = 0; channel < nbCountedChannels; ++channel) {
        for (std::size_t drawer = 0; drawer < Kind::nbDrawers; ++drawer) {
            if (drawers[channel][drawer] > 0) {
                CountedValues found = kind.open(drawer);
                found.count = drawers[channel][drawer];
                counts->add(channel, found);
            }
        }
    }
    return counts;
}

} // namespace

void ValueCounts::add(std::size_t channel, CountedValues const& found)
{
    if (std::isnan(found.low) || std::isnan(found.high)) {
        nans += found.count;
    } else if (std::isinf(found.low) || std::isinf(found.high)) {
        infinities += found.count;
    } else {
        channels[channel].push_back(found);
    }
}

std::shared_ptr<ValueCounts const> countValues(HeldPicture const& picture,
                                               std::atomic<bool> const& cancelled)
{
    IxPixelFormat const& format = picture.info.format;
    if (format.getNbComponents() < static_cast<int>(nbCountedChannels) ||
        picture.info.dataWindow.isEmpty()) {
        return nullptr;
    }
    switch (format.getDepth()) {
    case IxPixelFormat::UINT8:
        return count<std::uint8_t>(picture, WholeSamples<std::uint8_t>(), cancelled);
    case IxPixelFormat::FLOAT16:
        return count<std::uint16_t>(picture, WholeSamples<std::uint16_t>(), cancelled);
    case IxPixelFormat::FLOAT32: return count<std::uint32_t>(picture, LeadingBits(), cancelled);
    case IxPixelFormat::COMPLEX: break; // no tile has it
    }
    return nullptr;
}
