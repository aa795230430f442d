#pragma once

#include "primitives/CoColor.h"

#include <cstddef>
#include <memory>
#include <new>
#include <span>

/// The picture that benchmarks work on.
namespace bench {

using Pixel = CoRgbaColorTyped<float>;

inline constexpr int frameWidth = 3840;
inline constexpr int frameHeight = 2160;
inline constexpr std::size_t framePixels = std::size_t{frameWidth} * frameHeight;

/// Soft shapes with a little noise, as in a photograph: what a pixel is, its neighbours mostly are
/// too, so that plain loops guess their branches as well as they would there.
enum class Content {
    Plate, ///< evenly spread from -0.01 to 1.01
    Scene, ///< evenly spread over the stops from 0.001 to 16
};

/// Float RGBA rows without padding, every page touched. Starts at a multiple of 64 bytes.
class Frame {
public:
    explicit Frame(Content content);

    std::span<Pixel> getPixels() const { return {pixels.get(), framePixels}; }
    Pixel* getRow(int y) const { return pixels.get() + std::size_t(y) * frameWidth; }

private:
    static constexpr std::align_val_t alignment{64};
    struct Free {
        void operator()(Pixel* memory) const { ::operator delete(memory, alignment); }
    };
    std::unique_ptr<Pixel, Free> pixels;
};

/// Made once.
Frame const& getFrame(Content content);

} // namespace bench
