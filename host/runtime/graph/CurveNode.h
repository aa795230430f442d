#pragma once

#include "pluginAPI/PiNode.h"
#include "runtime/values/HostValue.h"

class HostGraph;

/// A node that holds one curve and gives it to a curve input. Its controller is a
/// PiShape2dInterface. User-interface thread.
class CurveNode : public PiNode {
public:
    /// The curve starts without a key. The graph lives longer or is left with `leaveGraph`.
    CurveNode(RCShdPtr<HostValue> const& curveValue, HostGraph& hostGraph);
    ~CurveNode() noexcept(false) override;

    RCShdPtr<PiInput> findInput(std::string const& name, bool mustExist) const override;
    RCShdPtr<PiValue> findValue(std::string const& name, bool mustExist) const override;
    RCWeakPtr<PiNodeController> getController() const override;
    void resetInputs() override {}
    RCShdPtr<PiGraph> getGraph() const override;

    /// Ends the node's tie to its graph.
    void leaveGraph() { graph = nullptr; }

private:
    RCShdPtr<HostValue> curve;
    HostGraph* graph;
    RCStrongPtr<PiNodeController> controller;
};

/// The output by which a curve node gives its curve; keeps the node alive.
class CurveOutput : public PiOutput {
public:
    explicit CurveOutput(RCShdPtr<PiNode> const& curveNode) : node(curveNode) {}
    RCShdPtr<PiNode> getNode() const override { return node; }

private:
    RCShdPtr<PiNode> node;
};
