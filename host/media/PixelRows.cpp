#include "media/PixelRows.h"

#include "base/Assertions.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <half.h>

namespace {

constexpr std::size_t rgbaComponents = 4;
constexpr float largestByte = 255.F;

} // namespace

void samplesToFloat(std::byte const* samples, IxPixelFormat::Depth depth, std::span<float> values)
{
    switch (depth) {
    case IxPixelFormat::UINT8:
        for (float& value : values) {
            value = static_cast<float>(std::to_integer<int>(*samples++)) / largestByte;
        }
        return;
    case IxPixelFormat::FLOAT16:
        for (float& value : values) {
            std::uint16_t bits = 0;
            std::memcpy(&bits, samples, sizeof bits);
            samples += sizeof bits;
            value = imath_half_to_float(bits);
        }
        return;
    case IxPixelFormat::FLOAT32: std::memcpy(values.data(), samples, values.size_bytes()); return;
    case IxPixelFormat::COMPLEX: break;
    }
    Assertions::throwProgramAborted("PixelRows", __LINE__, "depth");
}

void premultiply(std::span<float> pixels)
{
    for (; pixels.size() >= rgbaComponents; pixels = pixels.subspan(rgbaComponents)) {
        float const alpha = pixels[3];
        for (float& colour : pixels.first(3)) {
            colour *= alpha;
        }
    }
}

void unpremultiply(std::span<float> pixels)
{
    for (; pixels.size() >= rgbaComponents; pixels = pixels.subspan(rgbaComponents)) {
        float const alpha = pixels[3];
        if (alpha == 0.F || !std::isfinite(alpha)) {
            continue;
        }
        for (float& colour : pixels.first(3)) {
            colour /= alpha;
        }
    }
}
