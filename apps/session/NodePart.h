#pragma once

#include "primitives/CoColor.h"
#include "runtime/graph/HostGraph.h"

#include <string>
#include <vector>

/// Some of a node's steps on their own: a second node, which sends values through these steps and
/// leaves them alone otherwise. User-interface thread.
class NodePart {
public:
    /// A node like `node` but for `values`.
    NodePart(HostNode const& node, NodeValues const& values);

    /// Nothing but the adjustment curves, whether they are on or not.
    static NodePart takeCurves(HostNode const& node);

    /// Nothing but the mode's transfer, without the clamp, which is the switch of that name.
    static NodePart takeTransfer(HostNode const& node, std::string const& clamp);

    /// The values with which a node does that.
    static NodeValues makeTransferValues(HostNode const& node, std::string const& clamp);

    /// What becomes of the pixels.
    std::vector<CoRgbaColorTyped<float>> send(std::vector<CoRgbaColorTyped<float>> const& pixels,
                                              double time) const;

private:
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> part;
};
