#pragma once

#include "media/ImageFormats.h"
#include "runtime/engine/ImageSource.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

/// What the sinks of other file kinds want to know of a source beyond its ImageInfo.
class MediaSource : public ImageSource {
public:
    /// The file holds one channel of luminance, which the tile repeats in red, green and blue.
    virtual bool isLuminanceOnly() const = 0;

    /// The file holds channels that the strips do not bring along in their tiles.
    virtual bool hasFurtherChannels() const = 0;

    /// What of the file a sink of kind `target` does not get to see, a line each; empty for most.
    virtual std::vector<std::string> listLosses(FileKind target) const = 0;

    /// Layers of all parts that were chosen; a file of another kind has room for one.
    virtual std::size_t countPictures() const { return 1; }

    /// The file's kind if it is one that can be written.
    virtual std::optional<FileKind> getKind() const = 0;

    /// Names of the attributes that a file of the other kind `target` does not get: what tells of
    /// the picture, not how it is stored.
    virtual std::vector<std::string> listMetadata(FileKind target) const = 0;

    /// From now on strips run from top to bottom and bring no further channels. Before the first
    /// strip.
    virtual void takePlainStrips() = 0;

    /// From now on strips have a multiple of `rows` rows too. Before the first strip.
    virtual void alignStrips(int rows) = 0;
};

/// The least multiple of both, but no more than there are: what getRowsPerBlock gives.
inline int alignRows(int rows, int multiple, int height)
{
    return static_cast<int>(std::min<std::int64_t>(std::lcm<std::int64_t>(rows, multiple), height));
}

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
