#pragma once

/// A node of the tool whose chain reads inputs that a test controls one by one, also beyond what a
/// host would let through.

#include "remapColorController.h"
#include "support/InMemoryHost.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

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

    template <typename T>
    memoryHost::FakeValueNode<T>& value(std::string const& name)
    {
        return dynamic_cast<memoryHost::FakeValueNode<T>&>(*nodes.at(name));
    }
    memoryHost::FakeShapeNode& curve(std::string const& name)
    {
        return dynamic_cast<memoryHost::FakeShapeNode&>(*nodes.at(name));
    }

    /// Sets how long the value of the input holds, whatever its type.
    void setValidity(std::string const& name, PxValidityInterval const& validity);

    template <typename T>
    void set(std::string const& name, T constant)
    {
        value<T>(name).valueAt = [constant](double) { return constant; };
    }
    void setParams(reference::ChainParams const& params);

    /// What the tool gets for `name` from now on; may be empty.
    void replace(std::string const& name, PxStrongHndl<> const& node) { nodes[name] = node; }
    PxNode const* get(std::string const& name) const { return nodes.at(name).get(); }
    void clear() { nodes.clear(); }

private:
    template <typename T>
    void add(std::string const& name, T constant);

    memoryHost::Journal& journal;
    std::map<std::string, PxStrongHndl<>> nodes;
};

/// The controller of a node of the tool, got at as an editor does.
RemapColorController& findController(HostNode& node);

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

    /// Sets the parameters and sends the pixels through as one float RGBA tile.
    memoryHost::Pixels transform(reference::ChainParams const& params,
                                 memoryHost::Pixels const& pixels);

    /// One pixel by the controller's single-pixel evaluation; empty if that failed, with the text
    /// in `failures`.
    std::optional<reference::Pixel> pick(reference::Pixel const& pixel, double time = 0.0);

    void setPicture(memoryHost::Picture const& picture);

    /// Lets go of everything: what the journal says of that.
    memoryHost::Journal takeDown();

    std::vector<std::string> failures;
    memoryHost::Journal journal;
    FakeInputs inputs;
    PxStrongHndl<memoryHost::FakeSource> source;

private:
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
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

/// What `call` throws as an exception of type E; fails the test if it throws nothing.
template <typename E, typename Call>
std::optional<E> catchFailure(Call const& call)
{
    try {
        call();
    } catch (E const& failure) {
        return failure;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// Expects `call` to throw an E with exactly this text.
template <typename E, typename Call>
void expectFailure(std::string const& text, Call const& call)
{
    auto const failure = catchFailure<E>(call);
    if (failure) {
        EXPECT_EQ(failure->what(), text);
    }
}
