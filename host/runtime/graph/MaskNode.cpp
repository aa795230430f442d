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
    Shares(IxTile const* maskTile, MaskUse maskUse, float mixValue)
        : guard(maskTile != nullptr ? *maskTile : IxTile()), use(maskUse), mix(mixValue),
          outside(maskTile != nullptr ? maskShareOf({}, IxPixelFormat::ALPHA, use) * mix : mix)
    {
    }

    /// Fills `shares` for the pixels from `x` on.
    void fill(int x, int y, std::vector<float>& shares)
    {
        place(x, y, shares);
        isEffective = isEffective || std::any_of(shares.begin(), shares.end(),
                                                 [](float share) { return share > 0.0F; });
    }

    /// Whether the mask let something through so far; also if it is the mix that lets nothing.
    bool hadEffect() const { return isEffective || mix == 0.0F; }

private:
    void place(int x, int y, std::vector<float>& shares)
    {
        std::fill(shares.begin(), shares.end(), outside);
        GeRectangle<int> const& bounds = guard.getTile().getBounds();
        int const first = std::max(x, bounds.x0);
        int const end = std::min(x + static_cast<int>(shares.size()), bounds.x1);
        if (guard.getTile().isNull() || y < bounds.y0 || y >= bounds.y1 || first >= end) {
            return;
        }
        PixelRun const run{guard, first, y, static_cast<std::size_t>(end - first)};
        run.read(pixels);
        for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel) {
            shares[static_cast<std::size_t>(first - x) + pixel] =
                maskShareOf(pixels[pixel], run.getFormat().getComponents(), use) * mix;
        }
    }

    IxReadGuard guard;
    MaskUse use;
    float mix;
    float outside; ///< the share where the mask has no pixels
    std::vector<Pixel> pixels;
    bool isEffective = false;
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

/// Null for none.
MaskMeaning const* findMeaning(PxNodePtr<PxImageProtocol const> const& mask)
{
    return mask.isNull() ? nullptr : dynamic_cast<MaskMeaning const*>(&*mask);
}

class MaskNode : public PxImageNode {
public:
    MaskNode(Init const& init, PxNodePtr<PxNode const> const& chainOutput,
             PxStrongHndl<> const& mixValue, PxNodePtr<PxImageProtocol const> const& imageSource,
             PxNodePtr<PxImageProtocol const> const& maskSource)
        : PxNode(init), PxImageNode(init, imageSource), source(imageSource),
          chain(castNode<PxImageProtocol const>(chainOutput)),
          mix(castNode<PxAnimValueProtocol<double> const>(mixValue)), mask(maskSource),
          meaning(findMeaning(maskSource))
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
        MaskUse const use = meaning == nullptr ? MaskUse::AsIs : meaning->getMaskUse();
        Shares shares(mask.isNull() ? nullptr : &maskTile, use,
                      static_cast<float>(mixNow.getValue()));
        IxTile const blended =
            blendTiles(unprocessed.getTileGuard(), processed.getTileGuard(), shares);
        if (meaning != nullptr) {
            meaning->noteBlended(shares.hadEffect());
        }
        return {blended, validity};
    }

    PxImageFormat computeImageFormat() const override { return chain->getImageFormat(); }

private:
    PxNodePtr<PxImageProtocol const> source;
    PxNodePtr<PxImageProtocol const> chain;
    PxNodePtr<PxAnimValueProtocol<double> const> mix;
    PxNodePtr<PxImageProtocol const> mask;
    MaskMeaning const* meaning; ///< of `mask`, as long as that
};

} // namespace

PxStrongHndl<PxNode const> addMask(PxNodePtr<PxNode const> const& chain, PxStrongHndl<> const& mix,
                                   PxNodePtr<PxImageProtocol const> const& source,
                                   PxNodePtr<PxImageProtocol const> const& mask)
{
    return PxStrongHndl<PxNode const>(makeNode<MaskNode>(chain, mix, source, mask).get());
}

float maskShareOf(CoRgbaColorTyped<float> const& pixel, IxPixelFormat::Components components,
                  MaskUse use)
{
    float const value = components == IxPixelFormat::RGB ? pixel.red : pixel.alpha;
    float const share = value > 0.0F ? std::min(value, 1.0F) : 0.0F;
    return use == MaskUse::Inverted ? 1.0F - share : share;
}

CoRgbaColorTyped<float> blendPixel(CoRgbaColorTyped<float> const& source,
                                   CoRgbaColorTyped<float> const& processed, float share)
{
    return {blend(source.red, processed.red, share), blend(source.green, processed.green, share),
            blend(source.blue, processed.blue, share), processed.alpha};
}
