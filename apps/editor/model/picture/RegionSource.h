#pragma once

#include "editor/model/picture/HeldPicture.h"

/// A region of a picture in memory as a source: every `step`-th pixel of it each way, or, with a
/// step of 1, the pixels themselves without a copy.
class RegionSource : public ImageSource {
public:
    /// Strips are of multiples of `rowsPerBlock` rows. With a step above 1 they begin where the
    /// picture does.
    RegionSource(std::shared_ptr<HeldPicture const> heldPicture, GeRectangle<int> const& itsRegion,
                 int itsStep, int blockRows);

    ImageInfo const& getInfo() const override { return info; }
    int getRowsPerBlock() const override { return rowsPerBlock; }
    GeRectangle<int> getStripBounds(int index, int rows) const override;
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override;
    void unpackStrip(ImageStrip& strip) const override;

private:
    std::shared_ptr<HeldPicture const> picture;
    GeRectangle<int> region;
    int step;
    int rowsPerBlock;
    ImageInfo info;
};
