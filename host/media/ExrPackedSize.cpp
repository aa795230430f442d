// What packed bytes can become, and whether they do.

#include "media/ExrPackedSize.h"

#include "media/Deflate.h"
#include "media/ExrPizSymbols.h"
#include "media/ExrStreams.h"

#include <Iex.h>
#include <vector>

namespace {

constexpr std::size_t dwaNumbers = 11; // before a DWA chunk's data
constexpr std::size_t dwaNumberBytes = 8;

// How many bytes one packed byte can become.
//
// A run of RLE is 2 bytes for 128. Deflate's longest match is 258 bytes for 2 bits. PXR24 drops one
// of a float's four bytes and deflates. PIZ codes repeat a sample of 2 bytes 255 times in 9 bits. A
// block of B44 has 16 samples of 2 bytes in 3 bytes or more. DWA runs deflate over runs of RLE;
// what else it does (two numbers of 2 bytes, deflated, for 64 samples of 4 bytes) comes to the
// same.
constexpr std::uint64_t rleExpansion = 64;
constexpr std::uint64_t deflateExpansion = 1032;
constexpr std::uint64_t pxr24Expansion = deflateExpansion * 4 / 3;
constexpr std::uint64_t pizExpansion = 454; // two bytes a sample, eight bits a byte
constexpr std::uint64_t b44Expansion = 11;
constexpr std::uint64_t dwaExpansion = rleExpansion * deflateExpansion;

/// Bytes that the runs of RLE make.
std::uint64_t unpackedSizeOfRuns(std::span<std::byte const> packed)
{
    std::uint64_t size = 0;
    for (std::size_t index = 0; index < packed.size();) {
        int const count = static_cast<std::int8_t>(packed[index]);
        // A negative count of bytes as they are, or one byte less often than it is repeated by one.
        size += static_cast<std::uint64_t>(count < 0 ? -count : count + 1);
        index += count < 0 ? 1 + static_cast<std::size_t>(-count) : 2;
    }
    return size;
}

bool inflatesTo(std::span<std::byte const> packed, std::size_t size)
{
    std::vector<std::byte> unpacked(size);
    return inflateBytes(packed, unpacked);
}

/// Whether the codes of a PIZ block stand for `raw` bytes. Before them are the range of a bitmap
/// and its bytes, and the size of what follows.
bool isPizEnough(std::span<std::byte const> packed, std::uint64_t raw)
{
    constexpr std::size_t numbers = 4; // bytes of both numbers of the range, and of the size
    if (packed.size() < numbers) {
        return false;
    }
    std::size_t const first = readNumber<std::uint16_t>(packed.data());
    std::size_t const last = readNumber<std::uint16_t>(packed.data() + 2);
    std::size_t const codes = 2 * numbers + (first <= last ? last - first + 1 : 0);
    return packed.size() >= codes && countPizSymbols(packed.subspan(codes)) == raw / 2;
}

/// Whether the parts that a DWA chunk announces lie in it and can make `raw` bytes.
bool isDwaEnough(std::span<std::byte const> packed, std::uint64_t raw)
{
    enum Number {
        Version,
        UnknownRaw,
        UnknownPacked,
        AcPacked,
        DcPacked,
        RlePacked,
        RleDeflated,
        RleRaw,
        AcCount,
        DcCount
    };
    constexpr std::uint64_t samplesPerBlock = 64;
    if (packed.size() < dwaNumbers * dwaNumberBytes) {
        return false;
    }
    auto const numberOf = [&packed](Number which) {
        return readNumber<std::uint64_t>(packed.data() + which * dwaNumberBytes);
    };
    std::uint64_t left = packed.size() - dwaNumbers * dwaNumberBytes;
    for (Number const part : {UnknownPacked, AcPacked, DcPacked, RlePacked}) {
        if (numberOf(part) > left) {
            return false;
        }
        left -= numberOf(part);
    }
    std::uint64_t const blocks = numberOf(DcCount);
    bool const areSound = numberOf(UnknownRaw) <= raw && numberOf(RleRaw) <= raw && blocks <= raw &&
                          numberOf(AcCount) >= blocks;
    return areSound && blocks <= numberOf(DcPacked) * deflateExpansion &&
           numberOf(UnknownRaw) <= numberOf(UnknownPacked) * deflateExpansion &&
           numberOf(RleDeflated) <= numberOf(RlePacked) * deflateExpansion &&
           numberOf(RleRaw) <= numberOf(RleDeflated) * rleExpansion &&
           raw <=
               numberOf(UnknownRaw) + numberOf(RleRaw) + blocks * samplesPerBlock * sizeof(float);
}

/// Yes where the library checks.
bool fills(std::span<std::byte const> packed, std::uint64_t size, Imf::Compression compression)
{
    // A block that packing would not make smaller is stored as it is.
    if (packed.size() == size) {
        return true;
    }
    if (packed.empty() || packed.size() > size) {
        return false;
    }
    switch (compression) {
    case Imf::NO_COMPRESSION: return false;
    case Imf::RLE_COMPRESSION: return unpackedSizeOfRuns(packed) == size;
    case Imf::ZIPS_COMPRESSION:
    case Imf::ZIP_COMPRESSION: return inflatesTo(packed, size);
    case Imf::DWAA_COMPRESSION:
    case Imf::DWAB_COMPRESSION: return isDwaEnough(packed, size);
    case Imf::PIZ_COMPRESSION: return isPizEnough(packed, size);
    case Imf::PXR24_COMPRESSION:
    case Imf::B44_COMPRESSION:
    case Imf::B44A_COMPRESSION:
    case Imf::NUM_COMPRESSION_METHODS: break;
    }
    return true;
}

} // namespace

std::uint64_t mostExpansion(Imf::Compression compression)
{
    switch (compression) {
    case Imf::NO_COMPRESSION: return 1;
    case Imf::RLE_COMPRESSION: return rleExpansion;
    case Imf::ZIPS_COMPRESSION:
    case Imf::ZIP_COMPRESSION: return deflateExpansion;
    case Imf::PXR24_COMPRESSION: return pxr24Expansion;
    case Imf::PIZ_COMPRESSION: return pizExpansion;
    case Imf::B44_COMPRESSION:
    case Imf::B44A_COMPRESSION: return b44Expansion;
    case Imf::DWAA_COMPRESSION:
    case Imf::DWAB_COMPRESSION: return dwaExpansion;
    case Imf::NUM_COMPRESSION_METHODS: break;
    }
    throw Iex::InputExc("unknown compression");
}

void throwDamagedBlock()
{
    throw Iex::InputExc("a block of pixels does not hold what the header announces");
}

void checkFills(std::span<std::byte const> packed, std::uint64_t size, Imf::Compression compression)
{
    if (size != 0 && !fills(packed, size, compression)) {
        throwDamagedBlock();
    }
}
