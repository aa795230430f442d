#pragma once

#include "runtime/engine/SourceImageNode.h"

/// A second picture that a render reads along with the first: the part of it that lies under each
/// strip. `read` is for one thread at a time.
class MaskFeed {
public:
    /// `startNode` was made from the source's info and is part of the chain that is rendered. Both
    /// live longer.
    MaskFeed(SourceImageNode& startNode, ImageSource& imageSource);

    SourceImageNode& getNode() const { return node; }

    /// The picture's pixels within `bounds`; a null tile where it has none. Cheapest for bounds
    /// that follow one another. Throws ImageFileError.
    IxTile read(GeRectangle<int> const& bounds);

private:
    void copyStrip(IxWriteGuard& tile) const;

    SourceImageNode& node;
    ImageSource& source;
    int rowsPerStrip;
    int nbStrips;
    int heldStrip = -1; // which one `strip` holds; it may reach into the next bounds
    ImageStrip strip;
};
