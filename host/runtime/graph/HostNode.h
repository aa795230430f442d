#pragma once

#include "base/RCWeakPtr.h"
#include "pluginAPI/PiNode.h"
#include "pluginAPI/PiToolInterface.h"
#include "pluginAPI/PiToolProtocol.h"
#include "pluginAPI/PxTimeContext.h"
#include "primitives/CoColor.h"
#include "runtime/values/ValueChange.h"

#include <map>
#include <string>
#include <vector>

class CurveNode;
class HostGraph;

/// The state of every value of a node, by full name.
using NodeValues = std::map<std::string, ValueState>;

/// One tool in a graph, built from the tool's description: its inputs, the values behind them, the
/// values that it stores, and a curve node for every curve input. User-interface thread.
class HostNode : public PiNode, private ValueOwner {
public:
    /// A value and where it comes from.
    struct ValueSlot {
        std::string name; ///< full name
        bool isStored;    ///< without an input
        RCShdPtr<HostValue> value;
    };

    /// Builds the node of a tool. The graph lives longer or is left with `leaveGraph`.
    HostNode(PiToolProtocol const& tool, HostGraph& hostGraph);
    ~HostNode() noexcept(false) override;

    RCShdPtr<PiInput> findInput(std::string const& name, bool mustExist) const override;
    RCShdPtr<PiValue> findValue(std::string const& name, bool mustExist) const override;
    RCWeakPtr<PiNodeController> getController() const override { return controller; }
    void resetInputs() override;
    RCShdPtr<PiGraph> getGraph() const override;

    PiToolProtocol const& getTool() const { return tool; }

    /// All values in the order of the description, curves included.
    std::vector<ValueSlot> const& getValues() const { return values; }

    /// The value of that full name; empty when there is none.
    RCShdPtr<HostValue> getValue(std::string const& name) const;

    /// What the tool declared, in its order.
    std::vector<PiDeclaration> const& getDeclarations() const { return declarations; }

    /// Tells the controller that the node is new or restored. From then on the controller is told
    /// of changes and the graph records them; before, values are set without a sound. What the
    /// controller does to a new node leaves no undo record.
    void notifyCreated();
    void notifyLoaded();

    /// Sets the named values to these states; the changes are told when all are made. Throws
    /// ValueError, having changed nothing, if one of them is unknown or not accepted.
    void setValues(NodeValues const& states);

    /// The same for all values: those that `saved` does not name go to their defaults.
    void load(NodeValues const& saved);

    /// Subscribes to changes of all values, until the handler leaves or dies, or the node goes.
    void addHandler(ValueHandler* handler) { handlers.addHandler(handler); }
    void removeHandler(ValueHandler* handler) { handlers.removeHandler(handler); }

    /// The chain that turns pictures of `source` into the tool's, or leaves them as they are while
    /// the node is muted. A tool that is masked is blended with the source by "Mix" and, unless it
    /// is empty, the picture `mask`; other tools take no notice of it.
    PxStrongHndl<PxNode const> buildChain(PxNodePtr<PxImageProtocol const> const& source,
                                          PxNodePtr<PxImageProtocol const> const& mask = {});

    /// What a chain without mask gives for a pixel that the tool turns from `source` into
    /// `processed`: mute and "Mix" come after the tool.
    CoRgbaColorTyped<float> finishPixel(PxTimeContext const& time,
                                        CoRgbaColorTyped<float> const& source,
                                        CoRgbaColorTyped<float> const& processed) const;

    /// Ends the node's tie to its graph.
    void leaveGraph();

private:
    bool recordChange(HostValue& value, std::shared_ptr<ValueState const> const& before) override;
    void tellChange(ValueChange const& change) override;
    void setValues(NodeValues const& states, ChangeCause cause);
    PiToolInterface& getToolInterface() const;
    bool isMasked() const;
    RCShdPtr<PiInput> addInput(std::string const& prefix,
                               PiStructuredPolicyDescriptor::Member const& input);
    void addStoredValue(PiDeclaration const& declaration);
    RCShdPtr<HostValue> addValue(std::string const& name, bool isStored, RCShdPtr<HostValue> value);

    PiToolProtocol const& tool;
    HostGraph* graph;
    RCStrongPtr<PiNodeController> controller;
    std::vector<PiDeclaration> declarations;
    std::map<std::string, RCShdPtr<PiInput>> inputs; // top-level
    std::vector<ValueSlot> values;
    std::vector<RCShdPtr<CurveNode>> curveNodes;
    CbDispatcher<ValueChange const> handlers;
    NodeValues inputDefaults;
    bool isAlive = false; // notifyCreated or notifyLoaded has been called
};
