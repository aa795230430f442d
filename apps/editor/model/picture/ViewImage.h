#pragma once

#include "primitives/GeRectangle.h"
#include "runtime/engine/ImageSink.h"

#include <cstdint>
#include <vector>

/// How results are shown. It never enters a result; the neutral one is the result in 8 bit.
struct ViewTransform {
    enum Channels { Rgb, Red, Green, Blue, Alpha };

    Channels channels = Rgb;
    double exposure = 0.0; ///< stops
    bool isSrgb = false;   ///< shown by the curve of IEC 61966-2-1

    bool operator==(ViewTransform const&) const = default;
};

/// A region of a picture as it is shown, `reduction` pixels of the picture to one of its own in
/// each direction.
struct ViewImage {
    GeRectangle<int> region; ///< in the picture's pixels
    int reduction = 1;
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels; ///< 0xffRRGGBB, row by row

    ViewImage() = default;
    ViewImage(GeRectangle<int> const& itsRegion, int itsReduction);
};

/// Turns the strips of a result into a ViewImage. Strips whose rows are already reduced, or strips
/// of whole blocks of `reduction` rows, which are averaged.
class ViewSink : public ImageSink {
public:
    enum class Strips { Reduced, Whole };

    /// `topEdge` is where the strips begin.
    ViewSink(ViewImage& target, ViewTransform const& viewTransform, Strips kind, int topEdge);

    void packStrip(IxTile const& result, ImageStrip& strip) const override;
    void writeStrip(IxTile const&, ImageStrip const&) override {}
    void finish() override {}

private:
    ViewImage& image;
    ViewTransform transform;
    int block; ///< pixels of a strip to one of the image
    int top;
};
