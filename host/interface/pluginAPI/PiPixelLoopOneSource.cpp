#include "pluginAPI/PiPixelLoopOneSource.h"

#include "base/Assertions.h"
#include "pluginAPI/IxSampleConversion.h"

#include <vector>

namespace {

using Pixel = CoRgbaColorTyped<float>;

bool isFloatRgba(IxPixelFormat const& format)
{
    return format.getComponents() == IxPixelFormat::RGBA &&
           format.getDepth() == IxPixelFormat::FLOAT32;
}

/// Float rows of a thread that converts; they grow to the widest row the thread has met.
struct RowScratch {
    std::vector<Pixel> source;
    std::vector<Pixel> destination;
};

RowScratch& scratchOfThisThread(std::size_t width)
{
    thread_local RowScratch scratch;
    if (scratch.source.size() < width) {
        scratch.source.resize(width);
        scratch.destination.resize(width);
    }
    return scratch;
}

} // namespace

PiPixelLoopOneSource::PiPixelLoopOneSource(IxWriteGuard& destination,
                                           PiImageModifierTypes::AffectType affectType)
    : writeGuard(destination), affect(affectType)
{
}

PiPixelLoopOneSource::~PiPixelLoopOneSource() = default;

void PiPixelLoopOneSource::process(IxReadGuard const& source)
{
    IxPixelFormat const& sourceFormat = source.getTile().getPixelFormat();
    IxPixelFormat const& format = writeGuard.getTile().getPixelFormat();
    GeRectangle<int> const& bounds = writeGuard.getTile().getBounds();
    GeRectangle<int> const& sourceBounds = source.getTile().getBounds();
    Assertions::check(sourceFormat.getComponents() == format.getComponents(),
                      "sourceFormat.getComponents() == format.getComponents()");
    Assertions::check(bounds.isEmpty() || sourceBounds.contains(bounds),
                      "sourceBounds.contains(bounds)");
    if (bounds.isEmpty()) {
        return;
    }

    auto const width = static_cast<std::size_t>(bounds.getWidth());
    std::size_t const skippedBytes =
        static_cast<std::size_t>(bounds.x0 - sourceBounds.x0) * sourceFormat.getBytesPerPixel();
    // Only a half may lose bits on the way through float: those of a signalling NaN.
    bool const carriesAlpha = affect == PiImageModifierTypes::AffectColour &&
                              format.getComponents() != IxPixelFormat::RGB &&
                              format.getDepth() == IxPixelFormat::FLOAT16 &&
                              sourceFormat.getDepth() == IxPixelFormat::FLOAT16;
    RowScratch& scratch = scratchOfThisThread(width);

    for (int y = bounds.y0; y < bounds.y1; ++y) {
        std::byte const* const sourceBytes = source.getRow(y) + skippedBytes;
        std::byte* const bytes = writeGuard.getRow(y);

        SourceRow sourceRow(scratch.source.data(), width);
        if (isFloatRgba(sourceFormat)) {
            sourceRow = {reinterpret_cast<Pixel const*>(sourceBytes), width};
        } else {
            readPixelRow(sourceFormat, sourceBytes, {scratch.source.data(), width});
        }
        if (isFloatRgba(format)) {
            processRow({reinterpret_cast<Pixel*>(bytes), width}, sourceRow);
        } else {
            Row const row(scratch.destination.data(), width);
            processRow(row, sourceRow);
            writePixelRow(format, row, bytes);
        }
        if (carriesAlpha) {
            copyAlphaRow(format, sourceBytes, width, bytes);
        }
    }
}
