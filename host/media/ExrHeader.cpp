// Reads headers with distrust: a damaged file must not make the library take memory or time that
// the file's own size cannot justify.

#include "media/ExrHeader.h"

#include "media/ErrorText.h"
#include "media/ExrAttributes.h"
#include "media/ExrChannels.h"

#include <Iex.h>
#include <ImathBox.h>
#include <ImfChannelList.h>
#include <ImfPartType.h>
#include <ImfVersion.h>
#include <algorithm>
#include <limits>
#include <set>
#include <string>

namespace {

constexpr std::uint64_t headerStart = 8;             // magic number and version
constexpr std::uint64_t mostBlockBytes = 1ULL << 30; // decoded, of one block of rows or one tile
constexpr std::uint64_t chunkTableEntryBytes = 8;
constexpr std::int64_t farthestPixel = std::numeric_limits<int>::max() / 2;

/// What the first bytes and a walk over the attributes tell.
struct HeaderOutline {
    int version = 0;
    int parts = 0;
};

[[noreturn]] void throwDamaged(std::filesystem::path const& file, std::string const& what)
{
    throwReadError(ImageFailure::File, file, "the file is damaged (" + what + ")");
}

HeaderOutline outlineHeader(CheckedInput& stream)
{
    HeaderOutline outline;
    stream.seekg(0);
    if (readHeaderInt(stream) != Imf::MAGIC) {
        throw Iex::InputExc("it does not begin as an EXR file does");
    }
    outline.version = readHeaderInt(stream);
    if (!Imf::isMultiPart(outline.version)) {
        outline.parts = walkAttributes(stream) ? 1 : 0;
        return outline;
    }
    while (walkAttributes(stream)) {
        ++outline.parts;
    }
    return outline;
}

void checkKind(HeaderOutline const& outline, std::filesystem::path const& file)
{
    if (Imf::getVersion(outline.version) != Imf::EXR_VERSION ||
        !Imf::supportsFlags(Imf::getFlags(outline.version))) {
        throwReadError(ImageFailure::File, file,
                       "it is damaged or of a version of EXR that is not known here");
    }
    if (outline.parts == 0) {
        throwDamaged(file, "its header is empty");
    }
}

/// What a part says of its kind. In a file of one part only, nothing but the version tells.
void checkPartType(ExrHeader& part, ExrHeaders const& headers, std::filesystem::path const& file)
{
    Imf::Header const& header = part.header;
    part.isDeep = header.hasType() && Imf::isDeepData(header.type());
    if (!headers.hasPartNumbers) {
        part.isDeep = part.isDeep || Imf::isNonImage(headers.version);
        part.isTiled = Imf::isTiled(headers.version) ||
                       (part.isDeep && header.hasType() && header.type() == Imf::DEEPTILE);
        return;
    }
    if (!header.hasType() || !header.hasName()) {
        throwDamaged(file, "one of its parts has no name or no type");
    }
    if (!Imf::isSupportedType(header.type())) {
        throwReadError(ImageFailure::File, file,
                       "its part " + quoteName(header.name()) +
                           " is of a kind that is not known here");
    }
    part.isTiled = header.type() == Imf::TILEDIMAGE || header.type() == Imf::DEEPTILE;
}

void checkNames(ExrHeaders const& headers, std::filesystem::path const& file)
{
    std::set<std::string> names;
    for (ExrHeader const& part : headers.parts) {
        if (headers.hasPartNumbers && !names.insert(part.header.name()).second) {
            throwDamaged(file, "two of its parts are called " + quoteName(part.header.name()));
        }
    }
}

/// Blocks or tiles of level 0; each has an entry in a table that the file holds.
std::uint64_t countChunks(ExrHeader const& header)
{
    Imath::Box2i const& window = header.header.dataWindow();
    auto const width = static_cast<std::uint64_t>(window.max.x) - window.min.x + 1;
    auto const height = static_cast<std::uint64_t>(window.max.y) - window.min.y + 1;
    auto const rows = static_cast<std::uint64_t>(rowsPerBlockOf(header));
    std::uint64_t const down = (height + rows - 1) / rows;
    if (!header.isTiled) {
        return down;
    }
    std::uint64_t const across = header.header.tileDescription().xSize;
    return down * ((width + across - 1) / across);
}

void checkWindow(Imath::Box2i const& window, std::filesystem::path const& file)
{
    for (std::int64_t const edge : {window.min.x, window.min.y, window.max.x, window.max.y}) {
        if (edge < -farthestPixel || edge > farthestPixel) {
            throwDamaged(file, "its data window lies out of reach");
        }
    }
    if (window.isEmpty()) {
        throwDamaged(file, "its data window is empty");
    }
}

void checkTiles(ExrHeader const& header, std::filesystem::path const& file)
{
    if (!header.isTiled) {
        return;
    }
    if (!header.header.hasTileDescription()) {
        throwDamaged(file, "it is tiled but has no tile size");
    }
    Imf::TileDescription const& tiles = header.header.tileDescription();
    std::uint64_t const pixelBytes = bytesPerPixelOf(header.header.channels());
    std::uint64_t const most = std::numeric_limits<int>::max() / 2;
    if (tiles.xSize == 0 || tiles.ySize == 0 || tiles.xSize > most || tiles.ySize > most) {
        throwDamaged(file, "its tile size is impossible");
    }
    std::uint64_t const pixels = static_cast<std::uint64_t>(tiles.xSize) * tiles.ySize;
    if (pixels > mostBlockBytes || pixels * pixelBytes > mostBlockBytes) {
        throwReadError(ImageFailure::File, file, "its tiles are too large to be processed");
    }
}

void checkSizes(ExrHeader const& header, std::filesystem::path const& file, std::uint64_t fileBytes,
                std::size_t mostBytes)
{
    Imath::Box2i const& window = header.header.dataWindow();
    checkWindow(window, file);
    checkTiles(header, file);
    auto const width = static_cast<std::uint64_t>(window.max.x) - window.min.x + 1;
    auto const height = static_cast<std::uint64_t>(window.max.y) - window.min.y + 1;
    std::uint64_t const pixelBytes = bytesPerPixelOf(header.header.channels());
    std::string const size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    // Widths and heights have 31 bits: their product fits, and the division avoids the rest.
    if (pixelBytes != 0 && !header.isDeep && width * height > mostBytes / pixelBytes) {
        throwReadError(ImageFailure::File, file,
                       "it announces " + size + ", more than is processed here");
    }
    auto const rows = static_cast<std::uint64_t>(rowsPerBlockOf(header));
    if (width * std::min(rows, height) * pixelBytes > mostBlockBytes) {
        throwReadError(ImageFailure::File, file, "its rows are too long to be processed");
    }
    if (countChunks(header) > fileBytes / chunkTableEntryBytes) {
        throwDamaged(file, "it announces " + size + " but is too short for them");
    }
}

} // namespace

ExrHeaders readExrHeaders(CheckedInput& stream, std::filesystem::path const& file,
                          std::size_t mostBytes)
{
    ExrHeaders result;
    try {
        HeaderOutline const outline = outlineHeader(stream);
        checkKind(outline, file);
        stream.seekg(headerStart);
        result.version = outline.version;
        result.hasPartNumbers = Imf::isMultiPart(outline.version);
        for (int index = 0; index < outline.parts; ++index) {
            ExrHeader& part = result.parts.emplace_back();
            int version = outline.version;
            part.header.readFrom(stream, version);
            checkPartType(part, result, file);
            part.header.sanityCheck(part.isTiled, result.hasPartNumbers);
            checkSizes(part, file, stream.getSize(), mostBytes);
        }
        checkNames(result, file);
        // The headers of parts end with an empty one.
        result.tablesStart = stream.tellg() + (result.hasPartNumbers ? 1 : 0);
        return result;
    } catch (...) {
        rethrowAsReadError(file, stream.getSystemError());
    }
}

void throwDeep(std::filesystem::path const& file)
{
    throwReadError(ImageFailure::File, file,
                   "it holds deep data, which has no plain pixels; flatten it first");
}

std::string namePart(ExrHeaders const& headers, std::size_t part)
{
    Imf::Header const& header = headers.parts[part].header;
    return header.hasName() ? quoteName(header.name()) : std::to_string(part);
}

int rowsPerBlockOf(ExrHeader const& header)
{
    if (header.isTiled) {
        return static_cast<int>(header.header.tileDescription().ySize);
    }
    switch (header.header.compression()) {
    case Imf::NO_COMPRESSION:
    case Imf::RLE_COMPRESSION:
    case Imf::ZIPS_COMPRESSION: return 1;
    case Imf::ZIP_COMPRESSION:
    case Imf::PXR24_COMPRESSION: return 16;
    case Imf::PIZ_COMPRESSION:
    case Imf::B44_COMPRESSION:
    case Imf::B44A_COMPRESSION:
    case Imf::DWAA_COMPRESSION: return 32;
    case Imf::DWAB_COMPRESSION: return 256;
    case Imf::NUM_COMPRESSION_METHODS: break;
    }
    throw Iex::InputExc("unknown compression");
}

std::size_t bytesPerPixelOf(Imf::ChannelList const& channels)
{
    std::size_t bytes = 0;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        bytes += sampleBytesOf(channel.channel().type);
    }
    return bytes;
}
