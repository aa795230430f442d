// Whether a picture that is there could have been written just now.

#include "media/ExistingPicture.h"

#include "media/ExrCompression.h"
#include "media/ExrReader.h"
#include "media/ImageFailure.h"
#include "media/ImageFiles.h"
#include "media/OutputDepth.h"
#include "runtime/engine/RenderEngine.h"

#include <algorithm>

namespace {

using Fault = std::optional<std::string>;

bool haveSameSize(GeRectangle<int> const& a, GeRectangle<int> const& b)
{
    return a.getWidth() == b.getWidth() && a.getHeight() == b.getHeight();
}

Fault findExrFault(ImageSource const& there, ImageSource const& source, IxPixelFormat const& format,
                   WriteOptions const& options)
{
    ImageInfo const& info = there.getInfo();
    ImageInfo const& wanted = source.getInfo();
    if (!(info.dataWindow == wanted.dataWindow) || !(info.displayWindow == wanted.displayWindow)) {
        return "its windows are others";
    }
    if (info.format.getComponents() != format.getComponents()) {
        return "its channels are others";
    }
    auto const* const thereExr = dynamic_cast<ExrReader const*>(&there);
    auto const* const sourceExr = dynamic_cast<ExrReader const*>(&source);
    SampleStorage const made =
        format.getDepth() == IxPixelFormat::FLOAT16 ? SampleStorage::Half : SampleStorage::Float;
    bool const isKept = options.keepsInputDepth && sourceExr != nullptr;
    if (info.storage != (isKept ? wanted.storage : made)) {
        return "its depth is another";
    }
    if (thereExr != nullptr && options.compression) {
        Imf::Header expected = thereExr->getHeader().header;
        applyCompression(options.compression, expected);
        if (expected.compression() != thereExr->getHeader().header.compression()) {
            return "its compression is another";
        }
    }
    auto const isSame = [](ExrFurtherChannel const& a, ExrFurtherChannel const& b) {
        return a.name == b.name && a.type == b.type && a.xSampling == b.xSampling &&
               a.ySampling == b.ySampling;
    };
    std::vector<ExrFurtherChannel> const none;
    auto const& further = thereExr == nullptr ? none : thereExr->getFurtherChannels();
    auto const& expected = sourceExr == nullptr ? none : sourceExr->getFurtherChannels();
    bool const areSame =
        std::equal(further.begin(), further.end(), expected.begin(), expected.end(), isSame);
    return areSame ? Fault() : Fault("its channels are others");
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
                                            ImageSource const& source, IxPixelFormat const& format,
                                            ReadOptions const& readOptions,
                                            WriteOptions const& writeOptions)
{
    std::optional<FileKind> const kind = findFileKind(file);
    bool const isExr = kind == FileKind::Exr;
    try {
        auto const there = openImage(file, isExr ? readOptions : ReadOptions());
        Fault const fault =
            isExr ? findExrFault(*there, source, format, writeOptions)
                  : findOtherFault(kind.value(), there->getInfo(), source, format, writeOptions);
        if (!fault.has_value()) {
            readToTheEnd(*there, isExr);
        }
        return fault;
    } catch (ImageFileError const& error) {
        return error.what();
    }
}
