#pragma once

#include "pluginAPI/PiNode.h"

/// Sockets by their full names. User-interface thread.
class PiSocketUtil {
public:
    /// The node's input of that name; a member of a structure by its full name ("Linear.Clamp").
    /// Empty when there is none. An empty node throws the null-pointer exception.
    static RCShdPtr<PiInput> getInput(RCShdPtr<PiNode> const& node, std::string const& fullName);
};
