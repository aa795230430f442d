#pragma once

#include "remapcolor/options/NodeRequest.h"
#include "session/ToolSession.h"

/// The session of a command: its node has the values that the command line asks for.
class RequestedSession : public ToolSession {
public:
    /// Throws what ToolSession does, UsageError and ValueError for the settings.
    explicit RequestedSession(NodeRequest const& request);
};
