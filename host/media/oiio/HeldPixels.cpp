// What the first bytes of a file announce, held against the file's length: the library takes memory
// and time for what is announced.

#include "media/oiio/HeldPixels.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <libdeflate.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

// How many bytes one packed byte can become. Deflate: 258 bytes for 2 bits. LZW: a string of 4096
// bytes for 12 bits. PackBits: 128 bytes for 2. JPEG: a block of 64 samples of luminance and its
// share of chroma in a bit and a half, for three bytes a pixel.
constexpr std::uint64_t deflateExpansion = 1032;
constexpr std::uint64_t lzwExpansion = 4096;
constexpr std::uint64_t packBitsExpansion = 64;
constexpr std::uint64_t jpegExpansion = 2048;

/// Sizes beyond this are no pictures; below it, products of sizes fit.
constexpr std::uint64_t mostPixelsInRow = 1ULL << 31;
constexpr std::uint64_t mostBitsPerPixel = 1024;

struct Announced {
    AnnouncedSize size;
    std::uint64_t bitsPerPixel = 0;
    std::uint64_t expansion = 0; ///< of the bytes from `start` on; 0: unknown
    std::uint64_t start = 0;     ///< bytes before the pixels, if that is known
};

/// Bytes of a file at any place; 0 beyond its end.
class Bytes {
public:
    explicit Bytes(std::filesystem::path const& file) : stream(file, std::ios::binary)
    {
        std::error_code failure;
        size = std::filesystem::file_size(file, failure);
        size = failure ? 0 : size;
    }

    std::uint64_t getSize() const { return size; }

    std::string read(std::uint64_t place, std::size_t count)
    {
        std::string bytes(count, '\0');
        stream.clear();
        stream.seekg(static_cast<std::streamoff>(place));
        stream.read(bytes.data(), static_cast<std::streamsize>(count));
        return bytes;
    }

    std::uint64_t number(std::uint64_t place, std::size_t count, bool isBigEndian)
    {
        std::string const bytes = read(place, count);
        std::uint64_t value = 0;
        for (std::size_t index = 0; index < count; ++index) {
            char const byte = bytes[isBigEndian ? index : count - 1 - index];
            value = value << 8U | static_cast<unsigned char>(byte);
        }
        return value;
    }

private:
    std::ifstream stream;
    std::uint64_t size = 0;
};

Announced announcedByPng(Bytes& bytes)
{
    constexpr std::uint64_t samplesOfType[] = {1, 0, 3, 1, 2, 0, 4};
    std::uint64_t const type = bytes.number(25, 1, true);
    return {{bytes.number(16, 4, true), bytes.number(20, 4, true)},
            type < std::size(samplesOfType) ? samplesOfType[type] * bytes.number(24, 1, true) : 0,
            deflateExpansion,
            0};
}

/// The place of the marker that begins the picture, 0 for none.
std::uint64_t findFrameOfJpeg(Bytes& bytes)
{
    constexpr std::uint64_t firstFrame = 0xC0;
    constexpr std::uint64_t lastFrameByHuffman = 0xC2; // later ones have other codes
    for (std::uint64_t place = 2; place + 10 < bytes.getSize();) {
        std::uint64_t const marker = bytes.number(place, 2, true);
        if (marker >> 8U != 0xFF || marker == 0xFFDA) {
            return 0;
        }
        if ((marker & 0xFFU) >= firstFrame && (marker & 0xFFU) <= lastFrameByHuffman) {
            return place;
        }
        place += marker == 0xFFFF ? 1 : 2 + bytes.number(place + 2, 2, true);
    }
    return 0;
}

Announced announcedByJpeg(Bytes& bytes)
{
    std::uint64_t const frame = findFrameOfJpeg(bytes);
    if (frame == 0) {
        return {};
    }
    return {{bytes.number(frame + 7, 2, true), bytes.number(frame + 5, 2, true)},
            8 * bytes.number(frame + 9, 1, true),
            jpegExpansion,
            0};
}

Announced announcedByDpx(Bytes& bytes, bool isBigEndian)
{
    // The first element's fields, SMPTE ST 268.
    std::uint64_t const descriptor = bytes.number(800, 1, isBigEndian);
    std::uint64_t const bits = bytes.number(803, 1, isBigEndian);
    std::uint64_t const start = bytes.number(4, 4, isBigEndian);
    bool const isPacked = bytes.number(804, 2, isBigEndian) == 0;
    bool const isPlain = bytes.number(806, 2, isBigEndian) == 0;
    std::uint64_t const samples = descriptor == 50                       ? 3
                                  : descriptor == 51 || descriptor == 52 ? 4
                                                                         : 1;
    // Filled words of 32 bits hold three samples of 10 bits, or two of 12.
    std::uint64_t const filled = bits == 12 ? 16 : bits;
    return {{bytes.number(772, 4, isBigEndian), bytes.number(776, 4, isBigEndian)},
            samples * (isPacked ? bits : filled),
            isPlain ? 1ULL : 0ULL,
            start < bytes.getSize() ? start : 0};
}

std::uint64_t expansionOfTiff(std::uint64_t compression)
{
    switch (compression) {
    case 1: return 1;
    case 5: return lzwExpansion;
    case 8:
    case 32946: return deflateExpansion;
    case 32773: return packBitsExpansion;
    default: return 0;
    }
}

/// A TIFF file's first directory. Files beyond 4 GB (BigTIFF) have 8 bytes for places and counts.
struct TiffDirectory {
    Bytes& bytes;
    bool isBigEndian;
    bool isBigFile;

    /// Where a tag's values are.
    struct Values {
        std::uint64_t place = 0;
        std::uint64_t count = 0;
        std::size_t size = 0; ///< of each
    };

    static std::size_t sizeOfType(std::uint64_t type)
    {
        constexpr std::uint64_t shortType = 3;
        constexpr std::uint64_t firstLongType = 16;
        return type == shortType ? 2 : type < firstLongType ? 4 : 8;
    }

    Values find(std::uint64_t tag) const
    {
        std::size_t const placeBytes = isBigFile ? 8 : 4;
        std::size_t const countBytes = isBigFile ? 8 : 2;
        std::uint64_t const entryBytes = 4 + 2 * placeBytes;
        std::uint64_t const directory = bytes.number(placeBytes, placeBytes, isBigEndian);
        std::uint64_t const entries = bytes.number(directory, countBytes, isBigEndian);
        std::uint64_t place = directory + countBytes;
        for (std::uint64_t entry = 0; entry < entries && place < bytes.getSize(); ++entry) {
            if (bytes.number(place, 2, isBigEndian) == tag) {
                std::uint64_t const count = bytes.number(place + 4, placeBytes, isBigEndian);
                std::size_t const size = sizeOfType(bytes.number(place + 2, 2, isBigEndian));
                bool const isElsewhere = count > placeBytes / size;
                std::uint64_t const values = place + 4 + placeBytes;
                return {isElsewhere ? bytes.number(values, placeBytes, isBigEndian) : values, count,
                        size};
            }
            place += entryBytes;
        }
        return {};
    }

    /// 0 beyond the last one.
    std::uint64_t valueAt(Values const& values, std::uint64_t index) const
    {
        return index < values.count
                   ? bytes.number(values.place + index * values.size, values.size, isBigEndian)
                   : 0;
    }

    /// The first value of a tag, or `fallback` where there is none.
    std::uint64_t valueOf(std::uint64_t tag, std::uint64_t fallback) const
    {
        Values const values = find(tag);
        return values.count == 0 ? fallback : valueAt(values, 0);
    }

    bool hasSeparatePlanes() const { return valueOf(284, 1) == 2; }

    /// 0 where chroma may be sub-sampled.
    std::uint64_t bitsPerPixel() const
    {
        constexpr std::uint64_t yCbCr = 6;
        return valueOf(262, 0) == yCbCr ? 0 : valueOf(258, 1) * valueOf(277, 1);
    }

    /// Bytes in a row of a strip or tile that is `width` wide.
    std::uint64_t rowBytes(std::uint64_t width) const
    {
        std::uint64_t const bits =
            bitsPerPixel() /
            (hasSeparatePlanes() ? std::max<std::uint64_t>(valueOf(277, 1), 1) : 1);
        return width < mostPixelsInRow && bits <= mostBitsPerPixel ? (width * bits + 7) / 8 : 0;
    }
};

std::optional<TiffDirectory> findTiff(Bytes& bytes)
{
    std::string const start = bytes.read(0, 4);
    bool const isBigEndian = start.starts_with("MM");
    std::uint64_t const version = bytes.number(2, 2, isBigEndian);
    constexpr std::uint64_t ordinary = 42;
    constexpr std::uint64_t big = 43;
    bool const isTiff =
        (isBigEndian || start.starts_with("II")) && (version == ordinary || version == big);
    return isTiff ? std::optional(TiffDirectory{bytes, isBigEndian, version == big}) : std::nullopt;
}

Announced announcedByTiff(TiffDirectory const& directory)
{
    return {{directory.valueOf(256, 0), directory.valueOf(257, 0)},
            directory.bitsPerPixel(),
            expansionOfTiff(directory.valueOf(259, 1)),
            0};
}

/// Whether deflated bytes end before they fill `size` bytes.
bool endsEarly(std::string const& packed, std::size_t size)
{
    struct Free {
        void operator()(libdeflate_decompressor* tool) const { libdeflate_free_decompressor(tool); }
    };
    static thread_local std::unique_ptr<libdeflate_decompressor, Free> const tool(
        libdeflate_alloc_decompressor());
    std::vector<char> unpacked(size);
    return tool != nullptr &&
           libdeflate_zlib_decompress(tool.get(), packed.data(), packed.size(), unpacked.data(),
                                      size, nullptr) == LIBDEFLATE_SHORT_OUTPUT;
}

Announced findAnnounced(Bytes& bytes)
{
    std::string const start = bytes.read(0, 8);
    std::string_view const first = std::string_view(start).substr(0, 4);
    if (start == "\x89PNG\r\n\x1a\n") {
        return announcedByPng(bytes);
    }
    if (first == "SDPX" || first == "XPDS") {
        return announcedByDpx(bytes, first == "SDPX");
    }
    if (std::optional<TiffDirectory> const tiff = findTiff(bytes)) {
        return announcedByTiff(*tiff);
    }
    return first.starts_with("\xff\xd8\xff") ? announcedByJpeg(bytes) : Announced();
}

} // namespace

std::optional<AnnouncedSize> findSizeBeyondFile(std::filesystem::path const& file)
{
    Bytes bytes(file);
    Announced const announced = findAnnounced(bytes);
    auto const& [width, height] = announced.size;
    if (width == 0 || height == 0 || announced.bitsPerPixel > mostBitsPerPixel) {
        return std::nullopt; // the library says what is wrong with it
    }
    bool const isHuge = width >= mostPixelsInRow || height >= mostPixelsInRow;
    // Whole bytes of each row, at most 2^38 of them.
    std::uint64_t const rowBytes = isHuge ? 0 : width * announced.bitsPerPixel / 8;
    bool const isBeyond =
        !isHuge && announced.expansion != 0 && rowBytes != 0 &&
        height > (bytes.getSize() - announced.start) * announced.expansion / rowBytes;
    return isBeyond ? std::optional(announced.size) : std::nullopt;
}

bool hasImpossibleUserData(std::filesystem::path const& file)
{
    // A field of the header, SMPTE ST 268; all bits say that there are none.
    constexpr std::uint64_t userBytesOffset = 32;
    constexpr std::uint64_t none = 0xffffffff;
    Bytes bytes(file);
    std::string const start = bytes.read(0, 4);
    if (start != "SDPX" && start != "XPDS") {
        return false;
    }
    std::uint64_t const userBytes = bytes.number(userBytesOffset, 4, start == "SDPX");
    return userBytes != none && userBytes > bytes.getSize();
}

bool hasShortBlocks(std::filesystem::path const& file)
{
    Bytes bytes(file);
    std::optional<TiffDirectory> const tiff = findTiff(bytes);
    if (!tiff || expansionOfTiff(tiff->valueOf(259, 1)) != deflateExpansion) {
        return false;
    }
    constexpr std::uint64_t mostBlockBytes = 256 << 20; // what a block takes twice
    bool const isTiled = tiff->valueOf(322, 0) != 0;
    std::uint64_t const height = tiff->valueOf(257, 0);
    std::uint64_t const rows =
        isTiled ? tiff->valueOf(323, 0) : std::min(tiff->valueOf(278, height), height);
    std::uint64_t const rowBytes = tiff->rowBytes(tiff->valueOf(isTiled ? 322 : 256, 0));
    if (rows == 0 || rowBytes == 0 || rows > mostBlockBytes / rowBytes) {
        return false;
    }
    std::uint64_t const stripsInPlane = (height + rows - 1) / rows;
    TiffDirectory::Values const offsets = tiff->find(isTiled ? 324 : 273);
    TiffDirectory::Values const sizes = tiff->find(isTiled ? 325 : 279);
    for (std::uint64_t block = 0; block < offsets.count && block < bytes.getSize(); ++block) {
        std::uint64_t const packed = tiff->valueAt(sizes, block);
        // Tiles are whole, the last strip of a plane has what is left.
        std::uint64_t const rowsLeft = isTiled ? rows : height - block % stripsInPlane * rows;
        if (packed <= bytes.getSize() &&
            endsEarly(bytes.read(tiff->valueAt(offsets, block), packed),
                      std::min(rows, rowsLeft) * rowBytes)) {
            return true;
        }
    }
    return false;
}
