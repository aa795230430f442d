#pragma once

#include "base/RCShdPtr.h"
#include "pluginAPI/PiInputNodeBuilder.h"
#include "pluginAPI/PiInputPolicy.h"
#include "pluginAPI/PiNodeController.h"
#include "pluginAPI/PxImageProtocol.h"
#include "pluginAPI/PxNodeHandles.h"

#include <map>
#include <string>

/// The controller of a tool: its reset, its inputs' policies and its processing chain.
/// User-interface thread.
class PiToolInterface : public virtual PiNodeController {
public:
    /// Puts everything of the tool back to its defaults.
    virtual void reset() = 0;

    /// The policy applied to the input of that full name; empty when there is none.
    RCShdPtr<PiInputPolicy const> getInputPolicy(std::string const& inputName) const;

    /// Builds the chain that turns `source` into the tool's picture and puts its output node into
    /// `result`. Called anew whenever the chain is wanted.
    virtual void createModifierProcNode(PxStrongHndl<PxNode const>& result,
                                        PiInputNodeBuilder& builder,
                                        PxNodePtr<PxImageProtocol const> const& source) = 0;

private:
    friend class PiToolInterfaceManip;

    std::map<std::string, RCShdPtr<PiInputPolicy const>> inputPolicies;
};

/// What a tool protocol may do to a controller that it has just made.
class PiToolInterfaceManip {
protected:
    static void addInputPolicy(PiToolInterface& tool, std::string const& inputName,
                               RCShdPtr<PiInputPolicy const> const& policy);
};
