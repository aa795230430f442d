#pragma once

#include "primitives/CoColor.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// What turns results into what a display shows, in a colour management of its own. Any thread,
/// several at once.
class DisplayProcessor {
public:
    virtual ~DisplayProcessor() = default;
    virtual void apply(std::span<CoRgbaColorTyped<float>> row) const = 0;

    /// What a user knows it by.
    virtual std::string const& getName() const = 0;
};

/// How results are shown. It never enters a result; the neutral one is the result in 8 bit.
struct ViewTransform {
    enum Channels { Rgb, Red, Green, Blue, Alpha };

    Channels channels = Rgb;
    double exposure = 0.0;                               ///< stops
    bool isSrgb = false;                                 ///< shown by the curve of IEC 61966-2-1
    std::shared_ptr<DisplayProcessor const> processor{}; ///< instead of it; may be null

    bool operator==(ViewTransform const&) const = default;
};

/// Rows of results as a screen takes them. Infinity counts as the limit, NaN as 0. Immutable; any
/// thread.
class ScreenEncoder {
public:
    explicit ScreenEncoder(ViewTransform const& viewTransform);

    /// Whether what is shown of a channel depends on that channel alone.
    bool isPerChannel() const { return transform.processor == nullptr; }
    ViewTransform const& getTransform() const { return transform; }

    /// 0xffRRGGBB for each pixel of `row`, which is changed on the way.
    void encode(std::span<CoRgbaColorTyped<float>> row, std::span<std::uint32_t> screen) const;

private:
    void applyDisplay(std::span<CoRgbaColorTyped<float>> row) const;

    ViewTransform transform;
    float gain;
};
