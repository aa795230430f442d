#pragma once

#include "editor/model/curves/CurveScale.h"
#include "editor/model/document/Document.h"
#include "primitives/CoColor.h"
#include "runtime/engine/SentPixels.h"

#include <array>
#include <vector>

/// What a graph of the document's node shows, at the document's time. Every value comes from the
/// tool: the transfers by its own drawing, the curves by its tables, both together by the node's
/// chain. Made, used and destroyed on the user-interface thread.
class CurveLines {
public:
    static constexpr int nbChannels = ControllerLink::nbChannels;
    using Line = std::vector<GePoint2<float>>; ///< rising x
    using Color = std::array<float, nbChannels>;

    explicit CurveLines(Document& shownDocument);

    /// The mode's transfer of a channel, without its curve. Not finite values are left out.
    Line sampleTransfer(int channel, CurveScale const& scale) const;

    /// A channel's curve, whether curves are on or not. What its keys get is among the points.
    Line sampleCurve(int channel, CurveScale const& scale) const;

    /// What becomes of values: transfer, curve, clamp, mute and "Mix".
    std::array<Line, nbChannels> sampleBoth(CurveScale const& scale) const;

    /// What the channels' transfers, curves, and all together make of a colour.
    Color transfer(Color const& color) const;
    Color curve(Color const& color) const;
    Color finish(Color const& color) const;

private:
    std::array<float, ControllerLink::nbParams> getParams(int channel) const;

    Document& document;
    PixelChain chain;
};
