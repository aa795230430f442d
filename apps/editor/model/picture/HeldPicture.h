#pragma once

#include "pluginAPI/IxTile.h"
#include "primitives/CoColor.h"
#include "runtime/engine/ImageSource.h"

#include <cstddef>
#include <memory>

/// A whole picture in memory, in the format in which its file gives it (half stays half). Immutable
/// once it has been handed out; any thread.
struct HeldPicture {
    ImageInfo info;
    IxTile pixels; ///< of the data window; null if that is empty

    /// Without pixels yet. Throws std::bad_alloc.
    explicit HeldPicture(ImageInfo const& itsInfo);
    HeldPicture(HeldPicture const&) = delete;
    HeldPicture& operator=(HeldPicture const&) = delete;

    /// The pixel at a place within the data window.
    CoRgbaColorTyped<float> getPixel(int x, int y) const;

    std::size_t getBytes() const { return bytes; }

    /// What such a picture takes.
    static std::size_t countBytes(ImageInfo const& info);

private:
    struct Release {
        void operator()(std::byte* memory) const;
    };

    std::size_t bytes;
    /// Not from the tiles' pool, which would keep it when the picture is let go.
    std::unique_ptr<std::byte, Release> memory;
};

/// A part of a tile without a copy; it is only to be read.
IxTile viewOf(IxTile const& whole, GeRectangle<int> const& part);
