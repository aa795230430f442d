#pragma once

#include "pluginAPI/PiInputNodeBuilder.h"

#include <map>
#include <string>

class HostNode;

/// Gives the value nodes of a node's inputs, one per input, while a chain is built.
class InputNodeBuilder : public PiInputNodeBuilder {
public:
    /// The node lives longer.
    explicit InputNodeBuilder(HostNode const& owner) : node(owner) {}

    PxStrongHndl<> getInputNode(std::string const& name) override;
    PxStrongHndl<> getInputNode(RCShdPtr<PiInput const> const& input) override;

private:
    HostNode const& node;
    std::map<std::string, PxStrongHndl<>> made;
};
