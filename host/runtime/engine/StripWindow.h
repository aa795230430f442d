#pragma once

#include "runtime/engine/ImageSource.h"

class IxWriteGuard;

/// Any part of a picture, read strip by strip. One thread at a time.
class StripWindow {
public:
    /// `imageSource` lives longer.
    explicit StripWindow(ImageSource& imageSource);

    /// The picture's pixels within `bounds`; a null tile where it has none. Cheapest for bounds
    /// that follow one another. Throws ImageFileError.
    IxTile read(GeRectangle<int> const& bounds);

private:
    void copyStrip(IxWriteGuard& tile) const;

    ImageSource& source;
    int rowsPerStrip;
    int nbStrips;
    int heldStrip = -1; // which one `strip` holds; it may reach into the next bounds
    ImageStrip strip;
};
