// Reading pictures through OpenImageIO strip by strip.

#include "media/oiio/OiioReader.h"

#include "files/PrintableText.h"
#include "files/StandardFiles.h"
#include "media/ErrorText.h"
#include "media/oiio/FormatNames.h"
#include "media/oiio/HeldPixels.h"
#include "media/oiio/OiioAttributes.h"
#include "media/oiio/PngOutline.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <numeric>
#include <set>

namespace {

constexpr int rowsOfPlainFiles = 16;                 // read together where a file has no tiles
constexpr std::uint64_t mostStripBytes = 1ULL << 30; // of one row of tiles
constexpr float largestWord = 65535.F;
constexpr int aspectDenominator = 10000;

int indexOfChannel(OIIO::ImageSpec const& spec, std::string const& name)
{
    auto const found = std::find(spec.channelnames.begin(), spec.channelnames.end(), name);
    return found == spec.channelnames.end() ? -1
                                            : static_cast<int>(found - spec.channelnames.begin());
}

Rational toAspect(float ratio)
{
    bool const isUsable = ratio > 1.F / aspectDenominator && ratio < aspectDenominator;
    if (!isUsable) {
        return {1, 1};
    }
    int const numerator = static_cast<int>(std::lround(ratio * aspectDenominator));
    int const divisor = std::gcd(numerator, aspectDenominator);
    return {numerator / divisor, aspectDenominator / divisor};
}

} // namespace

OiioReader::OiioReader(std::filesystem::path const& wantedFile, ReadOptions const& options)
    : path(wantedFile), file(wantedFile)
{
    bool const hasLayer = std::any_of(options.layers.begin(), options.layers.end(),
                                      [](std::string const& layer) { return !layer.empty(); });
    if (hasLayer || !options.part.empty()) {
        throwReadError(ImageFailure::Request, path,
                       std::string("only EXR files have ") + (hasLayer ? "layers" : "parts"));
    }
    open();
    check(options.mostBytes);
    if (options.maskChannel && !options.maskChannel->empty()) {
        chooseMaskChannel(*options.maskChannel);
    } else {
        chooseChannels();
    }
    describe();
    findLosses();
}

OiioReader::~OiioReader() = default;

void OiioReader::open()
{
    if (std::optional<AnnouncedSize> const beyond = findSizeBeyondFile(file.getPath())) {
        throwReadError(ImageFailure::File, path,
                       "the file is damaged or incomplete: it announces " +
                           std::to_string(beyond->width) + " x " + std::to_string(beyond->height) +
                           " pixels but is too short for them");
    }
    if (hasImpossibleUserData(file.getPath())) {
        throwReadError(ImageFailure::File, path,
                       "the file is damaged (its user data are longer than the file)");
    }
    if (hasShortBlocks(file.getPath())) {
        throwReadError(ImageFailure::File, path,
                       "the file is incomplete: pixels are missing; make or copy it again");
    }
    PngOutline const png = outlinePng(file.getPath());
    if (png.isPng && !png.isComplete) {
        // The library would notice too late for some of its memory to be given back.
        throwReadError(ImageFailure::File, path,
                       "the file is incomplete: pixels are missing; make or copy it again");
    }
    openByLibrary();
    spec = input->spec();
    kind = findKind(input->format_name());
    if (kind.has_value() && !png.namesColourSpace) {
        // The library assumes one; written back, it would be an addition.
        spec.erase_attribute("oiio:ColorSpace");
    }
}

/// The extension's reader first, as the library has it; without one, that of the file's first
/// bytes. If that one fails it tries all.
void OiioReader::openByLibrary()
{
    OIIO::ImageSpec config;
    // Without this, colour under low alpha is lost.
    config.attribute("oiio:UnassociatedAlpha", 1);
    std::optional<FileKind> const announced = readFileKind(path);
    std::string const extension = path.extension().string();
    std::string const format = !extension.empty()      ? extension.substr(1)
                               : announced.has_value() ? nameFormat(*announced)
                                                       : "";
    std::string detail;
    errno = 0;
    input = format.empty() ? nullptr : OIIO::ImageInput::create(format);
    if (input != nullptr && !input->open(file.getPath().string(), spec, config)) {
        detail = input->geterror();
        input.reset();
    }
    if (input == nullptr) {
        OIIO::geterror();
        input = OIIO::ImageInput::open(file.getPath().string(), &config);
    }
    if (int const error = errno; input == nullptr && (error == EMFILE || error == ENFILE)) {
        throwSystemReadError(error, path);
    }
    if (input == nullptr) {
        detail = describeFailure(detail.empty() ? OIIO::geterror() : detail);
        if (detail.find("doesn't know about") != std::string::npos) {
            detail.clear(); // a question about the library
        }
        throwReadError(ImageFailure::File, path,
                       "the file is damaged or of a kind that is not known" +
                           (detail.empty() ? std::string() : " (" + detail + ")"));
    }
}

/// What the library said, with the file's name as the user knows it.
std::string OiioReader::describeFailure(std::string text) const
{
    std::string const held = file.getPath().string();
    std::string const known = nameInput(path);
    text = trimLibraryText(text, held);
    for (auto place = text.find(held); place != std::string::npos; place = text.find(held, place)) {
        text.replace(place, held.size(), known);
        place += known.size();
    }
    return text;
}

void OiioReader::check(std::size_t mostBytes) const
{
    if (spec.deep) {
        throwReadError(ImageFailure::File, path,
                       "it holds deep data, which has no plain pixels; flatten it first");
    }
    if (spec.depth > 1 || spec.width <= 0 || spec.height <= 0 || spec.nchannels <= 0) {
        throwReadError(ImageFailure::File, path, "it holds no plain picture");
    }
    std::uint64_t const pixelBytes = static_cast<std::uint64_t>(spec.nchannels) * sizeof(float);
    auto const width = static_cast<std::uint64_t>(spec.width);
    auto const height = static_cast<std::uint64_t>(spec.height);
    if (width * height > mostBytes / pixelBytes) {
        throwReadError(ImageFailure::File, path,
                       "it announces " + std::to_string(width) + " x " + std::to_string(height) +
                           " pixels, more than is processed here");
    }
    auto const rows = static_cast<std::uint64_t>(
        std::min(spec.height, std::max(spec.tile_height, rowsOfPlainFiles)));
    if (width * rows * pixelBytes > mostStripBytes) {
        throwReadError(ImageFailure::File, path, "its rows or tiles are too large to be processed");
    }
}

void OiioReader::chooseChannels()
{
    int const alpha = spec.alpha_channel;
    hasAlpha = alpha >= 0 && alpha < spec.nchannels;
    int const colours = spec.nchannels - (hasAlpha ? 1 : 0);
    isLuminance = colours == 1 || colours == 2;
    std::array<int, 3> rgb = {0, 1, 2};
    if (isLuminance) {
        rgb.fill(hasAlpha && alpha == 0 ? 1 : 0);
    } else if (indexOfChannel(spec, "R") >= 0 && indexOfChannel(spec, "G") >= 0 &&
               indexOfChannel(spec, "B") >= 0) {
        rgb = {indexOfChannel(spec, "R"), indexOfChannel(spec, "G"), indexOfChannel(spec, "B")};
    }
    if (colours > 0) {
        channels.assign(rgb.begin(), rgb.end());
    }
    if (hasAlpha) {
        channels.push_back(alpha);
    }
}

/// As the alpha of a picture of alpha alone.
void OiioReader::chooseMaskChannel(std::string const& name)
{
    int const index = indexOfChannel(spec, name);
    if (index < 0) {
        throwReadError(ImageFailure::Request, path,
                       "it has no channel " + quoteName(name) + "; there are " +
                           quoteList(spec.channelnames));
    }
    hasAlpha = true;
    channels = {index};
}

std::vector<OIIO::ImageSpec> OiioReader::listSpecs() const
{
    std::vector<OIIO::ImageSpec> specs = {spec};
    for (int number = 1;; ++number) {
        OIIO::ImageSpec const next = input->spec(number);
        if (next.undefined()) {
            return specs;
        }
        specs.push_back(next);
    }
}

void OiioReader::describe()
{
    IxPixelFormat::Depth depth = IxPixelFormat::FLOAT32;
    sampleType = OIIO::TypeFloat;
    info.storage = SampleStorage::Float;
    if (spec.format == OIIO::TypeUInt8) {
        depth = IxPixelFormat::UINT8;
        sampleType = OIIO::TypeUInt8;
        info.storage = SampleStorage::UInt8;
    } else if (spec.format == OIIO::TypeUInt16) {
        sampleType = OIIO::TypeUInt16;
        info.storage = SampleStorage::UInt16;
    } else if (spec.format == OIIO::TypeHalf) {
        depth = IxPixelFormat::FLOAT16;
        sampleType = OIIO::TypeHalf;
        info.storage = SampleStorage::Half;
    }
    bits = static_cast<int>(spec.format.size()) * 8;
    if (kind == FileKind::Dpx && info.storage == SampleStorage::UInt16) {
        bits = spec.get_int_attribute("oiio:BitsPerSample", bits);
    }
    bool const isPremultiplied =
        hasAlpha && spec.get_int_attribute("oiio:UnassociatedAlpha", 0) == 0;
    info.format =
        IxPixelFormat(static_cast<IxPixelFormat::Components>(channels.size()), depth,
                      toAspect(spec.get_float_attribute("PixelAspectRatio", 1.F)), isPremultiplied);
    info.dataWindow = {spec.x, spec.y, spec.x + spec.width, spec.y + spec.height};
    info.displayWindow = {spec.full_x, spec.full_y, spec.full_x + spec.full_width,
                          spec.full_y + spec.full_height};
    if (kind.has_value() || info.displayWindow.isEmpty()) {
        // Where a page is to be printed, or a scanner's origin, is no window onto the picture.
        info.dataWindow = {0, 0, spec.width, spec.height};
        info.displayWindow = info.dataWindow;
    }
    rowsPerBlock =
        std::min(spec.tile_height > 0 ? spec.tile_height : rowsOfPlainFiles, spec.height);
}

std::vector<std::string> OiioReader::listMetadata(FileKind target) const
{
    return listLostByConversion(spec, target);
}

void OiioReader::findLosses()
{
    std::string const name = nameInput(path);
    std::set<int> const used(channels.begin(), channels.end());
    if (used.size() < static_cast<std::size_t>(spec.nchannels)) {
        losses.push_back(name + " has " + std::to_string(spec.nchannels) +
                         " channels; only colour and alpha are kept");
    }
    if (kind == FileKind::Png) {
        return; // holds one picture
    }
    if (input->seek_subimage(1, 0)) {
        losses.push_back(name + " holds several pictures; only the first is kept");
    }
    input->geterror();
    if (!input->seek_subimage(0, 0)) {
        throwReadError(ImageFailure::File, path,
                       "the file is damaged (" + describeFailure(input->geterror()) + ")");
    }
}

GeRectangle<int> OiioReader::getStripBounds(int index, int rows) const
{
    return stripBoundsOf(info.dataWindow, index, rows, StripOrder::TopToBottom);
}

void OiioReader::fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip)
{
    try {
        strip.colour = IxTile(); // its buffer is the best one for the next tile
        strip.colour = IxTile(info.format, bounds);
        strip.furtherChannels.clear();
        readRows(bounds.y0 - info.dataWindow.y0, bounds.getHeight());
        IxWriteGuard const guard(strip.colour);
        std::byte const* row = samples.data();
        for (int y = bounds.y0; y < bounds.y1; ++y) {
            storeRow(row, guard.getRow(y));
            row += samples.size() / static_cast<std::size_t>(bounds.getHeight());
        }
    } catch (...) {
        rethrowAsReadError(path, 0);
    }
}

/// Reads rows `top` and on, counted from the first, into `samples`.
void OiioReader::readRows(int top, int rows)
{
    samples.resize(static_cast<std::size_t>(spec.width) * static_cast<std::size_t>(rows) *
                   static_cast<std::size_t>(spec.nchannels) * sampleType.size());
    int const begin = spec.y + top;
    bool isRead = false;
    if (spec.tile_width > 0) {
        isRead = input->read_tiles(0, 0, spec.x, spec.x + spec.width, begin, begin + rows, spec.z,
                                   spec.z + 1, 0, spec.nchannels, sampleType, samples.data());
    } else {
        isRead = input->read_scanlines(0, 0, begin, begin + rows, spec.z, 0, spec.nchannels,
                                       sampleType, samples.data());
    }
    if (!isRead || input->has_error()) {
        throw std::runtime_error(describeFailure(input->geterror()));
    }
}

void OiioReader::storeRow(std::byte const* source, std::byte* row) const
{
    std::size_t const size = sampleType.size();
    std::size_t const pixelBytes = size * static_cast<std::size_t>(spec.nchannels);
    bool const isWord = sampleType == OIIO::TypeUInt16;
    for (int x = 0; x < spec.width; ++x, source += pixelBytes) {
        for (int const channel : channels) {
            std::byte const* const sample = source + static_cast<std::size_t>(channel) * size;
            if (isWord) {
                std::uint16_t word = 0;
                std::memcpy(&word, sample, sizeof word);
                float const value = static_cast<float>(word) / largestWord;
                std::memcpy(row, &value, sizeof value);
                row += sizeof value;
            } else {
                std::memcpy(row, sample, size);
                row += size;
            }
        }
    }
}
