#include "PremultNodes.h"

#include "base/Assertions.h"
#include "pluginAPI/PxImageNode.h"
#include "pluginAPI/PxValueProtocols.h"
#include "primitives/CoColor.h"

namespace {

using Pixel = CoRgbaColorTyped<float>;

struct Divide {
    static Pixel apply(Pixel const& in)
    {
        return {in.red / in.alpha, in.green / in.alpha, in.blue / in.alpha, in.alpha};
    }
};

struct Multiply {
    static Pixel apply(Pixel const& in)
    {
        return {in.red * in.alpha, in.green * in.alpha, in.blue * in.alpha, in.alpha};
    }
};

/// Applies the step to every pixel with alpha above 0.
template <typename Step>
class AlphaNode : public PxImageNode {
public:
    AlphaNode(Init const& init, PxNodePtr<PxImageProtocol const> const& imageSource,
              PxStrongHndl<> const& switchValue)
        : PxNode(init), PxImageNode(init, imageSource), source(imageSource),
          isOn(castNode<PxAnimValueProtocol<bool> const>(switchValue))
    {
    }
    ~AlphaNode() noexcept(false) override
    {
        unregisterChild(source);
        unregisterChild(isOn);
    }

    void init() override
    {
        PxImageNode::init();
        registerChild(source);
        registerChild(isOn);
    }

    PxImageResult computeImage(PxImageContext const& context) const override
    {
        PxImageResult const result = source->computeImage(context);
        if (!isOn->evaluate(context).getValue()) {
            return {result.getTileGuard().getTile(), result.getValidity()};
        }
        IxReadGuard const& from = result.getTileGuard();
        IxPixelFormat const& format = from.getTile().getPixelFormat();
        Assertions::check(format.getComponents() == IxPixelFormat::RGBA &&
                              format.getDepth() == IxPixelFormat::FLOAT32,
                          "format is float RGBA");
        GeRectangle<int> const& bounds = result.getPixelRegion();
        IxTile const tile(format, bounds);
        IxWriteGuard const to(tile);
        for (int y = bounds.y0; y < bounds.y1; ++y) {
            auto const* const in = reinterpret_cast<Pixel const*>(from.getRow(y));
            auto* const out = reinterpret_cast<Pixel*>(to.getRow(y));
            for (int pixel = 0; pixel < bounds.getWidth(); ++pixel) {
                out[pixel] = in[pixel].alpha > 0.0F ? Step::apply(in[pixel]) : in[pixel];
            }
        }
        return {tile, result.getValidity()};
    }

private:
    PxNodePtr<PxImageProtocol const> source;
    PxNodePtr<PxAnimValueProtocol<bool> const> isOn;
};

} // namespace

PxNodePtr<PxImageProtocol const> addUnpremultiply(PxNodePtr<PxImageProtocol const> const& picture,
                                                  PxStrongHndl<> const& isOn)
{
    return PxNodePtr<PxImageProtocol const>(makeNode<AlphaNode<Divide>>(picture, isOn).get());
}

PxNodePtr<PxNode const> addPremultiply(PxNodePtr<PxNode const> const& chain,
                                       PxStrongHndl<> const& isOn)
{
    auto const picture = castNode<PxImageProtocol const>(chain);
    return PxNodePtr<PxNode const>(makeNode<AlphaNode<Multiply>>(picture, isOn).get());
}
