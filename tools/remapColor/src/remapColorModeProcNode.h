#pragma once

#include "pluginAPI/PiInputNodeBuilder.h"
#include "pluginAPI/PxImageNode.h"
#include "pluginAPI/PxValueProtocols.h"
#include "remapColorAdjustedCurves.h"
#include "remapColorController.h"

/// What the processing nodes of both modes share: the inputs besides the mode's own, the output
/// format, and the adjusted-curve stage. Made and destroyed on the user-interface thread; workers
/// only read it.
///
/// A derived node sends each pixel through its transfer and then through the stage, narrows its
/// result's validity by the stage's, calls this class's `init` before it registers its own children
/// and unregisters those in its destructor.
class RemapColorController::ModeProcNode : public PxImageNode {
public:
    ~ModeProcNode() noexcept(false) override;

    /// The source's format in the depth that "Output Depth" asks for at time 0.
    PxImageFormat computeImageFormat() const override;

    /// One pixel through the transfer and the adjusted curves as they are at `time`: the same bits
    /// as in a tile.
    virtual CoRgbaColorTyped<float> computePixel(PxTimeContext const& time,
                                                 CoRgbaColorTyped<float> const& in) const = 0;

    void init() override;

protected:
    /// `builder` is asked for the nodes of the shared inputs. Throws the cast failure for one of
    /// another kind.
    ModeProcNode(Init const& init, PxNodePtr<PxImageProtocol const> const& source,
                 PiInputNodeBuilder& builder);

    /// The stage for `time`; narrows `validity` to what it was built from. Worker threads.
    RCShdPtr<AdjustedCurveScanline> createAdjustedCurveScanline(PxTimeContext const& time,
                                                                PxValidityInterval& validity) const;

private:
    PxNodePtr<PxImageProtocol const> source;
    PxNodePtr<PxAnimValueProtocol<int> const> outputDepth;
    PxNodePtr<PxShape2dProtocol const> redCurve;
    PxNodePtr<PxShape2dProtocol const> greenCurve;
    PxNodePtr<PxShape2dProtocol const> blueCurve;
    PxNodePtr<PxAnimValueProtocol<bool> const> adjust;
};
