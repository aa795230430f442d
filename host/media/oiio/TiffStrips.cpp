#include "media/oiio/TiffStrips.h"

#include "media/oiio/LibraryFunctions.h"

#include <algorithm>
#include <tiffio.h>

namespace {

thread_local TiffStrips* stripsOfThread = nullptr;

int writeRowAlone(TIFF* file, void* row, std::uint32_t y, std::uint16_t sample)
{
    static auto const original = findNext<decltype(&TIFFWriteScanline)>("TIFFWriteScanline");
    return original(file, row, y, sample);
}

bool hasWholePixels(TIFF* file)
{
    std::uint16_t compression = COMPRESSION_NONE;
    std::uint16_t planes = PLANARCONFIG_CONTIG;
    ::TIFFGetFieldDefaulted(file, TIFFTAG_COMPRESSION, &compression);
    ::TIFFGetFieldDefaulted(file, TIFFTAG_PLANARCONFIG, &planes);
    return compression == COMPRESSION_ADOBE_DEFLATE && planes == PLANARCONFIG_CONTIG;
}

} // namespace

TiffStrips::TiffStrips(std::uint32_t firstRow, std::uint32_t endRow) : first(firstRow), end(endRow)
{
    stripsOfThread = this;
}

TiffStrips::~TiffStrips()
{
    stripsOfThread = nullptr;
}

int TiffStrips::takeRow(TIFF* file, void* row, std::uint32_t y, std::uint16_t sample)
{
    std::uint32_t height = 0;
    std::uint32_t rowsPerStrip = 0;
    ::TIFFGetFieldDefaulted(file, TIFFTAG_IMAGELENGTH, &height);
    ::TIFFGetFieldDefaulted(file, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    rowsPerStrip = std::clamp<std::uint32_t>(rowsPerStrip, 1, std::max(height, 1U));
    std::uint32_t const top = y - y % rowsPerStrip;
    std::uint32_t const bottom = std::min(height - top, rowsPerStrip) + top;
    if (top < first || bottom > end || !hasWholePixels(file)) {
        return writeRowAlone(file, row, y, sample);
    }
    auto const* const bytes = static_cast<unsigned char const*>(row);
    gathered.insert(gathered.end(), bytes, bytes + ::TIFFScanlineSize64(file));
    if (y + 1 < bottom) {
        return 1;
    }
    auto const written =
        ::TIFFWriteEncodedStrip(file, ::TIFFComputeStrip(file, y, sample), gathered.data(),
                                static_cast<tmsize_t>(gathered.size()));
    gathered.clear();
    return written < 0 ? -1 : 1;
}

/// In place of the library's; see LibraryFunctions.h.
extern "C" __attribute__((visibility("default"))) int
TIFFWriteScanline(TIFF* file, void* row, std::uint32_t y, std::uint16_t sample)
{
    return stripsOfThread == nullptr ? writeRowAlone(file, row, y, sample)
                                     : stripsOfThread->takeRow(file, row, y, sample);
}
