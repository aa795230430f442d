#include "runtime/graph/MuteNode.h"

#include "pluginAPI/PxImageNode.h"
#include "pluginAPI/PxValueProtocols.h"

namespace {

class MuteNode : public PxImageNode {
public:
    MuteNode(Init const& init, PxNodePtr<PxNode const> const& chainOutput,
             PxStrongHndl<> const& muteValue, PxNodePtr<PxImageProtocol const> const& imageSource)
        : PxNode(init), PxImageNode(init, imageSource), source(imageSource),
          chain(castNode<PxImageProtocol const>(chainOutput)),
          mute(castNode<PxAnimValueProtocol<bool> const>(muteValue))
    {
    }

    ~MuteNode() noexcept(false) override
    {
        unregisterChild(source);
        unregisterChild(chain);
        unregisterChild(mute);
    }

    void init() override
    {
        PxImageNode::init();
        registerChild(source);
        registerChild(chain);
        registerChild(mute);
    }

    PxImageResult computeImage(PxImageContext const& context) const override
    {
        return choose().computeImage(context);
    }
    PxImageFormat computeImageFormat() const override { return choose().getImageFormat(); }

private:
    PxImageProtocol const& choose() const
    {
        return mute->evaluate(PxTimeContext(timeOfMute)).getValue() ? *source : *chain;
    }

    PxNodePtr<PxImageProtocol const> source;
    PxNodePtr<PxImageProtocol const> chain;
    PxNodePtr<PxAnimValueProtocol<bool> const> mute;
};

} // namespace

PxStrongHndl<PxNode const> addMute(PxNodePtr<PxNode const> const& chain, PxStrongHndl<> const& mute,
                                   PxNodePtr<PxImageProtocol const> const& source)
{
    return PxStrongHndl<PxNode const>(makeNode<MuteNode>(chain, mute, source).get());
}
