#pragma once

#include "pluginAPI/IxPixelFormat.h"
#include "pluginAPI/IxTile.h"
#include "primitives/GeRectangle.h"
#include "runtime/engine/PackedBlocks.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

/// How a file stores one colour component. Integers stand for 0 to 1.
enum class SampleStorage { UInt8, UInt16, Half, Float };

/// What is known of a picture before its pixels flow.
struct ImageInfo {
    GeRectangle<int> dataWindow; ///< where there are pixels
    GeRectangle<int>
        displayWindow; ///< what is shown; may be smaller or larger than the data window
    /// Format of the strips' tiles: UINT8 for 8-bit files, FLOAT16 for half, FLOAT32 for everything
    /// else (16-bit integers become float, v / 65535).
    IxPixelFormat format;
    SampleStorage storage = SampleStorage::Float; ///< how the file itself holds the colour
    Rational frameRate{24, 1};
};

/// A run of whole rows on its way from a source to a sink. Movable; one thread has it at a time.
struct ImageStrip {
    IxTile colour; ///< native-format pixels; its bounds are the strip's rows over the data window
    /// The same of further layers that are processed too, as ImageSource::getFurtherLayers lists
    /// them; on their way to the sink what has become of them.
    std::vector<IxTile> furtherColour;
    /// Samples of channels that the tool does not touch, in a layout that the source and the sink
    /// of one file kind share; empty otherwise.
    std::vector<std::byte> furtherChannels;
    /// What is still to be unpacked after fetchStrip, or is packed before writeStrip.
    PackedBlocks packed;
};

/// Reads one picture strip by strip. Used by one thread at a time, unless said otherwise; throws
/// ImageFileError.
///
/// A file may hold several pictures of different windows that are all processed: parts and
/// resolutions. They come one after the other as sections; what is said of the picture is said of
/// the section that is on.
class ImageSource {
public:
    virtual ~ImageSource() = default;

    virtual ImageInfo const& getInfo() const = 0;

    /// What strips bring besides `getInfo()`: layers with the same windows.
    virtual std::vector<ImageInfo> const& getFurtherLayers() const
    {
        static std::vector<ImageInfo> const none;
        return none;
    }

    /// A section's place in the file.
    struct Section {
        GeRectangle<int> dataWindow;
        int levelX = 0; ///< its resolution is that of the picture divided by two so often
        int levelY = 0;
    };
    /// All that there are; one for most files.
    virtual std::vector<Section> listSections() const { return {{getInfo().dataWindow}}; }

    virtual bool hasNextSection() const { return false; }

    /// Goes on to the next section, after all strips of this one have come. Throws ImageFileError.
    virtual void startNextSection() {}

    /// Rows that are read together with the least work (a compression block or a row of tiles),
    /// at least 1.
    virtual int getRowsPerBlock() const = 0;

    /// Bytes that a row of a strip has besides its tile's; roughly.
    virtual std::size_t getFurtherBytesPerRow() const { return 0; }

    /// Bounds of strip `index` for strips of `rows` rows, in the order in which the file is read
    /// and written best (bottom to top for a decreasing line order). `rows` is a multiple of
    /// getRowsPerBlock(). Strips meet without overlap and cover the data window.
    virtual GeRectangle<int> getStripBounds(int index, int rows) const = 0;

    /// Fills `strip` with the rows `bounds`, as getStripBounds gave them, but for what unpackStrip
    /// does. Its buffers, those of another picture perhaps, may be used again; nothing is packed.
    virtual void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) = 0;

    /// The work after fetchStrip that strips do not share: any thread, several at once.
    virtual void unpackStrip(ImageStrip&) const {}

    void readStrip(GeRectangle<int> const& bounds, ImageStrip& strip)
    {
        fetchStrip(bounds, strip);
        unpackStrip(strip);
    }
};

/// Rows per strip: whole blocks of the source, so many that a strip's pixels are worth setting the
/// chain up for them, and no more: what a strip needs is to stay in the caches.
inline int chooseStripRows(ImageSource const& source)
{
    // Setting a chain up costs some tens of microseconds: what a few thousand pixels cost.
    constexpr int wantedStripPixels = 1 << 16;
    GeRectangle<int> const& window = source.getInfo().dataWindow;
    int const rowsPerBlock = std::max(source.getRowsPerBlock(), 1);
    int const width = std::max(window.getWidth(), 1);
    int const wantedRows = std::max(wantedStripPixels / width, 1);
    return std::max((wantedRows + rowsPerBlock - 1) / rowsPerBlock, 1) * rowsPerBlock;
}
