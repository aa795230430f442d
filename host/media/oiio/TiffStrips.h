#pragma once

#include <cstdint>
#include <vector>

// libtiff, which the implementation includes.
struct tiff;

/// While it lives, rows that OpenImageIO hands to libtiff on this thread reach it a strip of the
/// file at a time. libtiff packs a strip that it gets as a whole in a third of the time that it
/// takes for its rows one by one (by libdeflate instead of zlib), and packs it tighter.
class TiffStrips {
public:
    /// The rows that will come, from the picture's top: the first, and the one after the last.
    /// Strips that are not wholly among them are written row by row.
    TiffStrips(std::uint32_t firstRow, std::uint32_t endRow);
    ~TiffStrips();
    TiffStrips(TiffStrips const&) = delete;
    TiffStrips& operator=(TiffStrips const&) = delete;

    /// Does what TIFFWriteScanline does, on this thread.
    int takeRow(tiff* file, void* row, std::uint32_t y, std::uint16_t sample);

private:
    std::uint32_t first;
    std::uint32_t end;
    std::vector<unsigned char> gathered; ///< the rows so far of the strip that is coming
};
