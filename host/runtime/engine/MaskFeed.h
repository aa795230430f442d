#pragma once

#include "runtime/engine/SourceImageNode.h"
#include "runtime/engine/StripWindow.h"

/// A second picture that a render reads along with the first: the part of it that lies under each
/// strip. `read` is for one thread at a time.
class MaskFeed {
public:
    /// `startNode` was made from the source's info and is part of the chain that is rendered. Both
    /// live longer.
    MaskFeed(SourceImageNode& startNode, ImageSource& imageSource)
        : node(startNode), pixels(imageSource)
    {
    }

    SourceImageNode& getNode() const { return node; }

    /// As StripWindow::read.
    IxTile read(GeRectangle<int> const& bounds) { return pixels.read(bounds); }

private:
    SourceImageNode& node;
    StripWindow pixels;
};
