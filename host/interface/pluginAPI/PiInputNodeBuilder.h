#pragma once

#include "base/RCShdPtr.h"
#include "pluginAPI/PiNode.h"
#include "pluginAPI/PxNodeHandles.h"

#include <string>

/// Gives the processing node that delivers an input's value over time, while a chain is built.
/// The same input gives the same node. User-interface thread.
class PiInputNodeBuilder {
public:
    virtual ~PiInputNodeBuilder() = default;

    /// By the input's full name; empty when there is no such input.
    virtual PxStrongHndl<> getInputNode(std::string const& name) = 0;

    /// By the input itself; empty for an empty handle.
    virtual PxStrongHndl<> getInputNode(RCShdPtr<PiInput const> const& input) = 0;
};
