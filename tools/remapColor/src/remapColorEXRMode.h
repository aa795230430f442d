#pragma once

#include "primitives/GeInterval.h"
#include "remapColorModeFactory.h"

/// The EXR display mode: brings pictures of high dynamic range to display values of 0 to about 1 by
/// defog, exposure, a knee and gamma.
///
/// Parameters, by index: 0 exposure (stops), 1 defog (linear), 2 knee high (stops), 3 knee low
/// (stops), 4 gamma. Channels: 0 red, 1 green, 2 blue.
class RemapColorEXRMode : public RemapColorController::ModeFactory {
public:
    std::string getModeName() override;
    void describeInputs(PiToolPolicyDescriptor& descriptor) override;
    PxStrongHndl<> createModeProcNode(RCShdPtr<PiNode> const& node, PiInputNodeBuilder& builder,
                                      PxNodePtr<PxImageProtocol const> const& source) override;
    void resetLinks(RCShdPtr<PiNode> const& node) override;

    // Names; any thread. An index outside the ranges above is the caller's error.
    REMAPCOLOR_EXPORT static std::string getName();
    REMAPCOLOR_EXPORT static std::string getChannelName(int channel);
    REMAPCOLOR_EXPORT static std::string getParamName(int param);
    /// The full name of an input, such as "EXRDisplay.Exposure.Red".
    REMAPCOLOR_EXPORT static std::string getInputName(int param, int channel);

    /// Replaces `points` by the channel's transfer, for drawing: from the range's minimum in steps
    /// of its width over `samples`, `samples` points or one more. A maximum below the minimum gives
    /// none. A negative number of samples throws std::length_error; the range must have a width
    /// that a step can cross. Any thread.
    REMAPCOLOR_EXPORT static void computeCurve(GeInterval<float> const& range, int samples,
                                               float exposure, float defog, float kneeHigh,
                                               float kneeLow, float gamma,
                                               Vector<GePoint2<float>>& points);
};
