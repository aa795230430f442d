// Whether a picture that is there could have been written just now.

#include "media/ExistingPicture.h"

#include "media/ExrPlan.h"
#include "media/ExrReader.h"
#include "media/ImageFailure.h"
#include "media/ImageFiles.h"
#include "media/OutputDepth.h"
#include "runtime/engine/ImageSource.h"

#include <algorithm>

namespace {

using Fault = std::optional<std::string>;

bool haveSameSize(GeRectangle<int> const& a, GeRectangle<int> const& b)
{
    return a.getWidth() == b.getWidth() && a.getHeight() == b.getHeight();
}

bool haveSameChannels(Imf::ChannelList const& a, Imf::ChannelList const& b)
{
    auto const isSame = [](ExrFurtherChannel const& one, ExrFurtherChannel const& other) {
        return one.name == other.name && one.xSampling == other.xSampling &&
               one.ySampling == other.ySampling;
    };
    auto const list = listChannels(a);
    auto const others = listChannels(b);
    return std::equal(list.begin(), list.end(), others.begin(), others.end(), isSame);
}

bool haveSameTiles(ExrHeader const& a, ExrHeader const& b)
{
    return a.isTiled == b.isTiled && a.isDeep == b.isDeep &&
           (!a.isTiled || a.header.tileDescription() == b.header.tileDescription());
}

/// Why a part is not the one that would be written.
Fault findPartFault(ExrHeader const& part, ExrPlannedPart const& planned, bool isCompressionChosen)
{
    Imf::Header const& header = part.header;
    Imf::Header const& wanted = planned.header.header;
    if (header.dataWindow() != wanted.dataWindow() ||
        header.displayWindow() != wanted.displayWindow()) {
        return "its windows are others";
    }
    if (!haveSameChannels(header.channels(), wanted.channels())) {
        return "its channels are others";
    }
    if (!(header.channels() == wanted.channels())) {
        return "its depth is another";
    }
    if (!haveSameTiles(part, planned.header)) {
        return "its tiles are others";
    }
    bool const isSettled = isCompressionChosen || !planned.isProcessed();
    if (isSettled && header.compression() != wanted.compression()) {
        return "its compression is another";
    }
    return {};
}

Fault findExrFault(ImageSource const& there, ExrPlan const& plan, WriteOptions const& options)
{
    auto const* const exr = dynamic_cast<ExrReader const*>(&there);
    if (exr == nullptr) {
        return "it is of another kind";
    }
    std::vector<ExrHeader> const& parts = exr->getHeaders().parts;
    if (parts.size() != plan.parts.size()) {
        return "its parts are others";
    }
    for (std::size_t number = 0; number < parts.size(); ++number) {
        Imf::Header const& header = parts[number].header;
        Imf::Header const& wanted = plan.parts[number].header.header;
        if (header.hasName() != wanted.hasName() ||
            (header.hasName() && header.name() != wanted.name())) {
            return "its parts are others";
        }
        Fault const fault =
            findPartFault(parts[number], plan.parts[number], options.compression.has_value());
        if (fault.has_value()) {
            return fault;
        }
    }
    return {};
}

/// Of a file without windows.
Fault findOtherFault(FileKind kind, ImageInfo const& info, ImageSource const& source,
                     IxPixelFormat const& format, WriteOptions const& options)
{
    ImageInfo const& wanted = source.getInfo();
    if (!haveSameSize(info.dataWindow, wanted.displayWindow)) {
        return "its size is another";
    }
    constexpr int anyBits = 16;
    SampleStorage const storage =
        chooseOutputDepth(kind, format.getDepth(), storageToKeep(source),
                          wanted.storage == SampleStorage::UInt8 ? 8 : anyBits,
                          options.keepsInputDepth)
            .storage;
    if (info.storage != storage) {
        return "its depth is another";
    }
    bool const hasAlpha = info.format.getComponents() == IxPixelFormat::RGBA;
    bool const wantsAlpha = format.getComponents() == IxPixelFormat::RGBA && kind != FileKind::Jpeg;
    return hasAlpha == wantsAlpha ? Fault() : Fault("its channels are others");
}

/// Throws ImageFileError where a file is shorter than its beginning says.
void readToTheEnd(ImageSource& picture, bool isLastStripEnough)
{
    int const rows = chooseStripRows(picture);
    int const height = picture.getInfo().dataWindow.getHeight();
    int const strips = (height + rows - 1) / rows;
    ImageStrip strip;
    for (int index = isLastStripEnough ? std::max(strips - 1, 0) : 0; index < strips; ++index) {
        picture.readStrip(picture.getStripBounds(index, rows), strip);
    }
}

} // namespace

std::optional<std::string> findPictureFault(std::filesystem::path const& file,
                                            ImageSource const& source, ResultFormat const& formatOf,
                                            ReadOptions const& readOptions,
                                            WriteOptions const& writeOptions)
{
    std::optional<FileKind> const kind = findFileKind(file);
    bool const isExr = kind == FileKind::Exr;
    try {
        auto const there = openImage(file, isExr ? readOptions : ReadOptions());
        Fault const fault =
            isExr ? findExrFault(*there, planExr(source, formatOf, writeOptions), writeOptions)
                  : findOtherFault(kind.value(), there->getInfo(), source,
                                   formatOf(source.getInfo()), writeOptions);
        while (!fault.has_value()) {
            readToTheEnd(*there, isExr);
            if (!there->hasNextSection()) {
                break;
            }
            there->startNextSection();
        }
        return fault;
    } catch (ImageFileError const& error) {
        return error.what();
    }
}
