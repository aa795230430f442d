#pragma once

#include "editor/model/picture/HeldPicture.h"

/// A region of a picture in memory as a source, without a copy.
class RegionSource : public ImageSource {
public:
    /// Strips are of multiples of `blockRows` rows.
    RegionSource(std::shared_ptr<HeldPicture const> heldPicture, GeRectangle<int> const& region,
                 int blockRows);

    ImageInfo const& getInfo() const override { return info; }
    int getRowsPerBlock() const override { return rowsPerBlock; }
    GeRectangle<int> getStripBounds(int index, int rows) const override;
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override;

private:
    std::shared_ptr<HeldPicture const> picture;
    ImageInfo info; ///< its data window is the region
    int rowsPerBlock;
};
