#include "media/OutputDepth.h"

#include "base/Assertions.h"
#include "media/MediaSource.h"

namespace {

bool isInteger(SampleStorage storage)
{
    return storage == SampleStorage::UInt8 || storage == SampleStorage::UInt16;
}

OutputDepth integerOf(int bits)
{
    return {bits == 8 ? SampleStorage::UInt8 : SampleStorage::UInt16, bits};
}

OutputDepth chooseSamples(FileKind kind, IxPixelFormat::Depth depth, SampleStorage source,
                          int sourceBits, bool keepsInputDepth)
{
    bool const keepsInteger = keepsInputDepth && isInteger(source);
    int const sourceBytes = source == SampleStorage::UInt8 ? 8 : 16;
    int const plainBits = depth == IxPixelFormat::UINT8 ? 8 : 16;
    switch (kind) {
    case FileKind::Jpeg: return integerOf(8);
    case FileKind::Png: return integerOf(keepsInteger ? sourceBytes : plainBits);
    case FileKind::Dpx: return integerOf(keepsInteger ? sourceBits : plainBits);
    case FileKind::Tiff:
        if (keepsInteger) {
            return integerOf(sourceBytes);
        }
        if (depth == IxPixelFormat::UINT8) {
            return integerOf(8);
        }
        return depth == IxPixelFormat::FLOAT16 &&
                       (!keepsInputDepth || source == SampleStorage::Half)
                   ? OutputDepth{SampleStorage::Half, 16}
                   : OutputDepth{SampleStorage::Float, 32};
    case FileKind::Exr: break;
    }
    Assertions::throwProgramAborted("OutputDepth", __LINE__, "kind");
}

} // namespace

SampleStorage storageToKeep(ImageSource const& source)
{
    auto const* const media = dynamic_cast<MediaSource const*>(&source);
    bool const isExr = media != nullptr && media->getKind() == FileKind::Exr;
    SampleStorage const storage = source.getInfo().storage;
    return isExr && storage == SampleStorage::Half ? SampleStorage::Float : storage;
}

OutputDepth chooseOutputDepth(FileKind kind, IxPixelFormat::Depth depth, SampleStorage source,
                              int sourceBits, bool keepsInputDepth)
{
    OutputDepth chosen = chooseSamples(kind, depth, source, sourceBits, keepsInputDepth);
    int const tileBits = depth == IxPixelFormat::UINT8 ? 8 : 32;
    int const neededBits = isInteger(source) && keepsInputDepth ? sourceBits : tileBits;
    chosen.isReduced = chosen.storage != SampleStorage::Half && chosen.bits < neededBits;
    return chosen;
}
