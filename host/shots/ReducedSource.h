#pragma once

#include "runtime/engine/ImageSource.h"
#include "runtime/engine/StripWindow.h"

/// A picture at the lower resolution of a section of another: of every block of pixels the first
/// one, counted from the section's corner. Reads as ImageSource says.
class ReducedSource : public ImageSource {
public:
    /// `source` lives longer.
    ReducedSource(ImageSource& source, Section const& section);

    ImageInfo const& getInfo() const override { return info; }
    int getRowsPerBlock() const override { return 1; }
    GeRectangle<int> getStripBounds(int index, int rows) const override;
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override;

private:
    StripWindow pixels;
    Section section;
    ImageInfo info;
};
