// Writing pictures through OpenImageIO strip by strip.

#include "media/oiio/OiioWriter.h"

#include "files/PrintableText.h"
#include "files/StandardFiles.h"
#include "media/ErrorText.h"
#include "media/ImageTarget.h"
#include "media/PixelRows.h"
#include "media/oiio/FormatNames.h"
#include "media/oiio/OiioAttributes.h"
#include "media/oiio/TiffStrips.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <half.h>

namespace {

constexpr std::size_t rgbaComponents = 4;
constexpr std::uint64_t mostPixels = 1ULL << 33; // of a display window, which may be nonsense
constexpr int longestJpegSide = 65500;           // the library's limit
constexpr int paddingRows = 16;                  // written at a time
constexpr char const* rowsPerStrip = "tiff:RowsPerStrip";
constexpr int usualRowsPerStrip = 32;
constexpr std::size_t mostGathered = std::size_t{16} << 20U; // bytes

// Of deflate: a third of the time that the libraries' own take.
constexpr int quickLevel = 1;
constexpr int pngFilterSub = 0x10; // PNG's number for differences along a row
// Looks for equal bytes in a row only, which is what those differences have: in half the time of a
// search for any repetition, and pictures get smaller rather than larger.
constexpr char const* pngStrategy = "rle";

/// Weights of ITU-R BT.709.
constexpr std::array<float, 3> luminanceWeights = {0.2126F, 0.7152F, 0.0722F};

OIIO::TypeDesc typeOf(SampleStorage storage)
{
    switch (storage) {
    case SampleStorage::UInt8: return OIIO::TypeUInt8;
    case SampleStorage::UInt16: return OIIO::TypeUInt16;
    case SampleStorage::Half: return OIIO::TypeHalf;
    case SampleStorage::Float: break;
    }
    return OIIO::TypeFloat;
}

/// An integer of `bits` bits as the library wants it: scaled to 16 bits such that its highest bits
/// are the integer.
std::uint16_t widen(unsigned value, int bits)
{
    return static_cast<std::uint16_t>(value << (16 - bits) | value >> (2 * bits - 16));
}

bool isSameToTheBit(float a, float b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

std::string formatSize(GeRectangle<int> const& window)
{
    return std::to_string(window.getWidth()) + " x " + std::to_string(window.getHeight());
}

std::string describeDepth(OutputDepth const& depth)
{
    return std::to_string(depth.bits) + "-bit integers";
}

} // namespace

OiioWriter::OiioWriter(std::filesystem::path const& file, ImageSource& source,
                       IxPixelFormat const& resultFormat, WriteOptions const& options,
                       MediaReport const& mediaReport)
    : report(mediaReport), kind(findFileKind(file, options).value()), format(resultFormat),
      dataWindow(source.getInfo().dataWindow), displayWindow(source.getInfo().displayWindow),
      isSourcePremultiplied(source.getInfo().format.isPremultiplied()), nextRow(displayWindow.y0),
      temporary(makeTemporaryImage(file)), stream(temporary)
{
    auto* const media = dynamic_cast<MediaSource*>(&source);
    if (media != nullptr) {
        media->takePlainStrips();
    }
    try {
        planChannels(media);
        planSamples(source, options.keepsInputDepth);
        planAttributes(source, options.stamp);
        open();
    } catch (...) {
        rethrowAsWriteError(file, stream.getSystemError());
    }
    reportLosses(media);
}

OiioWriter::~OiioWriter() = default;

void OiioOutputCloser::operator()(OIIO::ImageOutput* output) const noexcept
{
    try {
        output->close();
    } catch (...) {
        return; // its destructor would throw the same once more
    }
    delete output;
}

void OiioWriter::planChannels(MediaSource const* source)
{
    bool const hasAlpha = format.getComponents() == IxPixelFormat::RGBA;
    bool const dropsAlpha = kind == FileKind::Jpeg;
    // DPX has no luminance with alpha.
    isLuminance =
        source != nullptr && source->isLuminanceOnly() && !(kind == FileKind::Dpx && hasAlpha);
    std::size_t const colours =
        isLuminance || format.getComponents() == IxPixelFormat::ALPHA ? 1 : 3;
    channels = colours + (hasAlpha && !dropsAlpha ? 1 : 0);
}

void OiioWriter::planSamples(ImageSource const& source, bool keepsInputDepth)
{
    auto const* const reader = dynamic_cast<OiioReader const*>(&source);
    SampleStorage const storage = storageToKeep(source);
    int const sourceBits = reader != nullptr                 ? reader->getBits()
                           : storage == SampleStorage::UInt8 ? 8
                                                             : 16;
    depth = chooseOutputDepth(kind, format.getDepth(), storage, sourceBits, keepsInputDepth);
    auto const pixels = static_cast<std::uint64_t>(displayWindow.getWidth()) *
                        static_cast<std::uint64_t>(displayWindow.getHeight());
    if (displayWindow.isEmpty() || pixels > mostPixels) {
        throwWriteError(ImageFailure::Request, temporary.getTarget(),
                        "the source's display window is too large for this kind of file");
    }
    if (kind == FileKind::Jpeg &&
        std::max(displayWindow.getWidth(), displayWindow.getHeight()) > longestJpegSide) {
        throwWriteError(ImageFailure::Request, temporary.getTarget(),
                        "JPEG holds at most " + std::to_string(longestJpegSide) +
                            " pixels in a row or column; choose another file format");
    }
    spec = OIIO::ImageSpec(displayWindow.getWidth(), displayWindow.getHeight(),
                           static_cast<int>(channels), typeOf(depth.storage));
    if (channels == 2) {
        spec.channelnames = {"Y", "A"};
        spec.alpha_channel = 1;
    }
}

void OiioWriter::planAttributes(ImageSource const& source, std::string const& stamp)
{
    auto const* const reader = dynamic_cast<OiioReader const*>(&source);
    if (reader != nullptr && reader->getKind() == kind) {
        sourceSpec = reader->getSpec();
        copyAllAttributes(sourceSpec, kind, spec);
        spec.tile_width = reader->getSpec().tile_width;
        spec.tile_height = reader->getSpec().tile_height;
    } else {
        setAspect(kind, source.getInfo().format.getAspectRatio(), spec);
        if (reader != nullptr) {
            copyLookAttributes(reader->getSpec(), kind, spec);
        }
    }
    if (!stamp.empty()) {
        setSoftware(stamp, sourceSpec, spec);
    }
    holdAspect(kind, spec);
    suppressDate(kind, spec);
    if (kind == FileKind::Tiff && depth.storage == SampleStorage::Half) {
        spec.attribute("tiff:half", 1); // without it, the library writes float
    }
    if (kind == FileKind::Dpx) {
        spec.attribute("oiio:BitsPerSample", depth.bits);
    }
    if (kind == FileKind::Tiff) {
        spec.attribute("tiff:zipquality", quickLevel);
        planStrips();
    }
    if (kind == FileKind::Png) {
        spec.attribute("png:compressionLevel", quickLevel);
        spec.attribute("png:filter", pngFilterSub);
        spec.attribute("compression", pngStrategy);
    }
    // Says that colour is handed over as it is to be stored; without it, PNG colour is divided by
    // alpha once more.
    if (kind == FileKind::Png || !isSourcePremultiplied) {
        spec.attribute("oiio:UnassociatedAlpha", 1);
    }
}

void OiioWriter::planStrips()
{
    int const rows = spec.get_int_attribute(rowsPerStrip, usualRowsPerStrip);
    spec.attribute(rowsPerStrip, rows);
    auto const most = mostGathered / static_cast<std::size_t>(spec.scanline_bytes());
    bool const isGathered =
        spec.tile_width == 0 && rows > 0 && static_cast<std::size_t>(rows) <= most;
    stripRows = isGathered ? rows : 1;
}

void OiioWriter::reportLosses(MediaSource const* source) const
{
    std::string const name = nameOutput(temporary.getTarget());
    if (!displayWindow.contains(dataWindow)) {
        report.warn(name + " gets the display window of " + formatSize(displayWindow) +
                    " pixels; pixels outside of it are left out");
    } else if (!(dataWindow == displayWindow)) {
        report.note(name + " gets the display window of " + formatSize(displayWindow) +
                    " pixels: this kind of file has no data window");
    }
    if (source != nullptr && source->hasFurtherChannels()) {
        report.warn(name +
                    " holds colour and alpha only: this kind of file has no further channels");
    }
    if (format.getComponents() == IxPixelFormat::RGBA && kind == FileKind::Jpeg) {
        report.warn(name + " holds no alpha: this kind of file has none");
    }
    if (depth.isReduced) {
        report.note(name + " holds " + describeDepth(depth) +
                    ": values are clamped to 0 to 1 and rounded");
    }
}

void OiioWriter::open()
{
    output.reset(OIIO::ImageOutput::create(nameFormat(kind)).release());
    if (output == nullptr || !output->set_ioproxy(&stream)) {
        throwWriteError(ImageFailure::Surroundings, temporary.getTarget(),
                        "this installation of OpenImageIO cannot write this kind of file");
    }
    // The name ends up in some files: it must not be the temporary one.
    if (!output->open(temporary.getTarget().filename().string(), spec)) {
        if (stream.getSystemError() != 0) {
            fail();
        }
        throwWriteError(ImageFailure::Request, temporary.getTarget(),
                        trimLibraryText(output->geterror(), temporary.getTarget().filename()));
    }
}

void OiioWriter::fail() const
{
    if (stream.getSystemError() != 0) {
        throwSystemWriteError(stream.getSystemError(), temporary.getTarget());
    }
    std::string const detail =
        trimLibraryText(output->geterror(), temporary.getTarget().filename());
    throwWriteError(ImageFailure::Surroundings, temporary.getTarget(),
                    detail.empty() ? "the disk may be full or faulty" : detail);
}

/// The strip's rows as the file has them, in one block whose number is the first one's; none where
/// the display window has none.
void OiioWriter::pack(IxTile const& result, PackedBlocks& packed) const
{
    packed.clear();
    int const top = std::max(result.getBounds().y0, displayWindow.y0);
    int const bottom = std::min(result.getBounds().y1, displayWindow.y1);
    if (top >= bottom) {
        return;
    }
    std::size_t const rowBytes = static_cast<std::size_t>(spec.scanline_bytes());
    std::span<std::byte> const rows =
        packed.memory.grow(rowBytes * static_cast<std::size_t>(bottom - top));
    std::ranges::fill(rows, std::byte{});
    std::vector<float> values;
    for (int y = top; y < bottom; ++y) {
        fillRow(result, y, values, &rows[rowBytes * static_cast<std::size_t>(y - top)]);
    }
    packed.list.push_back({static_cast<std::uint64_t>(top - displayWindow.y0), 0, rows.size()});
}

void OiioWriter::packStrip(IxTile const& result, ImageStrip& strip) const
{
    try {
        pack(result, strip.packed);
    } catch (...) {
        constexpr int noSystemError = 0;
        rethrowAsWriteError(temporary.getTarget(), noSystemError);
    }
}

void OiioWriter::writeStrip(IxTile const& result, ImageStrip const& strip)
{
    try {
        PackedBlocks packedHere;
        if (strip.packed.list.empty()) {
            pack(result, packedHere);
        }
        PackedBlocks const& packed = strip.packed.list.empty() ? packedHere : strip.packed;
        for (PackedBlock const& rows : packed.list) {
            padTo(displayWindow.y0 + static_cast<int>(rows.number));
            writeRows(static_cast<int>(rows.size / spec.scanline_bytes()), packed.bytesOf(rows));
        }
    } catch (...) {
        rethrowAsWriteError(temporary.getTarget(), stream.getSystemError());
    }
}

bool OiioWriter::isStraightCopy() const
{
    return format.getDepth() == IxPixelFormat::UINT8 && depth.storage == SampleStorage::UInt8 &&
           channels == static_cast<std::size_t>(format.getNbComponents()) &&
           !(kind == FileKind::Png && isSourcePremultiplied);
}

/// Fills what lies within the data window of row `y` of the file.
void OiioWriter::fillRow(IxTile const& result, int y, std::vector<float>& values,
                         std::byte* row) const
{
    IxReadGuard const guard(result);
    int const left = std::max(dataWindow.x0, displayWindow.x0);
    int const right = std::min(dataWindow.x1, displayWindow.x1);
    if (left >= right) {
        return;
    }
    auto const pixels = static_cast<std::size_t>(right - left);
    std::byte const* const source =
        guard.getRow(y) +
        static_cast<std::size_t>(left - result.getBounds().x0) * format.getBytesPerPixel();
    std::byte* const target = row + static_cast<std::size_t>(left - displayWindow.x0) *
                                        static_cast<std::size_t>(spec.pixel_bytes());
    if (isStraightCopy()) {
        std::memcpy(target, source, pixels * format.getBytesPerPixel());
        return;
    }
    values.resize(pixels * static_cast<std::size_t>(format.getNbComponents()));
    samplesToFloat(source, format.getDepth(), values);
    if (kind == FileKind::Png && isSourcePremultiplied &&
        format.getComponents() == IxPixelFormat::RGBA) {
        unpremultiply(values);
    }
    reduceToChannels(values, pixels);
    storeSamples({values.data(), pixels * channels}, target);
}

/// Brings the components of `values` to those of the file, in place.
void OiioWriter::reduceToChannels(std::vector<float>& values, std::size_t pixels) const
{
    auto const components = static_cast<std::size_t>(format.getNbComponents());
    if (components == channels) {
        return;
    }
    float* target = values.data();
    for (std::size_t index = 0; index < pixels; ++index) {
        float* const pixel = &values[index * components];
        if (isLuminance) {
            bool const isGrey =
                isSameToTheBit(pixel[0], pixel[1]) && isSameToTheBit(pixel[0], pixel[2]);
            if (!isGrey) {
                hasLostColour = true;
            }
            *target++ = isGrey ? pixel[0]
                               : pixel[0] * luminanceWeights[0] + pixel[1] * luminanceWeights[1] +
                                     pixel[2] * luminanceWeights[2];
        } else {
            target = std::copy_n(pixel, 3, target);
        }
        if (channels % 2 == 0) { // 2 and 4 have alpha
            *target++ = pixel[rgbaComponents - 1];
        }
    }
}

void OiioWriter::storeSamples(std::span<float const> stored, std::byte* samples) const
{
    unsigned const largest = (1U << static_cast<unsigned>(std::min(depth.bits, 16))) - 1U;
    switch (depth.storage) {
    case SampleStorage::UInt8:
        for (float const value : stored) {
            *samples++ = static_cast<std::byte>(toInteger(value, largest));
        }
        return;
    case SampleStorage::UInt16:
        for (float const value : stored) {
            std::uint16_t const word = widen(toInteger(value, largest), depth.bits);
            std::memcpy(samples, &word, sizeof word);
            samples += sizeof word;
        }
        return;
    case SampleStorage::Half:
        for (float const value : stored) {
            std::uint16_t const bits = imath_float_to_half(value);
            std::memcpy(samples, &bits, sizeof bits);
            samples += sizeof bits;
        }
        return;
    case SampleStorage::Float: std::memcpy(samples, stored.data(), stored.size_bytes()); return;
    }
}

void OiioWriter::writeRows(int rows, std::span<std::byte const> bytes)
{
    nextRow += rows;
    if (stripRows == 1) {
        handOver(nextRow - rows, bytes);
        return;
    }
    gathered.insert(gathered.end(), bytes.begin(), bytes.end());
    auto const rowBytes = static_cast<std::size_t>(spec.scanline_bytes());
    auto const nbGathered = static_cast<int>(gathered.size() / rowBytes);
    int const nbLeft = nextRow == displayWindow.y1 ? 0 : nbGathered % stripRows;
    std::size_t const whole = gathered.size() - static_cast<std::size_t>(nbLeft) * rowBytes;
    if (whole > 0) {
        handOver(nextRow - nbGathered, std::span(gathered).first(whole));
        gathered.erase(gathered.begin(), gathered.begin() + static_cast<std::ptrdiff_t>(whole));
    }
}

/// Whole rows of the file from picture row `row` on.
void OiioWriter::handOver(int row, std::span<std::byte const> bytes)
{
    auto const rows =
        static_cast<int>(bytes.size() / static_cast<std::size_t>(spec.scanline_bytes()));
    int const begin = spec.y + row - displayWindow.y0;
    bool isWritten = false;
    if (spec.tile_width > 0) {
        isWritten = output->write_tiles(spec.x, spec.x + spec.width, begin, begin + rows, spec.z,
                                        spec.z + 1, spec.format, bytes.data());
    } else {
        auto const top = static_cast<std::uint32_t>(row - displayWindow.y0);
        TiffStrips const strips(top, top + static_cast<std::uint32_t>(rows));
        isWritten = output->write_scanlines(begin, begin + rows, spec.z, spec.format, bytes.data());
    }
    if (!isWritten || stream.getSystemError() != 0) {
        fail();
    }
}

/// Writes rows of 0 up to `y`.
void OiioWriter::padTo(int y)
{
    std::vector<std::byte> zeros;
    while (nextRow < y) {
        int const rows = std::min(y - nextRow, paddingRows);
        zeros.resize(static_cast<std::size_t>(spec.scanline_bytes()) *
                     static_cast<std::size_t>(rows));
        writeRows(rows, zeros);
    }
}

void OiioWriter::finish()
{
    try {
        padTo(displayWindow.y1);
        bool const isClosed = output->close();
        std::string const error = output->geterror();
        if (!isClosed || (!error.empty() && !isComplaintAboutExif(error, kind))) {
            stream.finish();
            throw std::runtime_error(error.empty() ? "closing failed" : error);
        }
        clearOwnName(kind, spec, stream);
        if (isStandardStream(temporary.getTarget())) {
            clearFileName(kind, stream);
        }
        stream.finish();
    } catch (...) {
        rethrowAsWriteError(temporary.getTarget(), stream.getSystemError());
    }
    check();
    publishImage(temporary);
    if (hasLostColour) {
        report.warn(
            nameOutput(temporary.getTarget()) +
            " holds luminance only, as its source did: the colour of the result is not in it");
    }
}

void OiioWriter::check() const
{
    auto const written = OIIO::ImageInput::create(nameFormat(kind));
    OIIO::ImageSpec ignored;
    if (written == nullptr || !written->open(temporary.getPath().string(), ignored) ||
        written->spec().width != spec.width || written->spec().height != spec.height ||
        static_cast<std::size_t>(written->spec().nchannels) != channels) {
        OIIO::geterror();
        throwNotAsWritten(temporary);
    }
    std::vector<std::string> const lost = listLost(sourceSpec, written->spec());
    if (!lost.empty()) {
        report.warn(nameOutput(temporary.getTarget()) +
                    " lacks metadata of its source, or has it otherwise: " + quoteList(lost));
    }
}
