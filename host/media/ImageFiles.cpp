// Which code reads and writes a picture: EXR by its first bytes or extension, the rest in a module.

#include "media/ImageFiles.h"

#include "files/StandardFiles.h"
#include "media/ErrorText.h"
#include "media/ExrChannels.h"
#include "media/ExrDescription.h"
#include "media/ExrReader.h"
#include "media/ExrScan.h"
#include "media/ExrWriter.h"
#include "media/HeldFile.h"
#include "media/ImageFormats.h"
#include "media/ImageTarget.h"
#include "media/MediaSource.h"
#include "media/OiioModule.h"
#include "media/SampleCounts.h"

#include <ImfThreading.h>
#include <algorithm>
#include <atomic>

namespace {

std::atomic<int> libraryThreads = 0; // for a module that is loaded later

/// Throws ImageFileError for what is no file that can be opened.
bool isExrFile(std::filesystem::path const& file)
{
    return readFileKind(file) == FileKind::Exr || findFileKind(file) == FileKind::Exr;
}

FileKind requireFileKind(std::filesystem::path const& file, WriteOptions const& options)
{
    std::optional<FileKind> const kind = findFileKind(file, options);
    if (!kind.has_value()) {
        throwWriteError(ImageFailure::Request, file,
                        (file.has_extension()
                             ? "the extension \"" + file.extension().string() + "\" is not known"
                             : std::string("the name has no extension")) +
                            "; known are " + listExtensions());
    }
    return *kind;
}

FileKind checkKind(std::filesystem::path const& file, IxPixelFormat::Depth depth,
                   WriteOptions const& options)
{
    FileKind const kind = requireFileKind(file, options);
    if (kind == FileKind::Exr && depth == IxPixelFormat::UINT8) {
        throwWriteError(ImageFailure::Request, file,
                        "EXR holds no 8-bit channels; choose 16 or 32 bit, or another file format");
    }
    if (kind != FileKind::Exr && options.compression) {
        throwWriteError(ImageFailure::Request, file, "a compression can be chosen for EXR only");
    }
    return kind;
}

OiioModule& oiioModule()
{
    OiioModule& module = loadOiioModule();
    module.setThreads(libraryThreads);
    return module;
}

/// The components of a tile, as channels.
std::vector<ChannelScan> nameComponents(IxPixelFormat const& format)
{
    std::vector<ChannelScan> channels;
    for (char const* const name : exrColourNames) {
        channels.push_back({0, name});
    }
    if (format.getComponents() == IxPixelFormat::ALPHA) {
        channels.clear();
    }
    if (format.getComponents() != IxPixelFormat::RGB) {
        channels.push_back({0, exrAlphaName});
    }
    return channels;
}

void countTile(IxTile const& tile, std::vector<ChannelScan>& channels)
{
    IxReadGuard const guard(tile);
    GeRectangle<int> const& bounds = tile.getBounds();
    std::size_t const pixelBytes = tile.getPixelFormat().getBytesPerPixel();
    std::size_t const sampleBytes = pixelBytes / channels.size();
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            std::byte const* const first = guard.getRow(y) + channel * sampleBytes;
            if (sampleBytes == 2) {
                countSpecials<std::uint16_t>(first, width, pixelBytes, channels[channel]);
            } else if (sampleBytes == 4) {
                countSpecials<std::uint32_t>(first, width, pixelBytes, channels[channel]);
            }
        }
    }
}

} // namespace

std::unique_ptr<ImageSource> openImage(std::filesystem::path const& file,
                                       ReadOptions const& options)
{
    if (isExrFile(file)) {
        return std::make_unique<ExrReader>(file, options);
    }
    return oiioModule().open(file, options);
}

PictureDescription describePicture(std::filesystem::path const& file)
{
    return isExrFile(file) ? describeExr(file) : oiioModule().describe(file);
}

PictureScan scanPicture(std::filesystem::path const& file)
{
    if (isExrFile(file)) {
        return scanExr(file);
    }
    std::unique_ptr<ImageSource> const source = oiioModule().open(file, {});
    PictureScan scan{oiioModule().describe(file), nameComponents(source->getInfo().format)};
    int const height = source->getInfo().dataWindow.getHeight();
    int const rows = source->getRowsPerBlock();
    ImageStrip strip;
    for (int index = 0, done = 0; done < height; ++index) {
        GeRectangle<int> const bounds = source->getStripBounds(index, rows);
        source->readStrip(bounds, strip);
        countTile(strip.colour, scan.channels);
        done += bounds.getHeight();
    }
    return scan;
}

void checkOutput(std::filesystem::path const& file, IxPixelFormat::Depth depth,
                 WriteOptions const& options)
{
    checkKind(file, depth, options);
    checkImageTarget(file);
}

std::unique_ptr<ImageSink> createImage(std::filesystem::path const& file, ImageSource& source,
                                       ResultFormat const& formatOf, WriteOptions const& options,
                                       MediaReport const& report)
{
    IxPixelFormat const format = formatOf(source.getInfo());
    FileKind const kind = checkKind(file, format.getDepth(), options);
    if (auto const* const media = dynamic_cast<MediaSource const*>(&source)) {
        if (kind != FileKind::Exr && media->countPictures() > 1) {
            throwWriteError(ImageFailure::Request, file,
                            "it has room for one picture, but several layers or parts are chosen");
        }
        for (std::string const& loss : media->listLosses(kind)) {
            report.warn(loss);
        }
        std::vector<std::string> lost;
        if (media->getKind() != kind) {
            lost = media->listMetadata(kind);
        }
        if (!lost.empty()) {
            report.warn(nameOutput(file) + " lacks metadata of its source: " + quoteList(lost));
        }
    }
    if (kind == FileKind::Exr) {
        return std::make_unique<ExrWriter>(file, source, formatOf, options, report);
    }
    return oiioModule().create(file, source, format, options, report);
}

void setMediaThreads(int threads)
{
    libraryThreads = std::max(threads, 0);
    Imf::setGlobalThreadCount(libraryThreads);
    if (OiioModule* const module = findOiioModule()) {
        module->setThreads(libraryThreads);
    }
}
