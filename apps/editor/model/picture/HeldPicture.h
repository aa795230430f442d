#pragma once

#include "pluginAPI/IxTile.h"
#include "primitives/CoColor.h"
#include "runtime/engine/ImageSource.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>

/// A whole picture in memory, in the format in which its file gives it (half stays half). Immutable
/// once it has been handed out; any thread.
struct HeldPicture {
    ImageInfo info;
    IxTile pixels; ///< of the data window; null if that is empty

    /// The pixel at a place within the data window.
    CoRgbaColorTyped<float> getPixel(int x, int y) const;
};

/// A part of a tile without a copy; it is only to be read.
IxTile viewOf(IxTile const& whole, GeRectangle<int> const& part);

/// Reads a picture into memory aside. Made, used and destroyed on the user-interface thread;
/// destroying it ends the reading.
class PictureLoader {
public:
    /// Gets the picture, or null and what went wrong.
    using Ended =
        std::function<void(std::shared_ptr<HeldPicture const> const&, std::exception_ptr const&)>;

    /// Opens the file; `ended` is called on the user-interface thread later on. Throws
    /// ImageFileError and std::bad_alloc.
    PictureLoader(std::filesystem::path const& file, int threads, Ended const& ended);
    ~PictureLoader();

private:
    class Reading;
    std::shared_ptr<Reading> reading;
};
