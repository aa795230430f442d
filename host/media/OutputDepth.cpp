#include "media/OutputDepth.h"

#include "base/Assertions.h"

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
        return depth == IxPixelFormat::UINT8 ? integerOf(8) : OutputDepth{SampleStorage::Float, 32};
    case FileKind::Exr: break;
    }
    Assertions::throwProgramAborted("OutputDepth", __LINE__, "kind");
}

} // namespace

OutputDepth chooseOutputDepth(FileKind kind, IxPixelFormat::Depth depth, SampleStorage source,
                              int sourceBits, bool keepsInputDepth)
{
    OutputDepth chosen = chooseSamples(kind, depth, source, sourceBits, keepsInputDepth);
    int const tileBits = depth == IxPixelFormat::UINT8 ? 8 : 32;
    int const neededBits = isInteger(source) && keepsInputDepth ? sourceBits : tileBits;
    chosen.isReduced = chosen.bits < neededBits;
    return chosen;
}
