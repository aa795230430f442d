#pragma once

#include "runtime/engine/ImageSource.h"

/// What the sinks of other file kinds want to know of a source beyond its ImageInfo.
class MediaSource : public ImageSource {
public:
    /// The file holds one channel of luminance, which the tile repeats in red, green and blue.
    virtual bool isLuminanceOnly() const = 0;

    /// The file holds channels that the strips do not bring along in their tiles.
    virtual bool hasFurtherChannels() const = 0;

    /// From now on strips run from top to bottom and bring no further channels. Before the first
    /// strip.
    virtual void takePlainStrips() = 0;
};

/// The order in which strips of rows are taken.
enum class StripOrder { TopToBottom, BottomToTop };

/// Strip `index` of those with `rows` rows that start at the top of `window`; the last one at the
/// bottom may have fewer.
inline GeRectangle<int> stripBoundsOf(GeRectangle<int> const& window, int index, int rows,
                                      StripOrder order)
{
    int const strips = (window.getHeight() - 1) / rows + 1;
    int const slot = order == StripOrder::TopToBottom ? index : strips - 1 - index;
    int const top = window.y0 + slot * rows;
    return {window.x0, top, window.x1, window.y1 - top > rows ? top + rows : window.y1};
}
