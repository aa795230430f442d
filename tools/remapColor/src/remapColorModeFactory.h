#pragma once

#include "base/RCBase.h"
#include "pluginAPI/PiInputNodeBuilder.h"
#include "pluginAPI/PiToolPolicyDescriptor.h"
#include "pluginAPI/PxImageProtocol.h"
#include "remapColorController.h"

#include <string>

/// One of the tool's modes: its name, its inputs and its processing node. Stateless;
/// user-interface thread.
class RemapColorController::ModeFactory : public RCBase<LkCounter<int>> {
public:
    /// The label of "Mode" and the name of the structure that holds the mode's inputs.
    virtual std::string getModeName() = 0;

    virtual void describeInputs(PiToolPolicyDescriptor& descriptor) = 0;

    /// Makes the mode's node for pictures of `source`. `builder` gives the value nodes of the
    /// inputs. Throws the cast failure if an input is not of the declared kind.
    virtual PxStrongHndl<> createModeProcNode(RCShdPtr<PiNode> const& node,
                                              PiInputNodeBuilder& builder,
                                              PxNodePtr<PxImageProtocol const> const& source) = 0;

    /// Sets the mode's stored link switches; they belong to the panel, no processing reads them.
    virtual void resetLinks(RCShdPtr<PiNode> const&) {}

protected:
    /// Sets the stored switches of these names, in their order. Throws the null-pointer exception
    /// at the first one that is missing; those before it stay set.
    template <typename Names>
    static void switchOn(RCShdPtr<PiNode> const& node, Names const& names)
    {
        for (std::string const& name : names) {
            PiTypedValueUtil<bool>(node->findValue(name, true), CheckNull::Yes)->setValue(true);
        }
    }
};
