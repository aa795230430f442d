#pragma once

#include "primitives/GeInterval.h"
#include "remapColorModeFactory.h"

/// The Linear mode: input levels onto output levels, gamma, and an optional clamp to the output
/// levels after the adjusted curves.
///
/// Parameters, by index: 0 input minimum, 1 input maximum, 2 output minimum, 3 output maximum,
/// 4 gamma. Channels: 0 red, 1 green, 2 blue.
class RemapColorLinearMode : public RemapColorController::ModeFactory {
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
    /// The full name of an input, such as "Linear.Gamma.Red".
    REMAPCOLOR_EXPORT static std::string getInputName(int param, int channel);
    REMAPCOLOR_EXPORT static std::string getClampName();

    /// Replaces `points` by the channel's transfer, for drawing: from the range's minimum in steps
    /// of its width over `samples`, `samples` points or one more. A maximum below the minimum gives
    /// none. The drawn curve is never clamped, whatever `clamp`; a gamma within 1e-6 of 0 draws the
    /// straight levels line. A negative number of samples throws std::length_error; the range must
    /// have a width that a step can cross. Any thread.
    REMAPCOLOR_EXPORT static void computeCurve(GeInterval<float> const& range, int samples,
                                               bool clamp, float inMin, float inMax, float outMin,
                                               float outMax, float gamma,
                                               Vector<GePoint2<float>>& points);
};
