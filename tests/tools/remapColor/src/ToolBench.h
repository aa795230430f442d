#pragma once

/// A node of the tool whose chain reads inputs that a test controls one by one, also beyond what a
/// host would let through.

#include "remapColorController.h"
#include "support/Failures.h"
#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr std::chrono::seconds longestWait{20}; ///< for what comes at once

/// The test's own list of names; 0 Linear, 1 EXR display.
std::string getParamInputName(reference::Mode mode, int param, int channel);

/// All inputs that processing reads, in the order of the tool's questions for them.
std::vector<std::string> getInputNamesInOrder(reference::Mode mode);

/// Hands out fake value nodes under the tool's input names.
class FakeInputs : public PiInputNodeBuilder {
public:
    explicit FakeInputs(memoryHost::Journal& nodeJournal);

    PxStrongHndl<> getInputNode(std::string const& name) override;
    PxStrongHndl<> getInputNode(RCShdPtr<PiInput const> const& input) override;

    /// What the input's value is at a time.
    template <typename T>
    std::function<T(double)>& valueAt(std::string const& name)
    {
        auto& node = nodes[name];
        if (node.isNull()) {
            node = PxStrongHndl<>(makeNode<memoryHost::FakeNode<T>>(name, journal).get());
        }
        return dynamic_cast<memoryHost::FakeNode<T>&>(*node).valueAt;
    }
    template <typename T>
    void set(std::string const& name, T constant)
    {
        valueAt<T>(name) = [constant](double) { return constant; };
    }
    void setParams(reference::ChainParams const& params);
    void setValidity(std::string const& name, PxValidityInterval const& validity);

    std::map<std::string, PxStrongHndl<>> nodes;

private:
    memoryHost::Journal& journal;
};

/// What the controller's makers give for a widget of that name.
PiUserInterface::InstanceData openWidget(PiNodeController& controller, std::string const& name);

/// The tool's controller as an editor meets it.
RemapColorController& showController(PiNodeController& controller);

class ToolBench {
public:
    ToolBench();
    ~ToolBench();
    ToolBench(ToolBench const&) = delete;
    ToolBench& operator=(ToolBench const&) = delete;

    HostNode& getNode() { return *node; }
    RemapColorController& getController();

    /// Builds the chain from the inputs as they are now: the output node.
    PxImageProtocol const& buildChain();
    PxImageProtocol const& getChain() const { return *chain; }

    /// The chain's node of that mode.
    PxImageProtocol const& getModeNode(reference::Mode mode) const;

    /// The result for the source's whole picture.
    PxImageResult compute(double time = 0.0) const;
    memoryHost::Picture computePicture(double time = 0.0) const;

    /// Sets the parameters and sends the pixels through as one float RGBA tile.
    memoryHost::Pixels transform(reference::ChainParams const& params,
                                 memoryHost::Pixels const& pixels);

    /// One pixel by the controller's single-pixel evaluation; empty if that failed, with the text
    /// in `failures`.
    std::optional<reference::Pixel> pick(reference::Pixel const& pixel, double time = 0.0);

    void setPicture(memoryHost::Picture const& picture);

    /// Lets go of the node and its chain.
    void loseNode();

    /// Lets go of everything: what the journal says of that.
    memoryHost::Journal takeDown();

    std::vector<std::string> failures;
    memoryHost::Journal journal;
    FakeInputs inputs;
    PxStrongHndl<memoryHost::FakeSource> source;
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;

private:
    PxNodePtr<PxImageProtocol const> chain;
    GeRectangle<int> region;
};

/// Expects the chain to give what the reference gives, bit for bit.
void expectReference(ToolBench& bench, reference::ChainParams const& params,
                     memoryHost::Pixels const& pixels);

/// A chain with every parameter and curve drawn at random. Wild ones leave the inputs' ranges.
enum class Draw { WithinRanges, Wild };
reference::ChainParams makeRandomParams(std::uint32_t seed, Draw draw);

/// Keys with rising x and handles anywhere near them.
reference::ControlPoints makeRandomCurve(std::uint32_t seed);
