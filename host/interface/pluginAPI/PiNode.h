#pragma once

#include "base/RCBase.h"
#include "base/RCShdPtr.h"
#include "base/RCWeakPtr.h"
#include "pluginAPI/PiValue.h"

#include <string>

class PiGraph;
class PiNode;
class PiNodeController;

/// What a node gives to others. User-interface thread, as everything in this file.
class PiOutput : public RCBase<LkCounter<int>> {
public:
    virtual RCShdPtr<PiNode> getNode() const = 0;
};

/// What a node takes: a single value, a picture, or a structure of inputs.
class PiInput : public RCBase<LkCounter<int>> {
public:
    /// The full name, such as "Adjust Curve.Red".
    virtual std::string getName() const = 0;

    /// The output that feeds this input; empty when it is not connected.
    virtual RCShdPtr<PiOutput> getConnectedOutput() const = 0;
};

/// An input that consists of inputs.
class PiStructuredInput : public PiInput {
public:
    /// The member of that name. Without it: throws the host's exception naming it if `mustExist`,
    /// otherwise the result is empty.
    virtual RCShdPtr<PiInput> findMember(std::string const& name, bool mustExist) const = 0;
};

/// One tool in a graph: inputs, values and, for tools with code, a controller.
class PiNode : public RCBase<LkCounter<int>> {
public:
    /// The top-level input of that name; `mustExist` as for members.
    virtual RCShdPtr<PiInput> findInput(std::string const& name, bool mustExist) const = 0;

    /// The value of an input or the stored value of that full name; empty when there is none.
    /// `mustExist` says that the caller cannot do without: our host leaves it to the caller's check
    /// of the handle, whose failure names the type that is missed.
    virtual RCShdPtr<PiValue> findValue(std::string const& name, bool mustExist) const = 0;

    /// The controller; empty for a node without one.
    virtual RCWeakPtr<PiNodeController> getController() const = 0;

    /// Sets the values of all inputs, and what the host itself keeps of a tool (mute, affect), to
    /// their defaults. Curves that nodes of their own hold, and stored values, are left alone.
    virtual void resetInputs() = 0;

    /// The graph that the node stands in; empty for a node that was taken out.
    virtual RCShdPtr<PiGraph> getGraph() const = 0;
};
