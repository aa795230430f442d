#include "runtime/graph/MaskNode.h"

#include "pluginAPI/IxSampleConversion.h"
#include "pluginAPI/PxImageNode.h"
#include "pluginAPI/PxValueProtocols.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace {

using Pixel = CoRgbaColorTyped<float>;

/// (1 - share) * source + share * processed with exact ends.
float blend(float source, float processed, float share)
{
    if (share == 0.0F) {
        return source;
    }
    return share == 1.0F ? processed : (1.0F - share) * source + share * processed;
}

/// A run of pixels within a tile.
struct PixelRun {
    IxReadGuard const& guard;
    int x;
    int y;
    std::size_t length;

    IxPixelFormat const& getFormat() const { return guard.getTile().getPixelFormat(); }

    std::byte const* getBytes() const
    {
        auto const skipped = static_cast<std::size_t>(x - guard.getTile().getBounds().x0);
        return guard.getRow(y) + skipped * getFormat().getBytesPerPixel();
    }
    void read(std::vector<Pixel>& pixels) const
    {
        pixels.resize(length);
        readPixelRow(getFormat(), getBytes(), pixels);
    }
};

/// The pixels of a mask under a region; a null tile where it has none there.
IxTile computeMask(PxImageProtocol const& mask, PxImageContext const& context,
                   PxValidityInterval& validity)
{
    GeRectangle<int> const covered = intersect(context.getRegion(), mask.getImageROD(context));
    if (covered.isEmpty()) {
        return {};
    }
    PxImageResult const result = mask.computeImage(PxImageContext(context.getTime(), covered));
    validity.narrow(result.getValidity());
    return result.getTileGuard().getTile();
}

/// The shares of one row after the other.
class Shares {
public:
    /// A mask of which nothing lies under the picture is a null tile; without a mask there is none
    /// at all.
    Shares(IxTile const* maskTile, float mixValue)
        : isMasked(maskTile != nullptr), guard(isMasked ? *maskTile : IxTile()), mix(mixValue)
    {
    }

    /// Fills `shares` for the pixels from `x` on.
    void fill(int x, int y, std::vector<float>& shares)
    {
        std::fill(shares.begin(), shares.end(), isMasked ? 0.0F : mix);
        GeRectangle<int> const& bounds = guard.getTile().getBounds();
        int const first = std::max(x, bounds.x0);
        int const end = std::min(x + static_cast<int>(shares.size()), bounds.x1);
        if (guard.getTile().isNull() || y < bounds.y0 || y >= bounds.y1 || first >= end) {
            return;
        }
        PixelRun const run{guard, first, y, static_cast<std::size_t>(end - first)};
        run.read(pixels);
        bool const hasAlpha = run.getFormat().getComponents() != IxPixelFormat::RGB;
        for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel) {
            float const value = hasAlpha ? pixels[pixel].alpha : pixels[pixel].red;
            float const limited = value > 0.0F ? std::min(value, 1.0F) : 0.0F;
            shares[static_cast<std::size_t>(first - x) + pixel] = limited * mix;
        }
    }

private:
    bool isMasked;
    IxReadGuard guard;
    float mix;
    std::vector<Pixel> pixels;
};

/// Blends two tiles into a new one of the second's format and place, which lies within the first.
IxTile blendTiles(IxReadGuard const& source, IxReadGuard const& processed, Shares& shares)
{
    IxPixelFormat const& format = processed.getTile().getPixelFormat();
    GeRectangle<int> const& bounds = processed.getTile().getBounds();
    IxTile const blended(format, bounds);
    IxWriteGuard const guard(blended);
    auto const width = static_cast<std::size_t>(std::max(bounds.getWidth(), 0));
    std::vector<float> rowShares(width);
    std::vector<Pixel> sourceRow;
    std::vector<Pixel> row;
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        PixelRun const from{source, bounds.x0, y, width};
        PixelRun const to{processed, bounds.x0, y, width};
        from.read(sourceRow);
        to.read(row);
        shares.fill(bounds.x0, y, rowShares);
        for (std::size_t pixel = 0; pixel < width; ++pixel) {
            row[pixel] = blendPixel(sourceRow[pixel], row[pixel], rowShares[pixel]);
        }
        writePixelRow(format, row, guard.getRow(y));
        if (format.getComponents() != IxPixelFormat::RGB) {
            // A half may lose bits on the way through float: those of a signalling NaN.
            copyAlphaRow(format, to.getBytes(), width, guard.getRow(y));
        }
    }
    return blended;
}

class MaskNode : public PxImageNode {
public:
    MaskNode(Init const& init, PxNodePtr<PxNode const> const& chainOutput,
             PxStrongHndl<> const& mixValue, PxNodePtr<PxImageProtocol const> const& imageSource,
             PxNodePtr<PxImageProtocol const> const& maskSource)
        : PxNode(init), PxImageNode(init, imageSource), source(imageSource),
          chain(castNode<PxImageProtocol const>(chainOutput)),
          mix(castNode<PxAnimValueProtocol<double> const>(mixValue)), mask(maskSource)
    {
    }

    ~MaskNode() noexcept(false) override
    {
        unregisterChild(source);
        unregisterChild(chain);
        unregisterChild(mix);
        unregisterChild(mask);
    }

    void init() override
    {
        PxImageNode::init();
        registerChild(source);
        registerChild(chain);
        registerChild(mix);
        registerChild(mask);
    }

    PxImageResult computeImage(PxImageContext const& context) const override
    {
        auto const mixNow = mix->evaluate(context);
        PxImageResult const processed = chain->computeImage(context);
        PxValidityInterval validity = processed.getValidity();
        validity.narrow(mixNow.getValidity());
        if (mask.isNull() && mixNow.getValue() == 1.0) {
            return {processed.getTileGuard().getTile(), validity};
        }
        PxImageResult const unprocessed = source->computeImage(context);
        validity.narrow(unprocessed.getValidity());
        IxTile const maskTile = mask.isNull() ? IxTile() : computeMask(*mask, context, validity);
        Shares shares(mask.isNull() ? nullptr : &maskTile, static_cast<float>(mixNow.getValue()));
        return {blendTiles(unprocessed.getTileGuard(), processed.getTileGuard(), shares), validity};
    }

    PxImageFormat computeImageFormat() const override { return chain->getImageFormat(); }

private:
    PxNodePtr<PxImageProtocol const> source;
    PxNodePtr<PxImageProtocol const> chain;
    PxNodePtr<PxAnimValueProtocol<double> const> mix;
    PxNodePtr<PxImageProtocol const> mask;
};

} // namespace

PxStrongHndl<PxNode const> addMask(PxNodePtr<PxNode const> const& chain, PxStrongHndl<> const& mix,
                                   PxNodePtr<PxImageProtocol const> const& source,
                                   PxNodePtr<PxImageProtocol const> const& mask)
{
    return PxStrongHndl<PxNode const>(makeNode<MaskNode>(chain, mix, source, mask).get());
}

CoRgbaColorTyped<float> blendPixel(CoRgbaColorTyped<float> const& source,
                                   CoRgbaColorTyped<float> const& processed, float share)
{
    return {blend(source.red, processed.red, share), blend(source.green, processed.green, share),
            blend(source.blue, processed.blue, share), processed.alpha};
}
